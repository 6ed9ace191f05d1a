#include "bench/BenchSupport.h"

#include <mysql.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <iostream>
#include <stdexcept>
#include <vector>

#include "orvmysql/Definitions.h"

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
  return NewHandler(Database());
}

std::shared_ptr<orvmysql::CMYSqlDP> NewHandler(const std::string& database) {
  auto handler = std::make_shared<orvmysql::CMYSqlDP>();
  handler->Init(Server().Connector(database));
  return handler;
}

OwnDatabase::OwnDatabase(const std::string& stem)
    : name_("orvbench_" + stem + "_" + std::to_string(getpid())) {
  orvmysql::devkit::InstallSchema(Server(), name_);
}

OwnDatabase::~OwnDatabase() {
  try {
    orvmysql::devkit::AdminExecute(Server(), "DROP DATABASE IF EXISTS `" + name_ + "`");
  } catch (const std::exception&) {
  }
}

long long StatementCount(orvmysql::IConnection& connection) {
  // Reading the counter is itself one statement; the caller's difference of
  // two readings therefore includes one, which callers subtract.
  return std::stoll(
      connection.ExecuteScalar("SELECT VARIABLE_VALUE FROM information_schema.SESSION_STATUS "
                               "WHERE VARIABLE_NAME = 'QUESTIONS'",
                               "0"));
}

CountedSession::CountedSession() : CountedSession(NewHandler()) {}

CountedSession::CountedSession(std::shared_ptr<orvmysql::CMYSqlDP> handler)
    : handler_(std::move(handler)) {
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
  return DirectConnect(Database());
}

MYSQL* DirectConnect(const std::string& database) {
  const orvmysql::devkit::ServerAddress& a = Server();
  MYSQL* db = mysql_init(nullptr);
  mysql_optionsv(db, MYSQL_SET_CHARSET_NAME, "utf8mb4");
  if (!mysql_real_connect(db, a.server.c_str(), a.user.c_str(), a.password.c_str(),
                          database.c_str(), std::stoi(a.port), nullptr, CLIENT_FOUND_ROWS)) {
    const std::string message = mysql_error(db);
    mysql_close(db);
    throw std::runtime_error(message);
  }
  // The isolation level the library sets for its sessions, so that the
  // floor's transactions lock what the library's do.
  if (mysql_query(db, "SET SESSION TRANSACTION ISOLATION LEVEL READ COMMITTED")) {
    const std::string message = mysql_error(db);
    mysql_close(db);
    throw std::runtime_error(message);
  }
  return db;
}

namespace {

double Median(std::vector<double>& values) {
  if (values.empty()) return 0;
  std::nth_element(values.begin(), values.begin() + values.size() / 2, values.end());
  return values[values.size() / 2];
}

double MicrosecondsOf(const std::function<void()>& work) {
  const auto start = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration<double, std::micro>(std::chrono::steady_clock::now() - start)
      .count();
}

}  // namespace

void TakeTurns(benchmark::State& state, const std::string& first_name,
               const std::function<void()>& first, const std::string& second_name,
               const std::function<void()>& second) {
  TakeTurns(
      state, [] {}, first_name, first, second_name, second);
}

void TakeTurns(benchmark::State& state, const std::function<void()>& prepare,
               const std::string& first_name, const std::function<void()>& first,
               const std::string& second_name, const std::function<void()>& second) {
  std::vector<double> first_us, second_us;
  bool first_goes_first = true;
  for (auto _ : state) {
    prepare();
    if (first_goes_first) first_us.push_back(MicrosecondsOf(first));
    second_us.push_back(MicrosecondsOf(second));
    if (!first_goes_first) first_us.push_back(MicrosecondsOf(first));
    first_goes_first = !first_goes_first;
    state.SetIterationTime(first_us.back() / 1e6);
  }
  const double first_median = Median(first_us), second_median = Median(second_us);
  state.counters[first_name + "_us"] = first_median;
  state.counters[second_name + "_us"] = second_median;
  state.counters[first_name + "_per_" + second_name] = first_median / second_median;
}

void DirectExecute(MYSQL* db, const std::string& sql) {
  if (mysql_real_query(db, sql.data(), sql.size()) != 0) throw std::runtime_error(mysql_error(db));
}

int32_t StoreDefinition(orvmysql::CMYSqlDP& handler, const std::string& name) {
  auto definitions = Source<orvmysql::IOrvDefinitionsDP>(handler, orvmysql::kDsDefinitions);
  definitions->Add({name,
                    "benchmark",
                    1,
                    orvmysql::Variant(),
                    orvmysql::Variant(),
                    "bench",
                    "",
                    "u-1",
                    "user",
                    "",
                    "",
                    1,
                    1,
                    1,
                    false,
                    0,
                    1,
                    0,
                    0,
                    1,
                    1,
                    0,
                    "",
                    ""});
  auto found = definitions->Load("ORDER BY ProcessDefID DESC LIMIT 1");
  if (!found->GetNext()) throw std::runtime_error("the definition " + name + " was not stored");
  return found->CurrentItem()->GetValue("ProcessDefID").ToLong();
}

}  // namespace orvbench
