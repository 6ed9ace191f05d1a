#include "tools/SchemaSnapshot.h"

#include <optional>
#include <set>
#include <utility>

#include "access/SqlValues.h"

namespace orvmysql::devkit {

namespace {

std::optional<std::string> Value(IListItem& row, const std::string& column) {
  const Variant v = row.GetValue(column);
  if (v.IsNull()) return std::nullopt;
  return v.ToText();
}

std::string Text(IListItem& row, const std::string& column) {
  return Value(row, column).value_or("NULL");
}

template <class F>
void ForEachRow(IConnection& connection, const std::string& sql, F&& f) {
  auto rows = connection.Execute(sql);
  while (rows->GetNext()) f(*rows->CurrentItem());
}

std::string Identifier(const std::string& name) {
  std::string quoted = "`";
  for (char c : name) quoted += c == '`' ? std::string("``") : std::string(1, c);
  return quoted + "`";
}

std::string InSchema(const std::string& database) {
  return " WHERE TABLE_SCHEMA = " + sql::Text(Variant(database), false);
}

void ReadTables(IConnection& c, const std::string& database, SchemaSnapshot& s) {
  ForEachRow(
      c,
      "SELECT TABLE_NAME, TABLE_TYPE, ENGINE, TABLE_COLLATION FROM information_schema.TABLES" +
          InSchema(database),
      [&](IListItem& row) {
        s.tables[Text(row, "TABLE_NAME")].options = Text(row, "TABLE_TYPE") +
                                                    " ENGINE=" + Text(row, "ENGINE") +
                                                    " COLLATE=" + Text(row, "TABLE_COLLATION");
      });
  ForEachRow(c,
             "SELECT TABLE_NAME, COLUMN_NAME, COLUMN_TYPE, IS_NULLABLE, COLUMN_DEFAULT, "
             "COLLATION_NAME, EXTRA FROM information_schema.COLUMNS" +
                 InSchema(database),
             [&](IListItem& row) {
               std::string d = Text(row, "COLUMN_TYPE");
               d += Text(row, "IS_NULLABLE") == "YES" ? " NULL" : " NOT NULL";
               if (auto def = Value(row, "COLUMN_DEFAULT")) d += " DEFAULT " + *def;
               if (auto collation = Value(row, "COLLATION_NAME")) d += " COLLATE " + *collation;
               if (auto extra = Value(row, "EXTRA"); extra && !extra->empty()) d += " " + *extra;
               s.tables[Text(row, "TABLE_NAME")].columns[Text(row, "COLUMN_NAME")] = d;
             });
}

void ReadIndexes(IConnection& c, const std::string& database, SchemaSnapshot& s) {
  struct Index {
    std::string kind;
    std::vector<std::string> columns;
  };
  std::map<std::pair<std::string, std::string>, Index> indexes;
  ForEachRow(c,
             "SELECT TABLE_NAME, INDEX_NAME, NON_UNIQUE, COLUMN_NAME, SUB_PART, COLLATION, "
             "INDEX_TYPE FROM information_schema.STATISTICS" +
                 InSchema(database) + " ORDER BY TABLE_NAME, INDEX_NAME, SEQ_IN_INDEX",
             [&](IListItem& row) {
               const std::string table = Text(row, "TABLE_NAME");
               const std::string name = Text(row, "INDEX_NAME");
               Index& index = indexes[{table, name}];
               if (index.columns.empty()) {
                 index.kind = name == "PRIMARY"                ? "PRIMARY KEY"
                              : Text(row, "NON_UNIQUE") == "0" ? "UNIQUE"
                                                               : "KEY";
                 if (Text(row, "INDEX_TYPE") != "BTREE")
                   index.kind += " " + Text(row, "INDEX_TYPE");
               }
               std::string column = Text(row, "COLUMN_NAME");
               if (auto part = Value(row, "SUB_PART")) column += "(" + *part + ")";
               if (Text(row, "COLLATION") == "D") column += " DESC";
               index.columns.push_back(column);
               if (name == "PRIMARY")
                 s.tables[table].primary_key.push_back(Text(row, "COLUMN_NAME"));
             });
  for (const auto& [key, index] : indexes) {
    std::string d = index.kind + " (";
    for (std::size_t i = 0; i < index.columns.size(); ++i) {
      d += (i > 0 ? ", " : "") + index.columns[i];
    }
    s.tables[key.first].indexes[key.second] = d + ")";
  }
}

TableRows ReadRows(IConnection& c, const std::string& database, const std::string& table,
                   const TableShape& shape) {
  TableRows rows;
  ForEachRow(c, "SELECT * FROM " + Identifier(database) + "." + Identifier(table),
             [&](IListItem& row) {
               RowValues values;
               for (const auto& column : shape.columns)
                 values[column.first] = Text(row, column.first);
               // Rows are told apart by their primary key, or by all values without one.
               std::string key;
               auto append = [&](const std::string& column) {
                 key += (key.empty() ? "" : ", ") + column + "=" + values[column];
               };
               if (shape.primary_key.empty()) {
                 for (const auto& column : values) append(column.first);
               } else {
                 for (const auto& column : shape.primary_key) append(column);
               }
               rows[key] = std::move(values);
             });
  return rows;
}

// Columns the library changes as it runs; their values are not part of the schema.
bool IsCounter(const std::string& table, const std::string& column) {
  return table == "tblKeyGen" && column == "LastAllocatedKey";
}

void CompareShapes(const std::string& prefix, const char* what,
                   const std::map<std::string, std::string>& expected,
                   const std::map<std::string, std::string>& actual,
                   std::vector<std::string>& out) {
  for (const auto& [name, shape] : expected) {
    auto it = actual.find(name);
    if (it == actual.end()) {
      out.push_back(prefix + "missing " + what + " " + name + " (" + shape + ")");
    } else if (it->second != shape) {
      out.push_back(prefix + what + " " + name + " is " + it->second + ", expected " + shape);
    }
  }
  for (const auto& [name, shape] : actual) {
    if (!expected.count(name))
      out.push_back(prefix + "extra " + what + " " + name + " (" + shape + ")");
  }
}

void CompareRows(const std::string& table, const TableRows& expected, const TableRows* actual,
                 std::vector<std::string>& out) {
  const std::string prefix = "table " + table + ": ";
  for (const auto& [key, values] : expected) {
    const RowValues* found = nullptr;
    if (actual != nullptr) {
      auto it = actual->find(key);
      if (it != actual->end()) found = &it->second;
    }
    if (found == nullptr) {
      out.push_back(prefix + "missing row " + key);
      continue;
    }
    for (const auto& [column, value] : values) {
      auto it = found->find(column);
      if (it == found->end() || it->second == value || IsCounter(table, column)) continue;
      out.push_back(prefix + "row " + key + ": " + column + " is " + it->second + ", expected " +
                    value);
    }
  }
}

}  // namespace

SchemaSnapshot ReadSnapshot(IConnection& connection, const std::string& database,
                            const SchemaSnapshot* filled) {
  SchemaSnapshot s;
  ReadTables(connection, database, s);
  ReadIndexes(connection, database, s);
  for (const auto& [table, shape] : s.tables) {
    if (table == kSchemaVersionTable) continue;
    if (filled != nullptr && !filled->rows.count(table)) continue;
    TableRows rows = ReadRows(connection, database, table, shape);
    if (!rows.empty() || filled != nullptr) s.rows[table] = std::move(rows);
  }
  if (s.tables.count(kSchemaVersionTable)) {
    ForEachRow(connection,
               "SELECT Version, Name FROM " + Identifier(database) + "." + kSchemaVersionTable,
               [&](IListItem& row) {
                 s.migrations[row.GetValue("Version").ToLong()] = Text(row, "Name");
               });
  }
  return s;
}

std::vector<std::string> CompareSnapshots(const SchemaSnapshot& expected,
                                          const SchemaSnapshot& actual) {
  std::vector<std::string> out;
  std::set<std::string> names;
  for (const auto& table : expected.tables) names.insert(table.first);
  for (const auto& table : actual.tables) names.insert(table.first);
  for (const std::string& name : names) {
    auto want = expected.tables.find(name);
    auto have = actual.tables.find(name);
    if (have == actual.tables.end()) {
      out.push_back("missing table " + name);
      continue;
    }
    if (want == expected.tables.end()) {
      out.push_back("extra table " + name + " (" + have->second.options + ")");
      continue;
    }
    const std::string prefix = "table " + name + ": ";
    if (want->second.options != have->second.options) {
      out.push_back(prefix + have->second.options + ", expected " + want->second.options);
    }
    CompareShapes(prefix, "column", want->second.columns, have->second.columns, out);
    CompareShapes(prefix, "index", want->second.indexes, have->second.indexes, out);
    if (auto rows = expected.rows.find(name); rows != expected.rows.end()) {
      auto actual_rows = actual.rows.find(name);
      CompareRows(name, rows->second,
                  actual_rows == actual.rows.end() ? nullptr : &actual_rows->second, out);
    }
  }
  for (const auto& [number, name] : expected.migrations) {
    auto it = actual.migrations.find(number);
    if (it == actual.migrations.end()) {
      out.push_back("migration " + name + " is not recorded as applied");
    } else if (it->second != name) {
      out.push_back("migration " + name + " is recorded under the name " + it->second);
    }
  }
  for (const auto& [number, name] : actual.migrations) {
    if (!expected.migrations.count(number)) {
      out.push_back("migration " + name + " is recorded but unknown to this version");
    }
  }
  return out;
}

}  // namespace orvmysql::devkit
