#pragma once

// Live-database support for the tests: one server per run of the live test
// binary (private unless ORVMYSQL_SERVER names an existing one, see
// tools/DevServer.h) and a fresh database, with the schema, per test suite.

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "orvmysql/DataHandler.h"
#include "tools/DevServer.h"

namespace orvtest {

// The server of this run.
const orvmysql::devkit::ServerAddress& Server();

// A fresh database holding the schema; dropped by the destructor.
class TestDatabase {
 public:
  explicit TestDatabase(const std::string& hint);
  ~TestDatabase();
  TestDatabase(const TestDatabase&) = delete;
  TestDatabase& operator=(const TestDatabase&) = delete;

  const std::string& Name() const { return name_; }
  orvmysql::CDPConnector Connector() const;
  // A handler initialised for this database.
  std::shared_ptr<orvmysql::CMYSqlDP> NewHandler() const;
  // A connection of its own (another client), for competing writers.
  std::shared_ptr<orvmysql::IConnection> NewConnection() const;
  // Helpers on a connection of their own, outside the code under test.
  void Exec(const std::string& sql) const;
  std::string Scalar(const std::string& sql) const;  // "" when no row or NULL
  long long Count(const std::string& table, const std::string& where = "1=1") const;

 private:
  std::string name_;
  std::shared_ptr<orvmysql::IConnection> helper_;
};

// Base fixture: Db() is the suite's database (created once per test suite);
// Handler() a data handler on it.
class LiveTest : public ::testing::Test {
 public:
  static void SetUpTestSuite();
  static void TearDownTestSuite();

 protected:
  static TestDatabase& Db();
  std::shared_ptr<orvmysql::CMYSqlDP> Handler() const { return Db().NewHandler(); }

  // The provider for a data-source code, cast to its interface.
  template <class T>
  std::shared_ptr<T> Provider(const std::shared_ptr<orvmysql::CMYSqlDP>& handler, int code) const {
    auto typed = std::dynamic_pointer_cast<T>(handler->GetDataSource(code));
    if (!typed) throw std::runtime_error("provider lacks the requested interface");
    return typed;
  }
};

}  // namespace orvtest
