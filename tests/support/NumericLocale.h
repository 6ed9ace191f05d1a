#pragma once

// The program's LC_NUMERIC locale for the length of a test: a locale with a
// decimal comma (de_DE.UTF-8), or "C". When the system lacks de_DE.UTF-8 it
// is compiled for the run with localedef into a temporary directory, which
// LOCPATH then names and which is removed when the program ends.

#include <stdlib.h>

#include <clocale>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>

namespace orvtest {

class NumericLocale {
 public:
  explicit NumericLocale(const char* name) : previous_(std::setlocale(LC_NUMERIC, nullptr)) {
    if (std::setlocale(LC_NUMERIC, name) == nullptr) {
      throw std::runtime_error(std::string("cannot set LC_NUMERIC to ") + name);
    }
  }
  ~NumericLocale() { std::setlocale(LC_NUMERIC, previous_.c_str()); }
  NumericLocale(const NumericLocale&) = delete;
  NumericLocale& operator=(const NumericLocale&) = delete;

  // The name of a locale whose decimal separator is a comma.
  static const char* Comma() {
    static const Compiled compiled;
    return "de_DE.UTF-8";
  }

 private:
  struct Compiled {
    std::filesystem::path directory;
    Compiled() {
      const std::string current = std::setlocale(LC_NUMERIC, nullptr);
      const bool installed = std::setlocale(LC_NUMERIC, "de_DE.UTF-8") != nullptr;
      std::setlocale(LC_NUMERIC, current.c_str());
      if (installed) return;
      char pattern[] = "/tmp/orvmysql-locale-XXXXXX";
      if (mkdtemp(pattern) == nullptr) throw std::runtime_error("no temporary directory");
      directory = pattern;
      // localedef reports warnings about the locale source with a non-zero
      // status while still writing the locale; the locale's presence decides.
      const std::string command = "localedef -i de_DE -f UTF-8 '" +
                                  (directory / "de_DE.UTF-8").string() + "' >/dev/null 2>&1";
      [[maybe_unused]] const int status = std::system(command.c_str());
      setenv("LOCPATH", directory.c_str(), 1);
      if (!std::filesystem::exists(directory / "de_DE.UTF-8" / "LC_NUMERIC")) {
        throw std::runtime_error("localedef could not compile de_DE.UTF-8");
      }
    }
    ~Compiled() {
      if (directory.empty()) return;
      std::error_code ignored;
      std::filesystem::remove_all(directory, ignored);
    }
  };

  std::string previous_;
};

}  // namespace orvtest
