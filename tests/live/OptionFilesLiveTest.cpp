// Settings from the standard option files and from the file that
// ORVMYSQL_OPTION_FILE names; errors in them are reported before connecting.

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "orvmysql/orvmysql.h"
#include "support/ErrorCapture.h"
#include "support/LiveDb.h"
#include "support/ScopedEnv.h"

using namespace orvmysql;

namespace {

namespace fs = std::filesystem;

class OptionFilesLive : public orvtest::LiveTest {
 protected:
  void SetUp() override {
    char pattern[] = "/tmp/orvmysql-options-XXXXXX";
    ASSERT_NE(mkdtemp(pattern), nullptr);
    dir_ = pattern;
  }
  void TearDown() override {
    std::error_code ec;
    fs::remove_all(dir_, ec);
  }

  std::string Write(const std::string& name, const std::string& text) const {
    const std::string path = dir_ + "/" + name;
    std::ofstream(path) << text;
    return path;
  }

  std::string dir_;
};

TEST_F(OptionFilesLive, TheLibrarysGroupInTheStandardFilesIsRead) {
  // ~/.my.cnf is one of the standard files; an include is followed.
  Write(".my.cnf", "[client]\n!include " + dir_ + "/orvmysql.cnf\n");
  Write("orvmysql.cnf",
        "[orvmysql]\n"
        "init-command = SET @probe = 'from the option file'\n"
        "read_timeout = 1\n"
        "[other]\n"
        "read-timeout = nonsense\n");
  orvtest::ScopedEnv no_file("ORVMYSQL_OPTION_FILE", nullptr);
  orvtest::ScopedEnv home("HOME", dir_.c_str());
  auto connection = Db().NewConnection();
  connection->StartSession();
  EXPECT_EQ(connection->ExecuteScalar("SELECT @probe", ""), "from the option file");
  // The read time limit (1 s) ends a statement that keeps the client waiting.
  const Error e = orvtest::Raised([&] { connection->ExecuteScalar("SELECT SLEEP(5)", ""); });
  EXPECT_EQ(e.NativeError(), 2013u) << e.what();  // lost connection during query
  connection->EndSession();
}

TEST_F(OptionFilesLive, AnUnreadableFileOrABadTimeLimitIsNamedInTheConnectError) {
  const struct {
    std::string file;
    std::string expected;
  } cases[] = {
      {dir_ + "/missing.cnf",
       "the option file " + dir_ + "/missing.cnf named by ORVMYSQL_OPTION_FILE cannot be read"},
      {Write("bad.cnf", "[orvmysql]\n\nwrite-timeout = 10s\n"),
       "option file " + dir_ +
           "/bad.cnf, line 3: write-timeout must be a whole number of "
           "seconds, not '10s'"},
  };
  for (const auto& k : cases) {
    orvtest::ScopedEnv file("ORVMYSQL_OPTION_FILE", k.file.c_str());
    const Error e = orvtest::Raised([&] { Db().NewConnection()->ExecuteScalar("SELECT 1", ""); });
    EXPECT_EQ(e.Number(), kErrConnectFailed);
    EXPECT_NE(e.Description().find(k.expected), std::string::npos) << e.Description();
  }
}

}  // namespace
