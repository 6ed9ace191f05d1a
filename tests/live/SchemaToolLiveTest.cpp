// The schema installer and orvmysql-schema on a fresh, a current, an older and
// a drifted database.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <sstream>

#include "orvmysql/Error.h"
#include "support/LiveDb.h"
#include "tools/SchemaInstaller.h"
#include "tools/SchemaSnapshot.h"

using namespace orvmysql;
using devkit::SchemaInstaller;
using devkit::SchemaSource;
using ::testing::AllOf;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

namespace {

// A database name of this run that is dropped again at the end of the test.
class Scratch {
 public:
  explicit Scratch(const std::string& hint)
      : name_("orvschema_" + hint + "_" + std::to_string(getpid())) {}
  ~Scratch() {
    try {
      devkit::AdminExecute(orvtest::Server(), "DROP DATABASE IF EXISTS `" + name_ + "`");
    } catch (const std::exception&) {
    }
  }
  const std::string& Name() const { return name_; }
  void Exec(const std::string& sql) const {
    NewConnection(orvtest::Server().Connector(name_))->ExecuteNonQuery(sql);
  }
  std::string Scalar(const std::string& sql) const {
    return NewConnection(orvtest::Server().Connector(name_))->ExecuteScalar(sql, "");
  }

 private:
  std::string name_;
};

// The built-in schema plus migrations of the test's own, numbered after any
// real one. The second needs the first: applied out of order it fails.
SchemaSource WithTestMigrations() {
  SchemaSource source = SchemaSource::BuiltIn();
  source.migrations.push_back(
      {9001, "9001-audit-table",
       "CREATE TABLE IF NOT EXISTS tblTestAudit (\n"
       "  AuditID INT NOT NULL PRIMARY KEY,\n  Note VARCHAR(20) NULL\n"
       ") ENGINE=InnoDB DEFAULT CHARSET=utf8mb4 COLLATE=utf8mb4_unicode_ci;\n"});
  source.migrations.push_back(
      {9002, "9002-audit-index",
       "-- a comment line\nCREATE INDEX IF NOT EXISTS ixTestAuditNote ON tblTestAudit (Note);\n"});
  return source;
}

std::vector<std::string> Names(const std::vector<devkit::Migration>& migrations) {
  std::vector<std::string> names;
  for (const auto& m : migrations) names.push_back(m.name);
  return names;
}

TEST(SchemaTool, FreshDatabaseGetsEverythingAndASecondRunChangesNothing) {
  Scratch db("fresh");
  const SchemaSource source = WithTestMigrations();
  SchemaInstaller installer(orvtest::Server(), db.Name(), source);

  const auto created = installer.Create();
  EXPECT_TRUE(created.database_created);
  EXPECT_THAT(created.tables_created,
              AllOf(Contains("tblKeyGen"), Contains("tblWorkitems"), Contains("tblSchemaVersion"),
                    Contains("tblTestAudit")));
  EXPECT_EQ(std::to_string(created.rows_added), db.Scalar("SELECT COUNT(*) FROM tblKeyGen"));
  EXPECT_EQ(created.migrations_applied, Names(source.migrations));
  EXPECT_EQ(db.Scalar("SELECT COUNT(*) FROM tblSchemaVersion"),
            std::to_string(source.migrations.size()));

  EXPECT_THAT(installer.Check(), IsEmpty());
  const auto again = installer.Create();
  EXPECT_FALSE(again.Changed());
  EXPECT_THAT(installer.Upgrade(), IsEmpty());
}

TEST(SchemaTool, UpgradeBringsADatabaseOfTheBaselineUpToDateInOrder) {
  Scratch db("older");
  devkit::AdminExecute(orvtest::Server(), "CREATE DATABASE `" + db.Name() +
                                              "` CHARACTER SET utf8mb4 COLLATE utf8mb4_unicode_ci");
  for (const auto& statement : devkit::SchemaStatements()) db.Exec(statement);

  const SchemaSource source = WithTestMigrations();
  SchemaInstaller installer(orvtest::Server(), db.Name(), source);
  EXPECT_THAT(
      installer.Check(),
      AllOf(Contains("missing table tblSchemaVersion"), Contains("missing table tblTestAudit"),
            Contains("migration 9002-audit-index is not recorded as applied")));
  EXPECT_EQ(installer.Upgrade(), Names(source.migrations));
  EXPECT_THAT(installer.Check(), IsEmpty());
  EXPECT_THAT(installer.Upgrade(), IsEmpty());
}

// Every change lives in the baseline DDL as well as in its migration, so that a
// fresh database and an upgraded one are alike.
TEST(SchemaTool, TheBaselineHoldsWhatEveryMigrationAdds) {
  Scratch baseline("baseline");
  Scratch migrated("migrated");
  devkit::AdminExecute(orvtest::Server(), "CREATE DATABASE `" + baseline.Name() +
                                              "` CHARACTER SET utf8mb4 COLLATE utf8mb4_unicode_ci");
  for (const auto& statement : devkit::SchemaStatements()) baseline.Exec(statement);
  SchemaInstaller(orvtest::Server(), migrated.Name()).Create();

  auto c = NewConnection(orvtest::Server().Connector(""));
  auto expected = devkit::ReadSnapshot(*c, migrated.Name());
  expected.tables.erase(devkit::kSchemaVersionTable);
  expected.migrations.clear();
  EXPECT_THAT(devkit::CompareSnapshots(expected, devkit::ReadSnapshot(*c, baseline.Name())),
              IsEmpty());
}

TEST(SchemaTool, FailedMigrationIsNotRecordedAndRunsAgainOnceFixed) {
  Scratch db("broken");
  SchemaSource broken = WithTestMigrations();
  broken.migrations.push_back({9003, "9003-broken",
                               "ALTER TABLE tblTestAudit ADD COLUMN IF NOT EXISTS Who INT NULL;\n"
                               "ALTER TABLE tblNoSuchTable ADD COLUMN Who INT NULL;\n"});
  SchemaInstaller installer(orvtest::Server(), db.Name(), broken);
  try {
    installer.Create();
    ADD_FAILURE() << "the broken migration ran";
  } catch (const Error& e) {
    EXPECT_THAT(e.Description(),
                AllOf(HasSubstr("migration 9003-broken"), HasSubstr("tblNoSuchTable")));
  }
  EXPECT_EQ(db.Scalar("SELECT COUNT(*) FROM tblSchemaVersion WHERE Version = 9003"), "0");
  EXPECT_EQ(db.Scalar("SELECT COUNT(*) FROM tblSchemaVersion WHERE Version = 9002"), "1");

  SchemaSource fixed = broken;
  fixed.migrations.back().sql = "ALTER TABLE tblTestAudit ADD COLUMN IF NOT EXISTS Who INT NULL;\n";
  EXPECT_THAT(SchemaInstaller(orvtest::Server(), db.Name(), fixed).Upgrade(),
              ElementsAre("9003-broken"));
}

TEST(SchemaTool, UpgradeRefusesADatabaseWithoutTables) {
  Scratch db("empty");
  devkit::AdminExecute(orvtest::Server(), "CREATE DATABASE `" + db.Name() + "`");
  try {
    SchemaInstaller(orvtest::Server(), db.Name()).Upgrade();
    ADD_FAILURE() << "upgrade of an empty database succeeded";
  } catch (const std::runtime_error& e) {
    EXPECT_THAT(e.what(), HasSubstr("orvmysql-schema create"));
  }
}

TEST(SchemaTool, CheckReportsEveryDriftAndNothingElse) {
  Scratch db("drifted");
  SchemaInstaller installer(orvtest::Server(), db.Name());
  installer.Create();
  for (const char* drift : {
           "ALTER TABLE tblWorkitems MODIFY Subject VARCHAR(100) NULL",
           "ALTER TABLE tblActivities DROP INDEX ixActivitiesDefName",
           "ALTER TABLE tblMessages ADD COLUMN Extra INT NULL",
           "ALTER TABLE tblSwitches DROP COLUMN DisplayName",
           "CREATE INDEX ixExtra ON tblProcessDef (State)",
           "DROP TABLE tblAttachments",
           "CREATE TABLE tblLocal (Id INT PRIMARY KEY)",
           "ALTER TABLE tblKeyGen ENGINE=MyISAM",
           "DELETE FROM tblKeyGen WHERE EntityTypeCode = -25",
           "UPDATE tblKeyGen SET Increment = 5 WHERE EntityTypeCode = -10",
           "UPDATE tblKeyGen SET LastAllocatedKey = 99",  // a counter: not drift
           "INSERT INTO tblSchemaVersion VALUES (9999, '9999-from-the-future', NOW())",
       }) {
    db.Exec(drift);
  }
  const auto differences = installer.Check();
  const std::vector<std::string> expected = {
      "table tblWorkitems: column Subject is varchar(100)",
      "table tblActivities: missing index ixActivitiesDefName (KEY (FKProcDefinitionID, "
      "ActivityName))",
      "table tblMessages: extra column Extra (int(11) NULL",
      "table tblSwitches: missing column DisplayName (varchar(255)",
      "table tblProcessDef: extra index ixExtra (KEY (State))",
      "missing table tblAttachments",
      "extra table tblLocal",
      "table tblKeyGen: BASE TABLE ENGINE=MyISAM",
      "table tblKeyGen: missing row EntityTypeCode=-25",
      "table tblKeyGen: row EntityTypeCode=-10: Increment is 5, expected 1",
      "migration 9999-from-the-future is recorded but unknown to this version",
  };
  for (const auto& line : expected) {
    EXPECT_THAT(differences, Contains(HasSubstr(line)));
  }
  EXPECT_EQ(differences.size(), expected.size()) << testing::PrintToString(differences);
  EXPECT_THAT(differences, Not(Contains(HasSubstr("LastAllocatedKey"))));

  // create repairs what is missing and keeps the rest.
  EXPECT_TRUE(installer.Create().Changed());
  const auto after = installer.Check();
  EXPECT_THAT(after, Not(Contains(HasSubstr("missing table tblAttachments"))));
  EXPECT_THAT(after, Not(Contains(HasSubstr("missing row"))));
  EXPECT_THAT(after, Contains(HasSubstr("column Subject is varchar(100)")));
}

TEST(SchemaTool, CheckLeavesAForeignScratchDatabaseAlone) {
  Scratch db("target");
  Scratch someone("someones");
  SchemaInstaller installer(orvtest::Server(), db.Name());
  installer.Create();
  devkit::AdminExecute(orvtest::Server(), "CREATE DATABASE `" + someone.Name() + "`");
  someone.Exec("CREATE TABLE keep_me (Id INT)");
  EXPECT_THROW(installer.Check(someone.Name()), Error);
  EXPECT_EQ(someone.Scalar("SELECT COUNT(*) FROM information_schema.TABLES WHERE TABLE_NAME = "
                           "'keep_me' AND TABLE_SCHEMA = DATABASE()"),
            "1");
}

// The command line: options, exit status, output, and no password in it.
struct ToolRun {
  int status = -1;
  std::string out, err;
};

ToolRun Tool(const std::string& args) {
  const std::string base = "/tmp/orvschema_cli_" + std::to_string(getpid());
  const std::string command =
      std::string(ORVMYSQL_SCHEMA_TOOL) + " " + args + " >" + base + ".out 2>" + base + ".err";
  ToolRun run;
  const int raw = std::system(command.c_str());
  run.status = WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
  for (auto [file, text] : {std::pair{".out", &run.out}, std::pair{".err", &run.err}}) {
    std::ifstream in(base + file);
    std::stringstream ss;
    ss << in.rdbuf();
    *text = ss.str();
    std::remove((base + file).c_str());
  }
  return run;
}

std::string ServerOptions() {
  const auto& s = orvtest::Server();
  return "--server " + s.server + " --port " + s.port + " --user " + s.user +
         (s.password.empty() ? "" : " --password '" + s.password + "'");
}

TEST(SchemaToolCommand, HelpVersionAndWrongUsage) {
  const ToolRun help = Tool("--help");
  EXPECT_EQ(help.status, 0);
  EXPECT_THAT(help.out, AllOf(HasSubstr("create"), HasSubstr("check"), HasSubstr("upgrade")));
  EXPECT_THAT(Tool("--version").out, HasSubstr("orvmysql-schema (orvmysql) 2."));

  const ToolRun unknown = Tool("--frobnicate check");
  EXPECT_EQ(unknown.status, 2);
  EXPECT_THAT(unknown.err, HasSubstr("unrecognized option '--frobnicate'"));
  EXPECT_EQ(Tool("").status, 2);
  EXPECT_THAT(Tool("check").err, HasSubstr("check needs --database"));
  EXPECT_THAT(Tool("-d x frobnicate").err, HasSubstr("unknown command 'frobnicate'"));
}

TEST(SchemaToolCommand, CreateCheckUpgradeReportWhatTheyDid) {
  Scratch db("cli");
  const std::string on = ServerOptions() + " --database " + db.Name();
  const ToolRun created = Tool("create " + on);
  EXPECT_EQ(created.status, 0) << created.err;
  EXPECT_THAT(created.out, AllOf(HasSubstr("created database " + db.Name()), HasSubstr("tblKeyGen"),
                                 HasSubstr("key rows")));
  EXPECT_THAT(Tool("create " + on).out, HasSubstr("nothing changed"));
  EXPECT_THAT(Tool("upgrade " + on).out, HasSubstr("no migration to apply"));

  db.Exec("ALTER TABLE tblWorkitems DROP INDEX ixWorkitemsProcess");
  const ToolRun drifted = Tool("check " + on);
  EXPECT_EQ(drifted.status, 1);
  EXPECT_THAT(drifted.out,
              AllOf(HasSubstr("missing index ixWorkitemsProcess"), HasSubstr("1 difference")));
}

TEST(SchemaToolCommand, APasswordNeverAppearsInTheOutput) {
  const std::string password = "Pa55;word-only-here";
  const ToolRun run = Tool("create " + ServerOptions() + " --password '" + password +
                           "' --database orvschema_denied");
  EXPECT_EQ(run.status, 3);
  EXPECT_THAT(run.err, HasSubstr("create failed"));
  EXPECT_THAT(run.out + run.err, Not(HasSubstr(password)));
  EXPECT_THAT(run.out + run.err, Not(HasSubstr("only-here")));
}

}  // namespace
