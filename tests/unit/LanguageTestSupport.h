#pragma once

// Helpers of the language tests: the shipped data directory, scratch data
// directories with files of the test's own, and a fixture that leaves the
// language, the data directory and the program's message locale as it found
// them.

#include <gtest/gtest.h>
#include <stdlib.h>

#include <clocale>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>

#include "orvmysql/Language.h"

namespace orvtest {

inline const std::string kShippedData = ORVMYSQL_SOURCE_DATA_DIR;

// A fresh directory under the test's temporary directory.
inline std::filesystem::path ScratchDir() {
  std::string pattern = (std::filesystem::path(testing::TempDir()) / "orvlangXXXXXX").string();
  if (mkdtemp(pattern.data()) == nullptr) ADD_FAILURE() << "mkdtemp failed";
  return pattern;
}

inline void WriteFile(const std::filesystem::path& path, const std::string& text) {
  std::filesystem::create_directories(path.parent_path());
  std::ofstream(path, std::ios::binary) << text;
}

// A languages file listing German with the given catalog and stylesheet paths.
inline std::string GermanOnly(const std::string& catalog, const std::string& stylesheet) {
  return "<languages><language locale='de_DE' name='Deutsch' catalog='" + catalog +
         "' stylesheet='" + stylesheet + "'/></languages>";
}

inline void UseDataDir(const std::string& dir) {
  setenv("ORVMYSQL_DATA_DIR", dir.c_str(), 1);
}

class LanguageFixture : public testing::Test {
 protected:
  void SetUp() override {
    if (const char* dir = getenv("ORVMYSQL_DATA_DIR")) saved_dir_ = dir;
    UseDataDir(kShippedData);
    orvmysql::SetLanguage("");
  }
  void TearDown() override {
    UseDataDir(kShippedData);
    orvmysql::SetLanguage("");
    orvmysql::SetMessageLookup(nullptr);
    std::setlocale(LC_MESSAGES, "C");
    if (saved_dir_) {
      UseDataDir(*saved_dir_);
    } else {
      unsetenv("ORVMYSQL_DATA_DIR");
    }
  }

 private:
  std::optional<std::string> saved_dir_;
};

}  // namespace orvtest
