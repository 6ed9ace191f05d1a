#pragma once

// The schema of the workflow store as the tools install, upgrade and check it:
// the baseline (schema/orvmysql.sql) and the numbered migrations
// (schema/migrations/NNNN-what.sql), both compiled into the program. Every
// migration is idempotent; the ones applied to a database are recorded in its
// table tblSchemaVersion.

#include <string>
#include <string_view>
#include <vector>

#include "tools/ServerAddress.h"

namespace orvmysql::devkit {

struct Migration {
  int number = 0;    // NNNN of the file name
  std::string name;  // the file name without ".sql", "0001-runtime-indexes"
  std::string sql;
};

// The SQL that the installer applies: the baseline, then the migrations in
// ascending order of their numbers.
struct SchemaSource {
  std::string baseline;
  std::vector<Migration> migrations;

  // The schema files compiled into this program.
  static const SchemaSource& BuiltIn();
};

// What Create changed; nothing at all on a database that is up to date.
struct CreateResult {
  bool database_created = false;
  std::vector<std::string> tables_created;
  int rows_added = 0;  // key rows
  std::vector<std::string> migrations_applied;

  bool Changed() const;
};

class SchemaInstaller {
 public:
  // The database name takes letters, digits and _ only (error 5 otherwise).
  SchemaInstaller(ServerAddress address, std::string database,
                  SchemaSource source = SchemaSource::BuiltIn());

  // Creates the database when it is missing, the tables and key rows that are
  // missing, and applies the migrations not yet recorded. Nothing that exists
  // changes and no data is lost.
  CreateResult Create();
  // Applies the migrations not yet recorded, in order, recording each once its
  // statements have run; returns their names. A database without any table is
  // refused (it needs Create).
  std::vector<std::string> Upgrade();
  // Every difference between the database and the schema (tables, columns,
  // indexes, key rows, recorded migrations), one line each; empty when they
  // match. The expected state is built from the schema files in a scratch
  // database on the same server, which must not exist yet and is dropped
  // again (default name: orvmysql_check_ + the process id).
  std::vector<std::string> Check(std::string scratch_database = {});

 private:
  ServerAddress address_;
  std::string database_;
  SchemaSource source_;
};

// Splits SQL text into statements: lines starting with "--" are dropped, and a
// statement ends with a line that ends in ";" (the ";" itself is dropped).
std::vector<std::string> SplitStatements(std::string_view sql);

// Create with the built-in schema, for tests and the demo.
void InstallSchema(const ServerAddress& address, const std::string& database);
// The baseline's statements, in order.
std::vector<std::string> SchemaStatements();

}  // namespace orvmysql::devkit
