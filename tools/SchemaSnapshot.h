#pragma once

// The shape of a database as information_schema describes it (tables,
// columns, indexes), the rows the schema fills in itself (key rows) and the
// recorded migrations; and the differences between two such shapes.

#include <map>
#include <string>
#include <vector>

#include "orvmysql/Connection.h"

namespace orvmysql::devkit {

// The table that records the migrations applied to a database.
inline constexpr const char* kSchemaVersionTable = "tblSchemaVersion";

struct TableShape {
  std::string options;                         // "BASE TABLE ENGINE=InnoDB COLLATE=..."
  std::map<std::string, std::string> columns;  // name -> "int(11) NOT NULL DEFAULT 0"
  std::map<std::string, std::string> indexes;  // name -> "UNIQUE (a, b(10))"
  std::vector<std::string> primary_key;        // columns in key order
};

// Row values by column; rows by their primary-key text ("EntityTypeCode=-10").
using RowValues = std::map<std::string, std::string>;
using TableRows = std::map<std::string, RowValues>;

struct SchemaSnapshot {
  std::map<std::string, TableShape> tables;
  std::map<std::string, TableRows> rows;  // only the tables the schema fills
  std::map<int, std::string> migrations;  // recorded: number -> name
};

// Reads the shape of the database over a connection that may belong to any
// database of the server. Rows are read from the tables that hold rows in
// `filled`, or, when it is null, from every table that holds any (apart from
// the migration record).
SchemaSnapshot ReadSnapshot(IConnection& connection, const std::string& database,
                            const SchemaSnapshot* filled = nullptr);

// Every difference of `actual` from `expected`, one line each, ordered by
// table. Counters that the library advances as it runs
// (tblKeyGen.LastAllocatedKey) are not compared.
std::vector<std::string> CompareSnapshots(const SchemaSnapshot& expected,
                                          const SchemaSnapshot& actual);

}  // namespace orvmysql::devkit
