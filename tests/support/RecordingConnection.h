#pragma once

// A connection without a database, for tests that need the statements a
// provider writes rather than their effect: it records every statement and
// the session calls, hands out keys from one tblKeyGen row per entity type
// code (the first key of each is 42), and fails the statements that contain
// fail_on. Other answers are scripted by a text the statement contains;
// unscripted, a select finds no row, a scalar gives its default and any other
// statement changes one row.

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "access/RSList.h"
#include "orvmysql/Connection.h"
#include "orvmysql/Error.h"

namespace orvtest {

class RecordingConnection : public orvmysql::IConnection {
 public:
  using Row = std::vector<orvmysql::Variant>;
  struct RowsAnswer {
    std::string when;
    std::vector<std::string> names;
    std::vector<Row> rows;
  };

  std::vector<std::string> statements;
  int depth = 0;
  int starts = 0;
  int ends = 0;
  std::string fail_on;
  // Scripted answers; the first whose text occurs in the statement is used.
  std::vector<RowsAnswer> rows;                              // Execute
  std::vector<std::pair<std::string, std::string>> scalars;  // ExecuteScalar
  std::vector<std::pair<std::string, int32_t>> affected;     // ExecuteNonQuery

  std::string ConnectionString() const override { return {}; }
  void StartSession() override {
    ++depth;
    ++starts;
  }
  void EndSession(const orvmysql::Variant&) override {
    ++ends;
    if (depth > 0) --depth;
  }
  bool TestConnection() override { return false; }
  std::shared_ptr<orvmysql::IListIterator> Execute(const std::string& sql) override {
    Record(sql);
    if (Has(sql, "tblKeyGen")) {
      return orvmysql::MakeRowList({"LastAllocatedKey", "Seed", "Increment", "Offset"},
                                   {{LastKey(sql), 0, 1, 1}});
    }
    for (const RowsAnswer& answer : rows) {
      if (Has(sql, answer.when)) return orvmysql::MakeRowList(answer.names, answer.rows);
    }
    return orvmysql::MakeRowList({"x"}, {});
  }
  int32_t ExecuteNonQuery(const std::string& sql) override {
    Record(sql);
    if (Has(sql, "UPDATE tblKeyGen")) {
      LastKey(sql) = NumberAfter(sql, "LastAllocatedKey = ");
      return 1;
    }
    for (const auto& [when, count] : affected) {
      if (Has(sql, when)) return count;
    }
    return 1;
  }
  std::string ExecuteScalar(const std::string& sql, const std::string& default_value) override {
    Record(sql);
    for (const auto& [when, value] : scalars) {
      if (Has(sql, when)) return value;
    }
    return default_value;
  }

  // The recorded statements without those of the key generator and the
  // transaction brackets (which `statements` keeps).
  std::vector<std::string> Written() const {
    std::vector<std::string> written;
    for (const std::string& sql : statements) {
      if (!Has(sql, "tblKeyGen") && sql != "START TRANSACTION" && sql != "COMMIT" &&
          sql != "ROLLBACK") {
        written.push_back(sql);
      }
    }
    return written;
  }

 private:
  static bool Has(const std::string& sql, const std::string& part) {
    return !part.empty() && sql.find(part) != std::string::npos;
  }
  static int32_t NumberAfter(const std::string& sql, const std::string& label) {
    return std::stoi(sql.substr(sql.find(label) + label.size()));
  }
  int32_t& LastKey(const std::string& sql) {
    return last_keys_.try_emplace(NumberAfter(sql, "EntityTypeCode = "), 41).first->second;
  }
  void Record(const std::string& sql) {
    statements.push_back(sql);
    if (Has(sql, fail_on)) {
      throw orvmysql::Error(orvmysql::kErrDatabase, "orvmysql", sql + "\r\nserver said no");
    }
  }

  std::map<int32_t, int32_t> last_keys_;  // by entity type code
};

// A provider of the given class, initialised with the connection.
template <class Provider>
std::shared_ptr<Provider> On(const std::shared_ptr<RecordingConnection>& connection) {
  auto provider = std::make_shared<Provider>();
  provider->Init(connection);
  return provider;
}

}  // namespace orvtest
