#include "support/LiveDb.h"

#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <iostream>

namespace orvtest {

namespace {

std::unique_ptr<orvmysql::devkit::DevServer>& ServerSlot() {
  static std::unique_ptr<orvmysql::devkit::DevServer> server;
  return server;
}

// Starts the server before the first test and stops it after the last. The
// connections read no option files of the machine unless ORVMYSQL_OPTION_FILE
// names one: tests that need option files write their own.
class ServerEnvironment : public ::testing::Environment {
 public:
  void SetUp() override {
    if (std::getenv("ORVMYSQL_OPTION_FILE") == nullptr)
      setenv("ORVMYSQL_OPTION_FILE", "/dev/null", 1);
    ServerSlot() = orvmysql::devkit::DevServer::Acquire(
        [](const std::string& line) { std::cerr << "[server] " << line << "\n"; });
  }
  void TearDown() override { ServerSlot().reset(); }
};

const bool kRegistered = [] {
  ::testing::AddGlobalTestEnvironment(new ServerEnvironment);
  return true;
}();

std::string SafeName(const std::string& hint) {
  static std::atomic<int> counter{0};
  std::string name = "orvtest_";
  for (char c : hint) name += std::isalnum(static_cast<unsigned char>(c)) ? c : '_';
  name = name.substr(0, 40);
  return name + "_" + std::to_string(getpid()) + "_" + std::to_string(counter++);
}

std::unique_ptr<TestDatabase>& SuiteDatabase() {
  static std::unique_ptr<TestDatabase> db;
  return db;
}

}  // namespace

const orvmysql::devkit::ServerAddress& Server() {
  if (!ServerSlot()) throw std::runtime_error("the live-test server is not running");
  return ServerSlot()->Address();
}

TestDatabase::TestDatabase(const std::string& hint) : name_(SafeName(hint)) {
  orvmysql::devkit::InstallSchema(Server(), name_);
  helper_ = orvmysql::NewConnection(Connector());
}

TestDatabase::~TestDatabase() {
  try {
    helper_.reset();
    orvmysql::devkit::AdminExecute(Server(), "DROP DATABASE IF EXISTS `" + name_ + "`");
  } catch (const std::exception& e) {
    std::cerr << "could not drop " << name_ << ": " << e.what() << "\n";
  }
}

orvmysql::CDPConnector TestDatabase::Connector() const {
  return Server().Connector(name_);
}

std::shared_ptr<orvmysql::CMYSqlDP> TestDatabase::NewHandler() const {
  auto handler = std::make_shared<orvmysql::CMYSqlDP>();
  handler->Init(Connector());
  return handler;
}

std::shared_ptr<orvmysql::IConnection> TestDatabase::NewConnection() const {
  return orvmysql::NewConnection(Connector());
}

void TestDatabase::Exec(const std::string& sql) const {
  helper_->ExecuteNonQuery(sql);
}

std::string TestDatabase::Scalar(const std::string& sql) const {
  return helper_->ExecuteScalar(sql, "");
}

long long TestDatabase::Count(const std::string& table, const std::string& where) const {
  return std::stoll(
      helper_->ExecuteScalar("SELECT COUNT(*) FROM " + table + " WHERE " + where, "0"));
}

void LiveTest::SetUpTestSuite() {
  const auto* suite = ::testing::UnitTest::GetInstance()->current_test_suite();
  SuiteDatabase() = std::make_unique<TestDatabase>(suite != nullptr ? suite->name() : "suite");
}

void LiveTest::TearDownTestSuite() {
  SuiteDatabase().reset();
}

TestDatabase& LiveTest::Db() {
  if (!SuiteDatabase()) throw std::runtime_error("no suite database");
  return *SuiteDatabase();
}

}  // namespace orvtest
