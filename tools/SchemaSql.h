#pragma once

// The schema files, compiled in by the build (generated SchemaSql.cpp).

namespace orvmysql::devkit {

struct EmbeddedSqlFile {
  const char* name;  // file name without ".sql"
  const char* sql;
};

// schema/orvmysql.sql
extern const char* const kSchemaSql;
// schema/migrations/*.sql in file-name order, ended by {nullptr, nullptr}.
extern const EmbeddedSqlFile kMigrationFiles[];

}  // namespace orvmysql::devkit
