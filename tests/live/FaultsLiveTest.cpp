// Faults on a private server of the suite's own: a hung server (SIGSTOP), a
// killed and restarted one, a killed connection, lock conflicts between two
// clients, and one handler called from two threads at once.

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <fstream>
#include <future>
#include <mutex>
#include <thread>
#include <vector>

#include "access/Connection.h"
#include "orvmysql/orvmysql.h"
#include "support/ErrorCapture.h"
#include "support/PrivateServer.h"
#include "support/ScopedEnv.h"
#include "tools/DevServer.h"

using namespace orvmysql;

namespace {

using Clock = std::chrono::steady_clock;

constexpr const char* kDatabase = "faults";

class FaultsLive : public orvtest::PrivateServerTest {
 public:
  static void SetUpTestSuite() {
    if (!StartServer()) return;
    const std::string db = kDatabase;
    devkit::AdminExecute(Address(), "CREATE DATABASE " + db);
    devkit::AdminExecute(Address(),
                         "CREATE TABLE " + db + ".t (id INT PRIMARY KEY, v INT) ENGINE=InnoDB");
    devkit::AdminExecute(Address(), "CREATE TABLE " + db + ".w (tag VARCHAR(20)) ENGINE=InnoDB");
    devkit::AdminExecute(Address(), "INSERT INTO " + db + ".t VALUES (1, 0), (2, 0)");
    // Short limits, so that a hung server is given up on in about a second.
    std::ofstream(File("short.cnf"))
        << "[orvmysql]\nconnect-timeout = 1\nread-timeout = 1\nwrite-timeout = 1\n";
    std::ofstream(File("no-retries.cnf")) << "[orvmysql]\nlock_retries = 0\n";
  }

