#include "tools/SchemaInstaller.h"

#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <set>
#include <sstream>
#include <stdexcept>
#include <utility>

#include "access/SqlValues.h"
#include "orvmysql/Error.h"
#include "tools/SchemaSnapshot.h"
#include "tools/SchemaSql.h"

namespace orvmysql::devkit {

namespace {

// The record of applied migrations (kSchemaVersionTable).
constexpr const char* kVersionTableDdl = R"(CREATE TABLE IF NOT EXISTS tblSchemaVersion (
  Version INT NOT NULL PRIMARY KEY,
  Name VARCHAR(255) NOT NULL,
  AppliedOn DATETIME NOT NULL
) ENGINE=InnoDB DEFAULT CHARSET=utf8mb4 COLLATE=utf8mb4_unicode_ci)";

void RequirePlainName(const std::string& database) {
  bool ok = !database.empty() && database.size() <= 64;
  for (char c : database) ok = ok && (std::isalnum(static_cast<unsigned char>(c)) || c == '_');
  if (!ok) {
    ThrowRuntimeError(kErrInvalidCall,
                      "database name '" + database + "' (letters, digits and _ only)");
  }
}

bool DatabaseExists(IConnection& c, const std::string& database) {
  return c.ExecuteScalar("SELECT COUNT(*) FROM information_schema.SCHEMATA WHERE SCHEMA_NAME = " +
                             sql::Text(Variant(database), false),
                         "0") != "0";
}

std::set<std::string> TableNames(IConnection& c) {
  std::set<std::string> names;
  auto rows =
      c.Execute("SELECT TABLE_NAME FROM information_schema.TABLES WHERE TABLE_SCHEMA = DATABASE()");
  while (rows->GetNext()) names.insert(rows->CurrentItem()->GetValue("TABLE_NAME").ToText());
  return names;
}

// True when the statement's first word is `word` (upper case), in any case.
bool StartsWithWord(const std::string& statement, std::string_view word) {
  const auto first = statement.find_first_not_of(" \t\r\n");
  if (first == std::string::npos || statement.size() - first < word.size()) return false;
  for (std::size_t i = 0; i < word.size(); ++i) {
    const char c = statement[first + i];
    if ((c >= 'a' && c <= 'z' ? c - 'a' + 'A' : c) != word[i]) return false;
  }
  return true;
}

// One connection for the length of a piece of work. With `lock`, it holds a
// server lock named after the database, so that two installers never work on
// one database at once.
class Session {
 public:
  Session(const ServerAddress& address, const std::string& database, bool lock = false)
      : connection_(NewConnection(address.Connector(database))) {
    connection_->StartSession();
    if (lock && connection_->ExecuteScalar(
                    "SELECT GET_LOCK(CONCAT('orvmysql-schema:', DATABASE()), 60)", "0") != "1") {
      connection_->EndSession();
      throw std::runtime_error("another orvmysql-schema has been working on database " + database +
                               " for a minute; try again later");
    }
  }
  ~Session() {
    try {
      connection_->EndSession();  // closing the connection releases the lock
    } catch (...) {
    }
  }
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  IConnection& operator*() const { return *connection_; }
  IConnection* operator->() const { return connection_.get(); }

 private:
  std::shared_ptr<IConnection> connection_;
};

std::vector<std::string> ApplyPending(IConnection& c, const std::vector<Migration>& migrations) {
  c.ExecuteNonQuery(kVersionTableDdl);
  std::set<int> recorded;
  auto rows = c.Execute(std::string("SELECT Version FROM ") + kSchemaVersionTable);
  while (rows->GetNext()) recorded.insert(rows->CurrentItem()->GetValue("Version").ToLong());

  std::vector<std::string> applied;
  for (const Migration& m : migrations) {
    if (recorded.count(m.number)) continue;
    for (const std::string& statement : SplitStatements(m.sql)) {
      try {
        c.ExecuteNonQuery(statement);
      } catch (Error& e) {
        e.SetDescription("migration " + m.name + ": " + e.Description());
        throw;
      }
    }
    c.ExecuteNonQuery(std::string("INSERT INTO ") + kSchemaVersionTable +
                      " (Version, Name, AppliedOn) VALUES (" + std::to_string(m.number) + ", " +
                      sql::Text(Variant(m.name)) + ", NOW())");
    applied.push_back(m.name);
  }
  return applied;
}

