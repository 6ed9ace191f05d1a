#pragma once

// A connection without a database, for tests that need the statements a
// provider writes rather than their effect: it records every
// statement and the session depth, hands out keys from a fixed tblKeyGen row
// (the next key is 42), answers scalars with their default, and fails the
// statements that contain fail_on.

#include <memory>
#include <string>
#include <vector>

#include "access/RSList.h"
#include "orvmysql/Connection.h"
#include "orvmysql/Error.h"

namespace orvtest {

class RecordingConnection : public orvmysql::IConnection {
 public:
  std::vector<std::string> statements;
  int depth = 0;
  int starts = 0;
  std::string fail_on;

  std::string ConnectionString() const override { return {}; }
  void StartSession() override {
    ++depth;
    ++starts;
  }
  void EndSession(const orvmysql::Variant&) override {
    if (depth > 0) --depth;
  }
  bool TestConnection() override { return false; }
  std::shared_ptr<orvmysql::IListIterator> Execute(const std::string& sql) override {
    Record(sql);
    if (sql.find("tblKeyGen") != std::string::npos) {
      return orvmysql::MakeRowList({"LastAllocatedKey", "Seed", "Increment", "Offset"},
                                   {{41, 0, 1, 1}});
    }
    return orvmysql::MakeRowList({"x"}, {});
  }
  int32_t ExecuteNonQuery(const std::string& sql) override {
    Record(sql);
    return 1;
  }
  std::string ExecuteScalar(const std::string& sql, const std::string& default_value) override {
    Record(sql);
    return default_value;
  }

 private:
  void Record(const std::string& sql) {
    statements.push_back(sql);
    if (!fail_on.empty() && sql.find(fail_on) != std::string::npos) {
      throw orvmysql::Error(orvmysql::kErrDatabase, "orvmysql", sql + "\r\nserver said no");
    }
  }
};

// A provider of the given class, initialised with the connection.
template <class Provider>
std::shared_ptr<Provider> On(const std::shared_ptr<RecordingConnection>& connection) {
  auto provider = std::make_shared<Provider>();
  provider->Init(connection);
  return provider;
}

}  // namespace orvtest
