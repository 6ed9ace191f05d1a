// The connection against a real server: sessions, connection lifetime, counts,
// scalars, failures and UTF-8 round trips.

#include <gtest/gtest.h>
#include <unistd.h>

#include "access/Connection.h"
#include "access/General.h"
#include "support/ErrorCapture.h"
#include "support/LiveDb.h"

using namespace orvmysql;

namespace {

class ConnectionLive : public orvtest::LiveTest {
 protected:
  static void SetUpTestSuite() {
    LiveTest::SetUpTestSuite();
    Db().Exec("CREATE TABLE tblProbe (ID INT PRIMARY KEY, Txt VARCHAR(255) NULL, N INT NULL)");
    Db().Exec("INSERT INTO tblProbe VALUES (1, 'one', 10), (2, NULL, 20), (3, 'three', NULL)");
  }

  std::shared_ptr<CConnection> Fresh() const {
    auto c = std::make_shared<CConnection>();
    c->Init(Db().Connector());
    return c;
  }
};

TEST_F(ConnectionLive, StatementOutsideSessionLeavesNoConnectionButRowsStayReadable) {
  auto c = Fresh();
  auto rows = c->Execute("SELECT ID, Txt FROM tblProbe ORDER BY ID");
  EXPECT_FALSE(c->IsOpen());
  EXPECT_EQ(rows->Count(), 3);
  ASSERT_TRUE(rows->GetNext());
  EXPECT_EQ(rows->CurrentItem()->GetValue("txt").ToText(), "one");
  EXPECT_EQ(c->ExecuteNonQuery("UPDATE tblProbe SET N = N WHERE ID = 1"), 1);
  EXPECT_FALSE(c->IsOpen());
}

TEST_F(ConnectionLive, SessionsNestAndReuseOneConnection) {
  auto c = Fresh();
  const std::string id_sql = "SELECT CONNECTION_ID()";
  c->StartSession();
  c->StartSession();
  const std::string first = c->ExecuteScalar(id_sql, "");
  c->EndSession();
  EXPECT_TRUE(c->IsOpen());
  EXPECT_EQ(c->ExecuteScalar(id_sql, ""), first);
  c->EndSession();
  EXPECT_FALSE(c->IsOpen());
  c->EndSession();  // unmatched: harmless
  EXPECT_EQ(c->SessionDepth(), 0);
}

TEST_F(ConnectionLive, AffectedRowsCountMatchedRows) {
  auto c = Fresh();
  EXPECT_EQ(c->ExecuteNonQuery("UPDATE tblProbe SET N = 5 WHERE ID = 99"), 0);
  EXPECT_EQ(c->ExecuteNonQuery("UPDATE tblProbe SET N = N WHERE ID IN (1, 2)"), 2);
}

TEST_F(ConnectionLive, ScalarFallsBackToTheDefault) {
  auto c = Fresh();
  EXPECT_EQ(c->ExecuteScalar("SELECT Txt FROM tblProbe WHERE ID = 99", "dflt"), "dflt");
  EXPECT_EQ(c->ExecuteScalar("SELECT Txt FROM tblProbe WHERE ID = 2", "dflt"), "dflt");
  EXPECT_EQ(c->ExecuteScalar("SELECT Txt, N FROM tblProbe ORDER BY ID", "dflt"), "one");
  EXPECT_FALSE(c->TestConnection());
}

TEST_F(ConnectionLive, ValuesComeBackTyped) {
  auto c = Fresh();
  auto rows = c->Execute(
      "SELECT 7 AS I, 2.5 AS D, 'x' AS T, NULL AS N, CAST('2024-02-29 13:14:15' AS DATETIME) AS "
      "DT, "
      "CAST('2024-02-29' AS DATE) AS DA, COUNT(*) AS C FROM tblProbe");
  ASSERT_TRUE(rows->GetNext());
  auto r = rows->CurrentItem();
  EXPECT_EQ(r->GetValue("I").GetType(), Variant::Type::Long);
  EXPECT_DOUBLE_EQ(r->GetValue("D").ToDouble(), 2.5);
  EXPECT_EQ(r->GetValue("T").ToText(), "x");
  EXPECT_TRUE(r->GetValue("N").IsNull());
  EXPECT_EQ(r->GetValue("DT").ToText(), "2024-02-29 13:14:15");
  EXPECT_EQ(r->GetValue("DA").ToText(), "2024-02-29");
  EXPECT_EQ(r->GetValue("C").ToLong(), 3);
}

TEST_F(ConnectionLive, SqlErrorCarriesStatementServerCodeAndTrail) {
  auto c = Fresh();
  const Error e = orvtest::Raised([&] { c->Execute("SELEC nothing"); });
  EXPECT_EQ(e.Number(), kErrDatabase);
  EXPECT_EQ(e.NativeError(), 1064u);
  EXPECT_EQ(e.SqlState(), "42000");
  EXPECT_EQ(e.Description().rfind("SELEC nothing\r\n", 0), 0u) << e.Description();
  EXPECT_NE(e.Source().find(" => \r\nCConnection:Execute Function Ln "), std::string::npos);
  EXPECT_FALSE(c->IsOpen());

  c->StartSession();
  EXPECT_EQ(orvtest::Raised([&] { c->ExecuteNonQuery("UPDATE nowhere SET x=1"); }).NativeError(),
            1146u);
  EXPECT_EQ(orvtest::Raised([&] { c->ExecuteScalar("SELECT", ""); }).NativeError(), 1064u);
  EXPECT_TRUE(c->IsOpen());
  EXPECT_EQ(c->ExecuteScalar("SELECT 1", ""), "1");  // the session survives the failures
  c->EndSession();
}

TEST_F(ConnectionLive, FailedConnectsRaise61441WithReasonAndMaskedConnectionString) {
  const auto& server = orvtest::Server();
  struct Case {
    CDPConnector connector;
    unsigned native;
  };
  const Case cases[] = {
      {CDPConnector("127.0.0.1", "", "root", "", "1"),
       2002u},  // nothing listens on port 1 (2002 or 2003)
      {CDPConnector(server.server, "", server.user, "wrong-password", server.port), 1045u},
      {CDPConnector(server.server, "no_such_db", server.user, server.password, server.port), 1049u},
      {CDPConnector(server.server, "", server.user, server.password, "port"), 0u},
  };
  for (const Case& k : cases) {
    auto c = std::make_shared<CConnection>();
    c->Init(k.connector);
    const Error e = orvtest::Raised([&] { c->Execute("SELECT 1"); });
    EXPECT_EQ(e.Number(), kErrConnectFailed);
    EXPECT_EQ(e.Description().rfind("SELECT 1\r\nFailed to connect to data provider. (Reason: "
                                    "ErrNo:-2147467259\r\n Details:",
                                    0),
              0u)
        << e.Description();
    // The password shows masked, in the error and in its one-line text alike.
    const std::string tail = ")\r\n" + MaskedConnectionString(*c);
    EXPECT_EQ(e.Description().substr(e.Description().size() - tail.size()), tail);
    EXPECT_NE(tail.find(";PASSWORD=********;"), std::string::npos);
    if (!k.connector.Password().empty()) {
      EXPECT_EQ(e.Description().find(k.connector.Password()), std::string::npos);
      EXPECT_EQ(std::string(e.what()).find(k.connector.Password()), std::string::npos);
      EXPECT_NE(c->ConnectionString().find(k.connector.Password()), std::string::npos);
    }
    EXPECT_EQ(e.NativeError() == 2002u || e.NativeError() == 2003u ? 2002u : e.NativeError(),
              k.native);
    const auto open = e.Source().find("CConnection:OpenConn Ln ");
    EXPECT_NE(open, std::string::npos);
    EXPECT_LT(open, e.Source().find("CConnection:Execute Function Ln "));
    EXPECT_FALSE(c->IsOpen());
    EXPECT_EQ(orvtest::Raised([&] { c->StartSession(); }).Number(), kErrConnectFailed);
    EXPECT_EQ(c->SessionDepth(), 0);
  }
}

TEST_F(ConnectionLive, APasswordHoldingSemicolonsConnectsAndStaysInTheConnectionString) {
  const std::string user = "orvtest_semi_" + std::to_string(getpid());
  const std::string password = "a;b=c;PORT=1;";
  Db().Exec("CREATE USER '" + user + "'@'%' IDENTIFIED BY '" + GetQuotedString(password, false) +
            "'");
  Db().Exec("GRANT SELECT ON `" + Db().Name() + "`.* TO '" + user + "'@'%'");
  const auto& server = orvtest::Server();
  auto c = NewConnection(CDPConnector(server.server, Db().Name(), user, password, server.port));
  EXPECT_EQ(c->ExecuteScalar("SELECT COUNT(*) FROM tblProbe", ""), "3");
  EXPECT_NE(c->ConnectionString().find(";PASSWORD=" + password + ";PORT="), std::string::npos);
  Db().Exec("DROP USER '" + user + "'@'%'");
}

TEST_F(ConnectionLive, UnixSocketServer) {
  const auto& server = orvtest::Server();
  if (server.socket.empty()) GTEST_SKIP() << "the external server has no socket path";
  auto c = std::make_shared<CConnection>();
  c->Init(CDPConnector(server.socket, Db().Name(), server.user, server.password, ""));
  EXPECT_EQ(c->ExecuteScalar("SELECT COUNT(*) FROM tblProbe", ""), "3");
}

TEST_F(ConnectionLive, TextsRoundTripThroughTheQuotingRoutine) {
  auto c = Fresh();
  std::string umlauts;
  for (int i = 0; i < 300; ++i) umlauts += "\xC3\xBC";
  // Each text and what the column must hold afterwards: NULs removed, the 255-character
  // cut made on characters without splitting a character or an escape.
  const std::pair<std::string, std::string> cases[] = {
      {std::string("nul\0inside", 10), "nulinside"},
      {"ends with '", "ends with '"},
      {"ends with \\", "ends with \\"},
      {"'", "'"},
      {"\\", "\\"},
      {"emoji \xF0\x9F\x98\x80 and quotes ''", "emoji \xF0\x9F\x98\x80 and quotes ''"},
      {umlauts, umlauts.substr(0, 510)},
      {std::string(254, 'a') + "\\\\\\", std::string(254, 'a')},
  };
  int id = 100;
  for (const auto& [text, expected] : cases) {
    c->ExecuteNonQuery("INSERT INTO tblProbe (ID, Txt) VALUES (" + std::to_string(++id) + ", '" +
                       GetQuotedString(text, true) + "')");
    EXPECT_EQ(c->ExecuteScalar("SELECT Txt FROM tblProbe WHERE ID = " + std::to_string(id), ""),
              expected);
  }
}

}  // namespace
