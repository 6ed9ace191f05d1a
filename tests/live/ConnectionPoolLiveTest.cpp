// The connection pool against a real server: reuse, no session state carried
// from one use to the next, connections the server closed while idle, bounds
// under many threads, forks, and the settings that turn it off.

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <thread>
#include <vector>

#include "access/Connection.h"
#include "access/ConnectionPool.h"
#include "support/ErrorCapture.h"
#include "support/ForkedChild.h"
#include "support/LiveDb.h"
#include "support/ScopedEnv.h"
#include "tools/DevServer.h"

using namespace orvmysql;

namespace {

constexpr const char* kId = "SELECT CONNECTION_ID()";

// The connections under test log in as a user of their own, so that the
// helper's connections (another pool key) never mix with them.
class ConnectionPoolLive : public orvtest::LiveTest {
 protected:
  static void SetUpTestSuite() {
    LiveTest::SetUpTestSuite();
    Db().Exec("CREATE TABLE tblPoolProbe (ID INT PRIMARY KEY)");
    Db().Exec("CREATE USER IF NOT EXISTS '" + User() + "'@'%'");
    Db().Exec("GRANT ALL ON `" + Db().Name() + "`.* TO '" + User() + "'@'%'");
  }
  static void TearDownTestSuite() {
    detail::ConnectionPool::Instance().Clear();
    Db().Exec("DROP USER IF EXISTS '" + User() + "'@'%'");
    LiveTest::TearDownTestSuite();
  }

  void SetUp() override { detail::ConnectionPool::Instance().Clear(); }

  static const std::string& User() {
    static const std::string user = "orvtest_pool_" + std::to_string(getpid());
    return user;
  }
  static CDPConnector Connector() {
    const auto& server = orvtest::Server();
    return CDPConnector(server.server, Db().Name(), User(), "", server.port);
  }
  static std::shared_ptr<CConnection> Fresh() {
    auto c = std::make_shared<CConnection>();
    c->Init(Connector());
    return c;
  }

