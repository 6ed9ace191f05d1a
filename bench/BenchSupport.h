#pragma once

// Shared by the benchmarks that need a database: one server per benchmark run
// (private unless ORVMYSQL_SERVER names one) and one database with the schema.

#include <benchmark/benchmark.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "orvmysql/DataHandler.h"
#include "tools/DevServer.h"

struct st_mysql;

namespace orvbench {

const orvmysql::devkit::ServerAddress& Server();
// The name of the benchmark database (created on first use, with the schema).
const std::string& Database();
// A data handler initialised for the benchmark database, or for another.
std::shared_ptr<orvmysql::CMYSqlDP> NewHandler();
std::shared_ptr<orvmysql::CMYSqlDP> NewHandler(const std::string& database);

// A database of its own with the schema, dropped by the destructor: for
// benchmarks whose rows (or whose deletions) would disturb the others.
class OwnDatabase {
 public:
  explicit OwnDatabase(const std::string& stem);
  ~OwnDatabase();
  OwnDatabase(const OwnDatabase&) = delete;
  OwnDatabase& operator=(const OwnDatabase&) = delete;
  const std::string& Name() const { return name_; }

 private:
  std::string name_;
};
// The server's count of statements run ("Questions") for this client
// connection's session; read through the given connection.
long long StatementCount(orvmysql::IConnection& connection);
// A Connector/C connection to the benchmark database (or another), for the
// bare statements the library's are measured against (close it with
// mysql_close).
st_mysql* DirectConnect();
st_mysql* DirectConnect(const std::string& database);
// Runs a statement on it; throws with the client's message when it fails.
void DirectExecute(st_mysql* db, const std::string& sql);

// The provider for a data-source code, cast to its interface.
template <class T>
std::shared_ptr<T> Source(orvmysql::CMYSqlDP& handler, int32_t code) {
  return std::dynamic_pointer_cast<T>(handler.GetDataSource(code));
}

// A data handler held in one session for the life of the object, and the
// statements the server counted in that session.
class CountedSession {
 public:
  CountedSession();
  explicit CountedSession(std::shared_ptr<orvmysql::CMYSqlDP> handler);
  ~CountedSession();
  CountedSession(const CountedSession&) = delete;
  CountedSession& operator=(const CountedSession&) = delete;

  orvmysql::CMYSqlDP& Handler() { return *handler_; }
  // Statements run so far in this session, not counting the readings.
  long long Statements() { return StatementCount(*handler_->Connection()) - readings_++; }

 private:
  std::shared_ptr<orvmysql::CMYSqlDP> handler_;
  long long readings_ = 0;
};

// Runs work with the timer on and adds the statements it ran to the count,
// reading the server's counter with the timer off.
template <class Work>
void Counted(benchmark::State& state, CountedSession& session, long long& statements, Work&& work) {
  state.PauseTiming();
  const long long before = session.Statements();
  state.ResumeTiming();
  work();
  state.PauseTiming();
  statements += session.Statements() - before;
  state.ResumeTiming();
}

// Sets the "statements" counter: the given total as an average per iteration.
void SetStatements(benchmark::State& state, long long statements);

// Runs first and second once each per iteration, taking turns at going first
// so that neither always follows the other's commit, and both see the same
// load on the machine. The iteration time is first's (register the benchmark
// with UseManualTime). Sets the counters <first>_us and <second>_us (medians)
// and <first>_per_<second>, the first over the second: medians resist the
// stalls of a machine shared with other work.
void TakeTurns(benchmark::State& state, const std::string& first_name,
               const std::function<void()>& first, const std::string& second_name,
               const std::function<void()>& second);
// As above, with prepare run untimed before each pair (to give each its own
// rows to work on).
void TakeTurns(benchmark::State& state, const std::function<void()>& prepare,
               const std::string& first_name, const std::function<void()>& first,
               const std::string& second_name, const std::function<void()>& second);

// Stores a process definition with the name through the providers; returns
// its key.
int32_t StoreDefinition(orvmysql::CMYSqlDP& handler, const std::string& name);

}  // namespace orvbench
