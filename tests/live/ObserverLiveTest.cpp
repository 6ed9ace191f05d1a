// Statement observers, per handler and for the process, against a real server.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "orvmysql/orvmysql.h"
#include "support/ErrorCapture.h"
#include "support/LiveDb.h"

using namespace orvmysql;

namespace {

struct Seen {
  std::string sql;
  int64_t rows;
  int32_t error;  // 0 for none
  unsigned native;
  std::chrono::nanoseconds duration;
};

StatementObserver Recorder(std::vector<Seen>& seen) {
  return [&seen](const StatementEvent& e) {
    seen.push_back({std::string(e.sql), e.rows, e.error != nullptr ? e.error->Number() : 0,
                    e.error != nullptr ? e.error->NativeError() : 0u, e.duration});
  };
}

// Removes the process's observer however the test ends.
struct ProcessObserver {
  explicit ProcessObserver(StatementObserver observer) {
    SetProcessStatementObserver(std::move(observer));
  }
  ~ProcessObserver() { SetProcessStatementObserver({}); }
};

class ObserverLive : public orvtest::LiveTest {};

TEST_F(ObserverLive, AHandlersObserverSeesEachStatementWithRowsDurationAndError) {
  auto handler = Handler();
  std::vector<Seen> seen;
  handler->SetStatementObserver(Recorder(seen));
  auto connection = handler->Connection();

  connection->ExecuteNonQuery(
      "UPDATE tblKeyGen SET Seed = Seed WHERE EntityTypeCode IN (-10, -11)");
  connection->Execute(
      "SELECT EntityTypeCode FROM tblKeyGen WHERE EntityTypeCode IN (-10, -11, -14)");
  connection->ExecuteScalar("SELECT COUNT(*) FROM tblKeyGen", "");
  const Error missing = orvtest::Raised([&] { connection->Execute("SELECT * FROM tblMissing"); });
  ASSERT_EQ(seen.size(), 4u);
  EXPECT_EQ(seen[0].sql, "UPDATE tblKeyGen SET Seed = Seed WHERE EntityTypeCode IN (-10, -11)");
  EXPECT_EQ(seen[0].rows, 2);
  EXPECT_EQ(seen[1].rows, 3);
  EXPECT_EQ(seen[2].rows, 1);
  EXPECT_EQ(seen[3].rows, -1);
  EXPECT_EQ(seen[3].error, kErrDatabase);
  EXPECT_EQ(seen[3].native, 1146u);
  for (const Seen& s : seen) EXPECT_GT(s.duration.count(), 0) << s.sql;

  // The providers' statements go through the same connection; the observer
  // stays across Init, and an empty one removes it.
  auto definitions = Provider<IOrvDefinitionsDP>(handler, kDsDefinitions);
  definitions->Load("");
  EXPECT_EQ(seen.back().sql.rfind("SELECT", 0), 0u) << seen.back().sql;
  handler->Init(Db().Connector());
  handler->Connection()->ExecuteScalar("SELECT 1", "");
  EXPECT_EQ(seen.back().sql, "SELECT 1");
  const std::size_t count = seen.size();
  handler->SetStatementObserver({});
  handler->Connection()->ExecuteScalar("SELECT 2", "");
  Handler()->Connection()->ExecuteScalar("SELECT 3", "");
  EXPECT_EQ(seen.size(), count);
}

TEST_F(ObserverLive, TheProcessObserverSeesEveryHandlerButNeverThePassword) {
  std::vector<Seen> process_seen;
  std::vector<std::string> failures;
  ProcessObserver installed([&](const StatementEvent& e) {
    process_seen.push_back({std::string(e.sql), e.rows, 0, 0, e.duration});
    if (e.error != nullptr) failures.push_back(e.error->Description() + e.error->what());
  });
  auto observed = Handler();
  std::vector<Seen> handler_seen;
  observed->SetStatementObserver(Recorder(handler_seen));
  observed->Connection()->ExecuteScalar("SELECT 'a'", "");
  Handler()->Connection()->ExecuteScalar("SELECT 'b'", "");
  ASSERT_EQ(process_seen.size(), 2u);
  EXPECT_EQ(process_seen[1].sql, "SELECT 'b'");
  ASSERT_EQ(handler_seen.size(), 1u);

  const auto& server = orvtest::Server();
  auto refused =
      NewConnection(CDPConnector(server.server, "", server.user, "s3cret;pw", server.port));
  EXPECT_EQ(orvtest::ErrorOf([&] { refused->ExecuteScalar("SELECT 'c'", ""); }), kErrConnectFailed);
  ASSERT_EQ(failures.size(), 1u);
  EXPECT_EQ(failures[0].find("s3cret"), std::string::npos) << failures[0];
  EXPECT_NE(failures[0].find("PASSWORD=********;"), std::string::npos) << failures[0];

  // An observer that throws changes nothing for the statement.
  observed->SetStatementObserver(
      [](const StatementEvent&) { throw std::runtime_error("log full"); });
  EXPECT_EQ(observed->Connection()->ExecuteScalar("SELECT 'd'", ""), "d");
  EXPECT_EQ(process_seen.back().sql, "SELECT 'd'");
}

}  // namespace
