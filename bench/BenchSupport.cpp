#include "bench/BenchSupport.h"

#include <mysql.h>
#include <unistd.h>

#include <iostream>
#include <stdexcept>

namespace orvbench {

namespace {

struct Context {
  std::unique_ptr<orvmysql::devkit::DevServer> server;
  std::string database;

  Context() {
    server = orvmysql::devkit::DevServer::Acquire(
        [](const std::string& line) { std::cerr << "[server] " << line << "\n"; });
    database = "orvbench_" + std::to_string(getpid());
    orvmysql::devkit::InstallSchema(server->Address(), database);
  }
  ~Context() {
    try {
      orvmysql::devkit::AdminExecute(server->Address(),
                                     "DROP DATABASE IF EXISTS `" + database + "`");
    } catch (const std::exception&) {
    }
  }
};

Context& Shared() {
  static Context context;
  return context;
}

}  // namespace

const orvmysql::devkit::ServerAddress& Server() {
  return Shared().server->Address();
}

const std::string& Database() {
  return Shared().database;
}

std::shared_ptr<orvmysql::CMYSqlDP> NewHandler() {
  auto handler = std::make_shared<orvmysql::CMYSqlDP>();
  handler->Init(Server().Connector(Database()));
  return handler;
}

long long StatementCount(orvmysql::IConnection& connection) {
  // Reading the counter is itself one statement; the caller's difference of
  // two readings therefore includes one, which callers subtract.
  return std::stoll(
      connection.ExecuteScalar("SELECT VARIABLE_VALUE FROM information_schema.SESSION_STATUS "
                               "WHERE VARIABLE_NAME = 'QUESTIONS'",
                               "0"));
}

CountedSession::CountedSession() : handler_(NewHandler()) {
  handler_->StartSession();
}

CountedSession::~CountedSession() {
  handler_->EndSession();
}

void SetStatements(benchmark::State& state, long long statements) {
  state.counters["statements"] =
      benchmark::Counter(static_cast<double>(statements), benchmark::Counter::kAvgIterations);
}

MYSQL* DirectConnect() {
  const orvmysql::devkit::ServerAddress& a = Server();
  MYSQL* db = mysql_init(nullptr);
  mysql_optionsv(db, MYSQL_SET_CHARSET_NAME, "utf8mb4");
  if (!mysql_real_connect(db, a.server.c_str(), a.user.c_str(), a.password.c_str(),
                          Database().c_str(), std::stoi(a.port), nullptr, CLIENT_FOUND_ROWS)) {
    const std::string message = mysql_error(db);
    mysql_close(db);
    throw std::runtime_error(message);
  }
  return db;
}

}  // namespace orvbench