 protected:
  // A connection over TCP, or over the unix socket.
  static std::shared_ptr<CConnection> Connect(bool over_socket = false) {
    const auto& a = Address();
    auto connection = std::make_shared<CConnection>();
    connection->Init(over_socket ? CDPConnector(a.socket, kDatabase, a.user, a.password)
                                 : a.Connector(kDatabase));
    return connection;
  }
};

struct Outcome {
  Error error{0, "", ""};
  double seconds = 0;
};

// Runs the call, which must fail, and times it. Should it still be waiting
// after a minute, the server is resumed so that the test ends.
template <class Call>
Outcome FailureOf(devkit::DevServer& server, Call call) {
  auto pending = std::async(std::launch::async, [call] {
    const auto start = Clock::now();
    Outcome outcome;
    outcome.error = orvtest::Raised(call);
    outcome.seconds = std::chrono::duration<double>(Clock::now() - start).count();
    return outcome;
  });
  if (pending.wait_for(std::chrono::seconds(60)) != std::future_status::ready) {
    ADD_FAILURE() << "still waiting on a hung server after 60 s";
    server.Resume();
  }
  return pending.get();
}

TEST_F(FaultsLive, AHungServerFailsEveryKindOfCallWithinItsTimeLimits) {
  orvtest::ScopedEnv file("ORVMYSQL_OPTION_FILE", File("short.cnf").c_str());
  auto session = Connect();
  session->StartSession();
  EXPECT_EQ(session->ExecuteScalar("SELECT 1", ""), "1");

  Server().Pause();
  const Outcome tcp = FailureOf(Server(), [] { Connect()->ExecuteScalar("SELECT 1", ""); });
  const Outcome socket = FailureOf(Server(), [] { Connect(true)->ExecuteScalar("SELECT 1", ""); });
  const Outcome in_session = FailureOf(Server(), [&] { session->ExecuteScalar("SELECT 2", ""); });
  Server().Resume();

  // One second each, with room for a loaded machine: a connect may spend its
  // connect limit and then a read limit on the greeting.
  for (const Outcome* o : {&tcp, &socket}) {
    EXPECT_EQ(o->error.Number(), kErrConnectFailed) << o->error.what();
    EXPECT_LT(o->seconds, 8.0) << o->error.what();
  }
  EXPECT_EQ(in_session.error.NativeError(), 2013u) << in_session.error.what();
  EXPECT_LT(in_session.seconds, 8.0);
  EXPECT_NE(in_session.error.Description().find("SELECT 2\r\n"), std::string::npos);

  // The server answers again and so does the session, at its depth.
  EXPECT_EQ(session->ExecuteScalar("SELECT 3", ""), "3");
  EXPECT_EQ(session->SessionDepth(), 1);
  session->EndSession();
  EXPECT_FALSE(session->IsOpen());
}

TEST_F(FaultsLive, AfterARestartTheSessionsNextStatementReconnectsAtTheSameDepth) {
  for (const int depth : {1, 3}) {
    SCOPED_TRACE(depth);
    auto connection = Connect();
    for (int i = 0; i < depth; ++i) connection->StartSession();
    const std::string before = connection->ExecuteScalar("SELECT CONNECTION_ID()", "");

    Server().Kill();
    Server().Restart();
    const Error lost = orvtest::Raised([&] { connection->ExecuteScalar("SELECT 1", ""); });
    EXPECT_TRUE(IsConnectionLost(lost.NativeError())) << lost.what();

    // One statement after the failure runs on a new connection; the caller's
    // EndSession calls match its StartSession calls as before.
    const std::string after = connection->ExecuteScalar("SELECT CONNECTION_ID()", "");
    EXPECT_FALSE(after.empty());
    EXPECT_EQ(connection->SessionDepth(), depth);
    for (int i = 1; i < depth; ++i) connection->EndSession();
    EXPECT_TRUE(connection->IsOpen());
    EXPECT_EQ(connection->ExecuteScalar("SELECT CONNECTION_ID()", ""), after)
        << "the session's connection was not kept (before the restart: " << before << ")";
    connection->EndSession();
    EXPECT_FALSE(connection->IsOpen());
  }
}

TEST_F(FaultsLive, AStatementLostAfterItWasSentIsNeverSentAgain) {
  // The client stops waiting after 1 s; the server goes on and commits the
  // INSERT a second later. Whether it ran could not be known when it failed,
  // so the library must not have sent it again.
  orvtest::ScopedEnv file("ORVMYSQL_OPTION_FILE", File("short.cnf").c_str());
  auto connection = Connect();
  connection->StartSession();
  const Error lost = orvtest::Raised([&] {
    connection->ExecuteNonQuery("INSERT INTO w (tag) SELECT 'late' FROM DUAL WHERE SLEEP(2) = 0");
  });
  EXPECT_EQ(lost.NativeError(), 2013u) << lost.what();
  const auto count = [&] { return connection->ExecuteScalar("SELECT COUNT(*) FROM w", ""); };
  const auto deadline = Clock::now() + std::chrono::seconds(10);
  while (count() == "0" && Clock::now() < deadline) {
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
  }
  std::this_thread::sleep_for(std::chrono::milliseconds(500));
  EXPECT_EQ(count(), "1");

  // A connection killed by the server while idle: the next statement fails
  // and is not run, the one after it runs.
  const std::string id = connection->ExecuteScalar("SELECT CONNECTION_ID()", "");
  devkit::AdminExecute(Address(), "KILL CONNECTION " + id);
  const Error killed = orvtest::Raised(
      [&] { connection->ExecuteNonQuery("INSERT INTO w (tag) VALUES ('after kill')"); });
  EXPECT_TRUE(IsConnectionLost(killed.NativeError())) << killed.what();
  EXPECT_EQ(connection->ExecuteScalar("SELECT COUNT(*) FROM w WHERE tag = 'after kill'", ""), "0");
  EXPECT_EQ(connection->SessionDepth(), 1);
  connection->EndSession();
}

struct Seen {
  struct Event {
    int64_t rows;
    int32_t retries;
    bool failed;
  };
  std::mutex mutex;
  std::vector<Event> events;
  void Record(const StatementEvent& e) {
    std::lock_guard hold(mutex);
    events.push_back({e.rows, e.retries, e.error != nullptr});
  }
};

TEST_F(FaultsLive, ALockWaitTimeoutInAutocommitIsRetriedAndCounted) {
  auto holder = Connect();
  holder->StartSession();
  const auto lock_row = [&] {
    holder->ExecuteNonQuery("START TRANSACTION");
    holder->Execute("SELECT v FROM t WHERE id = 1 FOR UPDATE");
  };
  const std::string update = "UPDATE t SET v = v + 1 WHERE id = 1";
  const auto waiter_with = [&](Seen& seen) {
    auto waiter = Connect();
    waiter->SetStatementObserver(std::make_shared<const StatementObserver>(
        [&seen](const StatementEvent& e) { seen.Record(e); }));
    waiter->StartSession();
    waiter->ExecuteNonQuery("SET SESSION innodb_lock_wait_timeout = 1");
    return waiter;
  };

  // Inside a transaction the caller decides: no retry.
  lock_row();
  {
    Seen seen;
    auto waiter = waiter_with(seen);
    waiter->ExecuteNonQuery("START TRANSACTION");
    const Error e = orvtest::Raised([&] { waiter->ExecuteNonQuery(update); });
    EXPECT_EQ(e.NativeError(), 1205u) << e.what();
    waiter->ExecuteNonQuery("ROLLBACK");
    ASSERT_EQ(seen.events.size(), 4u);
    EXPECT_EQ(seen.events[2].retries, 0);
  }
  // Nor with lock-retries = 0.
  {
    orvtest::ScopedEnv file("ORVMYSQL_OPTION_FILE", File("no-retries.cnf").c_str());
    Seen seen;
    auto waiter = waiter_with(seen);
    const Error e = orvtest::Raised([&] { waiter->ExecuteNonQuery(update); });
    EXPECT_EQ(e.NativeError(), 1205u) << e.what();
    ASSERT_EQ(seen.events.size(), 2u);
    EXPECT_EQ(seen.events[1].retries, 0);
  }
  // Alone in autocommit it is sent again once the holder lets go.
  {
    Seen seen;
    auto waiter = waiter_with(seen);
    std::thread release([&] {
      std::this_thread::sleep_for(std::chrono::milliseconds(1500));
      holder->ExecuteNonQuery("COMMIT");
    });
    const int32_t matched = waiter->ExecuteNonQuery(update);
    release.join();
    EXPECT_EQ(matched, 1);
    ASSERT_EQ(seen.events.size(), 2u);
    EXPECT_GE(seen.events[1].retries, 1);
    EXPECT_LE(seen.events[1].retries, 3);
    EXPECT_FALSE(seen.events[1].failed);
    EXPECT_EQ(seen.events[1].rows, 1);
    EXPECT_EQ(waiter->ExecuteScalar("SELECT v FROM t WHERE id = 1", ""), "1");
  }
  holder->EndSession();
}

constexpr int32_t kErrInUse = static_cast<int32_t>(0x8004F002u);

TEST_F(FaultsLive, ACallFromASecondThreadDuringACallRaisesInUse) {
  auto connection = Connect();
  std::promise<void> inside, tried;
  auto tried_done = tried.get_future().share();
  std::atomic<int> calls{0};
  std::string nested;
  connection->SetStatementObserver(
      std::make_shared<const StatementObserver>([&](const StatementEvent&) {
        if (calls++ != 0) return;
        // Still inside the first statement: this thread may call again...
        nested = connection->ExecuteScalar("SELECT 'nested'", "");
        inside.set_value();
        tried_done.wait();
      }));
  std::thread first([&] { connection->ExecuteScalar("SELECT 1", ""); });
  inside.get_future().wait();
  // ...another thread may not, whatever it calls.
  const Error statement =
      orvtest::Raised([&] { connection->ExecuteNonQuery("UPDATE t SET v = v WHERE id = 2"); });
  const Error session = orvtest::Raised([&] { connection->StartSession(); });
  tried.set_value();
  first.join();

  EXPECT_EQ(nested, "nested");
  for (const Error* e : {&statement, &session}) {
    EXPECT_EQ(e->Number(), kErrInUse) << e->what();
    EXPECT_EQ(e->Description(),
              "Connection is in use by another thread; use one data handler per thread.");
  }
  EXPECT_EQ(calls.load(), 2) << "the refused call reached the connection";
  EXPECT_EQ(connection->SessionDepth(), 0);
  // Once the first thread is done, the other may use it.
  EXPECT_EQ(connection->ExecuteScalar("SELECT 2", ""), "2");
}

TEST_F(FaultsLive, TwoThreadsHammeringOneHandlerGetInUseErrorsNeverACrash) {
  auto handler = std::make_shared<CMYSqlDP>();
  handler->Init(Address().Connector(kDatabase));
  std::atomic<int> done{0}, refused{0}, other{0};
  const auto hammer = [&] {
    const auto until = Clock::now() + std::chrono::seconds(1);
    while (Clock::now() < until) {
      try {
        handler->StartSession();
        try {
          handler->Connection()->ExecuteScalar("SELECT v FROM t WHERE id = 2", "");
          handler->Connection()->Execute("SELECT id, v FROM t");
          ++done;
        } catch (const Error& e) {
          ++(e.Number() == kErrInUse ? refused : other);
        }
        handler->EndSession();
      } catch (const Error& e) {
        ++(e.Number() == kErrInUse ? refused : other);
      }
    }
  };
  std::thread a(hammer), b(hammer);
  a.join();
  b.join();
  EXPECT_GT(done.load(), 0);
  EXPECT_GT(refused.load(), 0) << "the threads never met";
  EXPECT_EQ(other.load(), 0);
  // Sessions that one thread opened and the other's refusal left unended are
  // ended here; the connection still works.
  auto connection = std::dynamic_pointer_cast<CConnection>(handler->Connection());
  ASSERT_NE(connection, nullptr);
  while (connection->SessionDepth() > 0) handler->EndSession();
  EXPECT_EQ(handler->Connection()->ExecuteScalar("SELECT 7", ""), "7");
}

}  // namespace