// Drops the scratch database of a check, also when the check fails.
class ScratchDatabase {
 public:
  ScratchDatabase(const ServerAddress& address, std::string name)
      : address_(address), name_(std::move(name)) {
    // Without IF NOT EXISTS: a database of that name that exists already is
    // someone's, and is neither used nor dropped.
    AdminExecute(address_, "CREATE DATABASE `" + name_ +
                               "` CHARACTER SET utf8mb4 COLLATE utf8mb4_unicode_ci");
  }
  ~ScratchDatabase() {
    try {
      AdminExecute(address_, "DROP DATABASE IF EXISTS `" + name_ + "`");
    } catch (...) {
    }
  }
  ScratchDatabase(const ScratchDatabase&) = delete;
  ScratchDatabase& operator=(const ScratchDatabase&) = delete;

 private:
  ServerAddress address_;
  std::string name_;
};

}  // namespace

const SchemaSource& SchemaSource::BuiltIn() {
  static const SchemaSource source = [] {
    SchemaSource s;
    s.baseline = kSchemaSql;
    for (const EmbeddedSqlFile* f = kMigrationFiles; f->name != nullptr; ++f) {
      // The build accepts only names of the form NNNN-what.
      s.migrations.push_back({std::stoi(std::string(f->name, 4)), f->name, f->sql});
    }
    std::sort(s.migrations.begin(), s.migrations.end(),
              [](const Migration& a, const Migration& b) { return a.number < b.number; });
    return s;
  }();
  return source;
}

std::vector<std::string> SplitStatements(std::string_view sql) {
  std::vector<std::string> statements;
  std::istringstream in{std::string(sql)};
  std::string line, current;
  while (std::getline(in, line)) {
    const auto first = line.find_first_not_of(" \t\r");
    if (first == std::string::npos || line.compare(first, 2, "--") == 0) continue;
    const auto last = line.find_last_not_of(" \t\r");
    if (line[last] == ';') {
      current += line.substr(0, last);
      statements.push_back(current);
      current.clear();
    } else {
      current += line;
      current += '\n';
    }
  }
  if (current.find_first_not_of(" \t\r\n") != std::string::npos) statements.push_back(current);
  return statements;
}

bool CreateResult::Changed() const {
  return database_created || !tables_created.empty() || rows_added > 0 ||
         !migrations_applied.empty();
}

SchemaInstaller::SchemaInstaller(ServerAddress address, std::string database, SchemaSource source)
    : address_(std::move(address)), database_(std::move(database)), source_(std::move(source)) {
  RequirePlainName(database_);
}

CreateResult SchemaInstaller::Create() {
  CreateResult result;
  {
    Session admin(address_, "");
    result.database_created = !DatabaseExists(*admin, database_);
    admin->ExecuteNonQuery("CREATE DATABASE IF NOT EXISTS `" + database_ +
                           "` CHARACTER SET utf8mb4 COLLATE utf8mb4_unicode_ci");
  }
  Session session(address_, database_, true);
  const std::set<std::string> before = TableNames(*session);
  for (const std::string& statement : SplitStatements(source_.baseline)) {
    const int32_t rows = session->ExecuteNonQuery(statement);
    if (StartsWithWord(statement, "INSERT")) result.rows_added += rows;
  }
  result.migrations_applied = ApplyPending(*session, source_.migrations);
  for (const std::string& table : TableNames(*session)) {
    if (!before.count(table)) result.tables_created.push_back(table);
  }
  return result;
}

std::vector<std::string> SchemaInstaller::Upgrade() {
  Session session(address_, database_, true);
  if (TableNames(*session).empty()) {
    throw std::runtime_error("database " + database_ +
                             " holds no tables; create the schema first (orvmysql-schema create)");
  }
  return ApplyPending(*session, source_.migrations);
}

std::vector<std::string> SchemaInstaller::Check(std::string scratch_database) {
  if (scratch_database.empty()) {
    scratch_database = "orvmysql_check_" + std::to_string(getpid());
  }
  RequirePlainName(scratch_database);
  Session admin(address_, "");
  if (!DatabaseExists(*admin, database_)) return {"database " + database_ + " does not exist"};

  ScratchDatabase scratch(address_, scratch_database);
  SchemaInstaller(address_, scratch_database, source_).Create();
  const SchemaSnapshot expected = ReadSnapshot(*admin, scratch_database);
  const SchemaSnapshot actual = ReadSnapshot(*admin, database_, &expected);
  return CompareSnapshots(expected, actual);
}

void InstallSchema(const ServerAddress& address, const std::string& database) {
  SchemaInstaller(address, database).Create();
}

std::vector<std::string> SchemaStatements() {
  return SplitStatements(SchemaSource::BuiltIn().baseline);
}

}  // namespace orvmysql::devkit