  // The server's connections of the user under test.
  static long long ServerConnections() {
    return std::stoll(Db().Scalar(
        "SELECT COUNT(*) FROM information_schema.PROCESSLIST WHERE USER = '" + User() + "'"));
  }
  // The same, once closing connections have left (the server lets them go a
  // little after the client closes); gives up after 10 s.
  static long long SettledConnections(long long at_most) {
    const auto give_up = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    long long now = ServerConnections();
    while (now > at_most && std::chrono::steady_clock::now() < give_up) {
      std::this_thread::sleep_for(std::chrono::milliseconds(20));
      now = ServerConnections();
    }
    return now;
  }
  // Connects the server accepted since it started.
  static long long Connects() {
    return std::stoll(Db().Scalar(
        "SELECT VARIABLE_VALUE FROM information_schema.GLOBAL_STATUS WHERE VARIABLE_NAME = "
        "'CONNECTIONS'"));
  }
};

TEST_F(ConnectionPoolLive, StatementsOutsideASessionAndSessionsReuseOneConnection) {
  auto c = Fresh();
  const std::string first = c->ExecuteScalar(kId, "");
  EXPECT_FALSE(c->IsOpen());
  EXPECT_EQ(c->ExecuteScalar(kId, ""), first);
  EXPECT_EQ(c->ExecuteNonQuery("DELETE FROM tblPoolProbe WHERE ID = -1"), 0);
  // Another connection object with the same settings, and a session.
  auto other = Fresh();
  other->StartSession();
  other->StartSession();
  EXPECT_EQ(other->ExecuteScalar(kId, ""), first);
  const std::string second = c->ExecuteScalar(kId, "");  // none idle: c connects
  EXPECT_NE(second, first);
  EXPECT_EQ(c->ExecuteScalar(kId, ""), second);
  other->EndSession();
  EXPECT_EQ(other->ExecuteScalar(kId, ""), first);  // held for the whole depth
  other->EndSession();
  EXPECT_FALSE(other->IsOpen());
  EXPECT_EQ(detail::ConnectionPool::Instance().IdleCount(), 2u);
  EXPECT_EQ(ServerConnections(), 2);
}

// Whatever a use leaves on the connection, the next use does not see: each
// case leaves its state once outside a session and once inside one.
TEST_F(ConnectionPoolLive, NoSessionStateSurvivesToTheNextUse) {
  auto c = Fresh();
  const std::string id = c->ExecuteScalar(kId, "");
  const std::string global_join_size = Db().Scalar("SELECT @@GLOBAL.max_join_size");
  const std::vector<std::vector<std::string>> leave = {
      {"SET @leak = 7"},
      {"SELECT @leak := 7"},
      {"SET SESSION max_join_size = 12345"},
      {"SET SESSION sql_mode = 'NO_BACKSLASH_ESCAPES'"},
      {"SET autocommit = 0", "INSERT INTO tblPoolProbe VALUES (1)"},
      {"CREATE TEMPORARY TABLE tmpLeak (A INT)"},
      {"START TRANSACTION", "INSERT INTO tblPoolProbe VALUES (2)"},
      {"PREPARE leak FROM 'SELECT 1'"},
      {"USE information_schema"},
  };
  for (const bool in_session : {false, true}) {
    for (const auto& statements : leave) {
      SCOPED_TRACE(statements.front() + (in_session ? " (session)" : ""));
      if (in_session) c->StartSession();
      for (const std::string& sql : statements) c->ExecuteNonQuery(sql);
      if (in_session) c->EndSession();
      c->StartSession();
      EXPECT_EQ(c->ExecuteScalar(kId, ""), id);  // the same connection, reused
      EXPECT_EQ(c->ExecuteScalar("SELECT @leak", "none"), "none");
      EXPECT_EQ(c->ExecuteScalar("SELECT @@max_join_size", ""), global_join_size);
      EXPECT_EQ(c->ExecuteScalar("SELECT @@sql_mode LIKE '%NO_BACKSLASH_ESCAPES%'", ""), "0");
      EXPECT_EQ(c->ExecuteScalar("SELECT @@autocommit", ""), "1");
      EXPECT_EQ(c->ExecuteScalar("SELECT DATABASE()", ""), Db().Name());
      EXPECT_EQ(c->ExecuteScalar("SELECT COUNT(*) FROM information_schema.TABLES WHERE "
                                 "TABLE_NAME = 'tmpLeak'",
                                 ""),
                "0");
      EXPECT_EQ(orvtest::ErrorOf([&] { c->ExecuteNonQuery("EXECUTE leak"); }), kErrDatabase);
      // The session's own settings are back: a text with a backslash reads back.
      EXPECT_EQ(c->ExecuteScalar("SELECT 'a\\\\b'", ""), "a\\b");
      EXPECT_EQ(c->ExecuteScalar("SELECT @@character_set_client", ""), "utf8mb4");
      c->EndSession();
      // Outside a session each statement is a use of its own, so the INSERT
      // after SET autocommit = 0 or START TRANSACTION commits (as on a
      // connection of its own); a session's open transaction is rolled back.
      EXPECT_EQ(Db().Count("tblPoolProbe"), !in_session && statements.size() > 1 ? 1 : 0);
      Db().Exec("DELETE FROM tblPoolProbe");
    }
  }
}

// The server closes idle pooled connections (as a restart or wait_timeout
// does); the next statements connect anew and none of them fails.
TEST_F(ConnectionPoolLive, ConnectionsClosedWhileIdleAreReplacedBeforeAnyStatement) {
  std::vector<std::shared_ptr<CConnection>> holders{Fresh(), Fresh(), Fresh()};
  for (auto& h : holders) h->StartSession();
  std::vector<std::string> ids;
  for (auto& h : holders) ids.push_back(h->ExecuteScalar(kId, ""));
  for (auto& h : holders) h->EndSession();
  ASSERT_EQ(detail::ConnectionPool::Instance().IdleCount(), 3u);
  for (const std::string& id : ids) Db().Exec("KILL CONNECTION " + id);
  auto c = Fresh();
  int failed = 0;
  c->SetStatementObserver(std::make_shared<const StatementObserver>(
      [&](const StatementEvent& e) { failed += e.error != nullptr; }));
  const std::string fresh = c->ExecuteScalar(kId, "");
  EXPECT_EQ(std::count(ids.begin(), ids.end(), fresh), 0);
  EXPECT_EQ(c->ExecuteNonQuery("INSERT INTO tblPoolProbe VALUES (10)"), 1);
  EXPECT_EQ(c->ExecuteNonQuery("DELETE FROM tblPoolProbe WHERE ID = 10"), 1);
  EXPECT_EQ(failed, 0);
  EXPECT_EQ(SettledConnections(1), 1);
}

// A server restarted while pooled connections sit idle: every statement after
// it runs on a new connection and none fails.
TEST_F(ConnectionPoolLive, AServerRestartedWhileConnectionsAreIdleCostsNoFailedStatement) {
  const char* mariadbd = std::getenv("ORVMYSQL_MARIADBD");
  if (!std::filesystem::exists(mariadbd != nullptr ? mariadbd : "/usr/sbin/mariadbd")) {
    GTEST_SKIP() << "no server binaries to start a private server with (mariadb-server-core)";
  }
  auto server = devkit::DevServer::AcquirePrivate({});
  devkit::AdminExecute(server->Address(), "CREATE DATABASE pool_restart");
  devkit::AdminExecute(server->Address(), "CREATE TABLE pool_restart.t (v INT)");
  devkit::AdminExecute(server->Address(), "INSERT INTO pool_restart.t VALUES (7)");
  const CDPConnector connector = server->Address().Connector("pool_restart");
  int failed = 0;
  const auto count_failures = std::make_shared<const StatementObserver>(
      [&](const StatementEvent& e) { failed += e.error != nullptr; });
  std::vector<std::shared_ptr<CConnection>> users;
  for (int i = 0; i < 3; ++i) {
    users.push_back(std::make_shared<CConnection>());
    users.back()->Init(connector);
    users.back()->SetStatementObserver(count_failures);
    users.back()->StartSession();
    ASSERT_EQ(users.back()->ExecuteScalar("SELECT SUM(v) FROM t", ""), "7");
  }
  for (auto& user : users) user->EndSession();
  ASSERT_GE(detail::ConnectionPool::Instance().IdleCount(), 3u);

  server->Restart();
  for (auto& user : users) {
    EXPECT_EQ(user->ExecuteScalar("SELECT SUM(v) FROM t", ""), "7");
    user->StartSession();
    EXPECT_EQ(user->ExecuteNonQuery("UPDATE t SET v = v"), 1);
  }
  for (auto& user : users) user->EndSession();
  EXPECT_EQ(failed, 0);
}

// Eight threads, a handler each, statements and sessions: the server never
// sees more connections than threads, the pool keeps no more than its size,
// and connections are reused rather than made.
TEST_F(ConnectionPoolLive, StaysWithinItsBoundsUnderEightThreads) {
  constexpr int kThreads = 8, kRounds = 60;
  for (const unsigned size : {8u, 3u}) {
    SCOPED_TRACE("pool size " + std::to_string(size));
    orvtest::ScopedEnv pool_size("ORVMYSQL_POOL_SIZE", std::to_string(size).c_str());
    ASSERT_EQ(SettledConnections(0), 0);
    const long long connects_before = Connects();
    std::atomic<int> running{kThreads}, errors{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
      threads.emplace_back([&] {
        try {
          auto handler = std::make_shared<CMYSqlDP>();
          handler->Init(Connector());
          auto c = handler->Connection();
          for (int i = 0; i < kRounds; ++i) {
            c->ExecuteScalar("SELECT COUNT(*) FROM tblPoolProbe", "");
            if (i % 3 == 0) {
              c->StartSession();
              c->ExecuteNonQuery("SET @mine = " + std::to_string(i));
              c->ExecuteScalar("SELECT @mine", "");
              c->EndSession();
            }
          }
        } catch (...) {
          ++errors;
        }
        --running;
      });
    }
    long long most = 0;
    while (running > 0) {
      most = std::max(most, ServerConnections());
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    for (auto& t : threads) t.join();
    EXPECT_EQ(errors, 0);
    EXPECT_LE(SettledConnections(size), static_cast<long long>(size));
    const long long made = Connects() - connects_before;
    if (size == kThreads) {
      // Nothing is ever closed: at most one connection per thread exists.
      EXPECT_LE(most, kThreads);
      EXPECT_LE(made, kThreads) << "for " << kThreads * kRounds * 4 / 3 << " uses";
    } else {
      EXPECT_LT(made, kThreads * kRounds)
          << "connections made for " << kThreads * kRounds * 4 / 3 << " uses";
    }
    detail::ConnectionPool::Instance().Clear();
  }
}

TEST_F(ConnectionPoolLive, IdleConnectionsAreClosedAfterTheIdleTime) {
  orvtest::ScopedEnv idle("ORVMYSQL_POOL_IDLE_TIMEOUT", "1");
  auto c = Fresh();
  c->ExecuteScalar(kId, "");
  ASSERT_EQ(detail::ConnectionPool::Instance().IdleCount(), 1u);
  const auto give_up = std::chrono::steady_clock::now() + std::chrono::seconds(30);
  while (detail::ConnectionPool::Instance().IdleCount() != 0 &&
         std::chrono::steady_clock::now() < give_up) {
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
  }
  EXPECT_EQ(detail::ConnectionPool::Instance().IdleCount(), 0u);
  EXPECT_EQ(SettledConnections(0), 0);
}

// A forked child shares its parent's sockets; it connects for itself and
// leaves the parent's idle connection working.
TEST_F(ConnectionPoolLive, AForkedChildNeverUsesItsParentsConnections) {
  auto c = Fresh();
  const std::string parent_id = c->ExecuteScalar(kId, "");
  const auto child_id = orvtest::TextFromChild([] { return Fresh()->ExecuteScalar(kId, ""); });
  ASSERT_TRUE(child_id.has_value());
  EXPECT_NE(*child_id, parent_id);
  EXPECT_EQ(c->ExecuteScalar(kId, ""), parent_id);
}

// With the pool off, by the environment or the option file, every statement
// outside a session connects and disconnects as before.
TEST_F(ConnectionPoolLive, PoolOffConnectsForEachStatement) {
  char dir[] = "/tmp/orvmysql-pool-XXXXXX";
  ASSERT_NE(mkdtemp(dir), nullptr);
  const std::string file = std::string(dir) + "/off.cnf";
  std::ofstream(file) << "[orvmysql]\npool = off\n";
  for (const bool by_file : {false, true}) {
    SCOPED_TRACE(by_file ? "option file" : "environment");
    orvtest::ScopedEnv env("ORVMYSQL_POOL", by_file ? nullptr : "off");
    orvtest::ScopedEnv options("ORVMYSQL_OPTION_FILE", by_file ? file.c_str() : nullptr);
    auto c = Fresh();
    const std::string first = c->ExecuteScalar(kId, "");
    EXPECT_NE(c->ExecuteScalar(kId, ""), first);
    c->StartSession();
    const std::string session = c->ExecuteScalar(kId, "");
    EXPECT_EQ(c->ExecuteScalar(kId, ""), session);
    c->EndSession();
    EXPECT_EQ(SettledConnections(0), 0);
  }
  std::filesystem::remove_all(dir);
}

TEST_F(ConnectionPoolLive, MalformedSettingsFailTheConnectNamingThem) {
  for (const auto& [name, value] :
       {std::pair{"ORVMYSQL_POOL", "sometimes"}, std::pair{"ORVMYSQL_POOL_SIZE", "-1"},
        std::pair{"ORVMYSQL_POOL_IDLE_TIMEOUT", "1m"}}) {
    orvtest::ScopedEnv env(name, value);
    const Error e = orvtest::Raised([&] { Fresh()->ExecuteScalar(kId, ""); });
    EXPECT_EQ(e.Number(), kErrConnectFailed);
    EXPECT_NE(e.Description().find(std::string(name) + " must be"), std::string::npos)
        << e.Description();
  }
}

}  // namespace
