#pragma once

// A private server for one test suite, for tests that stop, kill or restart
// it, with a temporary directory for the suite's files. The suite's tests skip
// when the server binaries are missing.

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "tools/DevServer.h"

namespace orvtest {

class PrivateServerTest : public ::testing::Test {
 public:
  // Call from the suite's SetUpTestSuite; false when the suite is skipped.
  static bool StartServer(std::vector<std::string> server_options = {}) {
    const char* mariadbd = std::getenv("ORVMYSQL_MARIADBD");
    if (!std::filesystem::exists(mariadbd != nullptr ? mariadbd : "/usr/sbin/mariadbd")) {
      skip_reason_ = "no server binaries to start a private server with (mariadb-server-core)";
      return false;
    }
    char pattern[] = "/tmp/orvmysql-suite-XXXXXX";
    if (mkdtemp(pattern) == nullptr) throw std::runtime_error("cannot create a directory");
    dir_ = pattern;
    server_ = orvmysql::devkit::DevServer::AcquirePrivate(std::move(server_options));
    return true;
  }

  static void TearDownTestSuite() {
    server_.reset();
    std::error_code ec;
    if (!dir_.empty()) std::filesystem::remove_all(dir_, ec);
    dir_.clear();
  }

 protected:
  void SetUp() override {
    if (!skip_reason_.empty()) GTEST_SKIP() << skip_reason_;
  }

  static orvmysql::devkit::DevServer& Server() { return *server_; }
  static const orvmysql::devkit::ServerAddress& Address() { return server_->Address(); }
  static std::string File(const std::string& name) { return dir_ + "/" + name; }

 private:
  static inline std::unique_ptr<orvmysql::devkit::DevServer> server_;
  static inline std::string dir_;
  static inline std::string skip_reason_;
};

}  // namespace orvtest
