// Units of work against a recording connection: the brackets around the
// statements, ROLLBACK before the error leaves, the error trail, retries after
// a deadlock, joining an open unit, and the session levels. That the server
// keeps all or nothing is proved by the live tests.

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "access/Atomic.h"
#include "access/ErrorHandling.h"
#include "definitions/CActivitiesDP.h"
#include "definitions/COrvDefinitionsDP.h"
#include "runtime/COrvEngineDP.h"
#include "support/ErrorCapture.h"
#include "support/RecordingConnection.h"

namespace orvmysql {
namespace {

using orvtest::On;
using orvtest::Raised;

// Fails the statements holding deadlock_on with the server's deadlock (1213),
// as often as deadlocks says; notes the session depth at each COMMIT.
class DeadlockingConnection : public orvtest::RecordingConnection {
 public:
  std::string deadlock_on;
  int deadlocks = 0;

  std::vector<int> depth_at_commit;

  int32_t ExecuteNonQuery(const std::string& sql) override {
    if (sql == "COMMIT") depth_at_commit.push_back(depth);
    if (deadlocks > 0 && !deadlock_on.empty() && sql.find(deadlock_on) != std::string::npos) {
      --deadlocks;
      statements.push_back(sql);
      Error deadlock(kErrDatabase, "orvmysql",
                     "Deadlock found when trying to get lock; try restarting transaction");
      deadlock.SetNative(1213, "40001");
      throw deadlock;
    }
    return RecordingConnection::ExecuteNonQuery(sql);
  }

  long Sent(const std::string& sql) const {
    return std::count(statements.begin(), statements.end(), sql);
  }

  // The statements as one letter each: S START TRANSACTION, C COMMIT,
  // R ROLLBACK, . any other.
  std::string Shape() const {
    std::string shape;
    for (const std::string& sql : statements) {
      shape += sql == "START TRANSACTION" ? 'S'
               : sql == "COMMIT"          ? 'C'
               : sql == "ROLLBACK"        ? 'R'
                                          : '.';
    }
    return shape;
  }
};

std::vector<std::string> Cascade(int id) {
  const std::string n = std::to_string(id);
  return {
      "START TRANSACTION",
      "DELETE FROM tblActivityParamBag WHERE FKActivityID IN (SELECT ActivityID FROM "
      "tblActivities WHERE FKProcDefinitionID =" +
          n + ")",
      "DELETE FROM tblActivityPropertyBag WHERE FKActivityID IN (SELECT ActivityID FROM "
      "tblActivities WHERE FKProcDefinitionID =" +
          n + ")",
      "DELETE FROM tblActivities WHERE FKProcDefinitionID =" + n,
      "DELETE FROM tblTransitions WHERE FKProcDefinitionID =" + n,
      "DELETE FROM tblSwitches WHERE FKProcDefinitionID =" + n,
      "DELETE FROM tblProcessParams WHERE FKProcDefID =" + n,
      "DELETE FROM tblProcessDef WHERE ProcessDefID = " + n,
      "COMMIT",
  };
}

TEST(UnitOfWork, CascadesRunBetweenOneStartAndOneCommit) {
  auto connection = std::make_shared<DeadlockingConnection>();
  EXPECT_TRUE(On<COrvDefinitionsDP>(connection)->Delete(12));
  EXPECT_EQ(connection->statements, Cascade(12));

  connection->statements.clear();
  EXPECT_TRUE(On<CActivitiesDP>(connection)->Delete(1, "8"));
  const std::vector<std::string> activity = {
      "START TRANSACTION", "DELETE FROM tblActivityParamBag WHERE FKActivityID = 8",
      "DELETE FROM tblActivityPropertyBag WHERE FKActivityID = 8",
      "DELETE FROM tblActivities WHERE ActivityID = 8", "COMMIT"};
  EXPECT_EQ(connection->statements, activity);
  EXPECT_EQ(connection->starts, 2);
  EXPECT_EQ(connection->depth, 0);
}

TEST(UnitOfWork, FailureRollsBackBeforeTheErrorLeavesAndKeepsTheCallersSession) {
  auto connection = std::make_shared<DeadlockingConnection>();
  connection->fail_on = "tblSwitches";
  connection->StartSession();  // the caller's own session stays open throughout
  const Error e = Raised([&] { On<COrvDefinitionsDP>(connection)->Delete(3); });

  std::vector<std::string> expected = Cascade(3);
  expected.resize(6);  // up to the failing statement
  expected.push_back("ROLLBACK");
  EXPECT_EQ(connection->statements, expected);
  EXPECT_EQ(connection->depth, 1);
  // The error is the statement's, with the operation's location once, as
  // without a unit.
  EXPECT_EQ(e.Number(), kErrDatabase);
  EXPECT_NE(e.Description().find("DELETE FROM tblSwitches"), std::string::npos);
  EXPECT_TRUE(
      e.Source().starts_with("orvmysql => \r\nCOrvDefinitionsDP: "
                             "IOrvDefinitionsDP_Delete Function ("))
      << e.Source();
  EXPECT_EQ(e.Source().find(" => ", e.Source().find(" => ") + 1), std::string::npos) << e.Source();
}

TEST(UnitOfWork, ErrorTrailNamesTheFailingStatementsLineOrTheUnitsForItsBrackets) {
  auto connection = std::make_shared<DeadlockingConnection>();
  int statement_line = 0;
  int unit_line = 0;
  auto run = [&] {
    detail::Guard({"Test: Run Function ("}, [&] {
      unit_line = __LINE__ + 1;
      detail::Atomically(
          *connection,
          [&] {
            detail::MarkLine(statement_line = __LINE__);
            connection->ExecuteNonQuery("UPDATE t SET a = 1");
          },
          unit_line);
    });
  };
  connection->fail_on = "UPDATE t";
  EXPECT_TRUE(Raised(run).Source().ends_with("Test: Run Function (" +
                                             std::to_string(statement_line) + ")"));
  connection->fail_on = "COMMIT";
  EXPECT_TRUE(
      Raised(run).Source().ends_with("Test: Run Function (" + std::to_string(unit_line) + ")"));
  connection->fail_on = "START TRANSACTION";
  connection->statements.clear();
  EXPECT_TRUE(
      Raised(run).Source().ends_with("Test: Run Function (" + std::to_string(unit_line) + ")"));
  // Nothing was opened, so nothing is rolled back, and the level is released.
  EXPECT_EQ(connection->statements, std::vector<std::string>{"START TRANSACTION"});
  EXPECT_EQ(connection->depth, 0);
  EXPECT_EQ(connection->starts, connection->ends);
}

TEST(UnitOfWork, DeadlockRunsTheWholeUnitAgainBoundedAndOtherErrorsDoNot) {
  auto connection = std::make_shared<DeadlockingConnection>();
  connection->deadlock_on = "tblSwitches";
  connection->deadlocks = 2;
  EXPECT_TRUE(On<COrvDefinitionsDP>(connection)->Delete(5));
  // Two lost runs up to the deadlock, each rolled back, then the whole cascade.
  std::vector<std::string> lost = Cascade(5);
  lost.resize(6);
  lost.push_back("ROLLBACK");
  std::vector<std::string> expected = lost;
  expected.insert(expected.end(), lost.begin(), lost.end());
  const auto whole = Cascade(5);
  expected.insert(expected.end(), whole.begin(), whole.end());
  EXPECT_EQ(connection->statements, expected);
  EXPECT_EQ(connection->depth, 0);
  EXPECT_EQ(connection->starts, connection->ends);

  // A deadlock at the commit (a conflicting commit elsewhere in a cluster)
  // also runs the unit again.
  connection->statements.clear();
  connection->deadlock_on = "COMMIT";
  connection->deadlocks = 1;
  EXPECT_TRUE(On<CActivitiesDP>(connection)->Delete(1, "4"));
  EXPECT_EQ(connection->Sent("START TRANSACTION"), 2);
  EXPECT_EQ(connection->Sent("ROLLBACK"), 1);
  EXPECT_EQ(connection->statements.back(), "COMMIT");

  // A unit that keeps losing gives up after the last attempt with the deadlock.
  connection->statements.clear();
  connection->deadlocks = 1000;
  const Error e = Raised([&] { On<CActivitiesDP>(connection)->Delete(1, "4"); });
  EXPECT_EQ(e.NativeError(), 1213u);
  EXPECT_EQ(connection->Sent("START TRANSACTION"), detail::kUnitAttempts);
  EXPECT_EQ(connection->Sent("ROLLBACK"), detail::kUnitAttempts);

  // Any other error leaves after the first run.
  connection->statements.clear();
  connection->deadlocks = 0;
  connection->fail_on = "tblActivityPropertyBag";
  Raised([&] { On<CActivitiesDP>(connection)->Delete(1, "4"); });
  EXPECT_EQ(connection->Sent("START TRANSACTION"), 1);
  EXPECT_EQ(connection->depth, 0);
  EXPECT_EQ(connection->starts, connection->ends);
}

TEST(UnitOfWork, InnerUnitJoinsTheOpenOneAndItsDeadlockRunsTheOuterAgain) {
  auto connection = std::make_shared<DeadlockingConnection>();
  auto definitions = On<COrvDefinitionsDP>(connection);
  auto activities = On<CActivitiesDP>(connection);
  connection->deadlock_on = "tblActivityPropertyBag WHERE FKActivityID = 9";
  connection->deadlocks = 1;
  int runs = 0;
  detail::Atomically(*connection, [&] {
    ++runs;
    connection->ExecuteNonQuery("UPDATE outer_table SET a = 1");
    activities->Delete(1, "9");
    definitions->Delete(2);
  });
  EXPECT_EQ(runs, 2);
  EXPECT_EQ(connection->Sent("START TRANSACTION"), 2);
  EXPECT_EQ(connection->Sent("COMMIT"), 1);
  EXPECT_EQ(connection->Sent("ROLLBACK"), 1);
  EXPECT_EQ(connection->Sent("UPDATE outer_table SET a = 1"), 2);
  EXPECT_EQ(connection->statements.front(), "START TRANSACTION");
  EXPECT_EQ(connection->statements.back(), "COMMIT");
  EXPECT_EQ(connection->depth, 0);
  EXPECT_EQ(connection->starts, connection->ends);

  // After the outer unit ends, a unit opens its own transaction again.
  connection->statements.clear();
  activities->Delete(1, "9");
  EXPECT_EQ(connection->statements.front(), "START TRANSACTION");
}

// Where the engine's units begin and end, on the tree 12, 13, 27 of instance
// 7: around the changes of each tree operation, with ClearLog joining the unit
// of end and terminate and each blank-mode batch a unit of its own; one
// UPDATE alone, and a selection that finds nothing to skip, need none.
TEST(UnitOfWork, EngineOperationsBracketTheirChanges) {
  const std::string log(10, '.');  // the ten deletions of a log
  struct Case {
    std::function<void(COrvEngineDP&)> call;
    std::string shape;
    std::string fail_on{};
  };
  const std::vector<Case> cases = {
      {[](auto& e) { e.PauseProcess(7); }, "S....C"},  // the tree, three tables
      {[](auto& e) { e.ResumeProcess(7); }, "S....C"},
      {[](auto& e) { e.TerminateProcess(7, false); }, ".S...C"},
      {[](auto& e) { e.TerminateProcess(7, true); }, ".S...." + log + "C"},
      {[](auto& e) { e.EndProcess(7, false); }, "."},
      {[](auto& e) { e.EndProcess(7, true); }, "S..." + log + "C"},
      {[](auto& e) { e.SkipActivity("FKProcInstanceID = 12"); }, ".S....C"},
      {[](auto& e) { e.SkipActivity("FKProcInstanceID = 99"); }, "."},
      {[](auto& e) { e.ClearLog("12,13"); }, ".S" + log + "C"},
      {[](auto& e) { e.ClearLog(""); }, ".S" + log + "CS" + log + "C"},  // batches of 2
      {[](auto& e) { e.PauseProcess(7); }, "S....R", "UPDATE tblProcessInstance"},
      {[](auto& e) { e.TerminateProcess(7, true); }, ".S...." + log + "R",
       " DELETE FROM tblProcessInstance"},
  };
  SetClearLogBatchSizeForTesting(2);
  for (std::size_t i = 0; i < cases.size(); ++i) {
    auto connection = std::make_shared<DeadlockingConnection>();
    connection->rows = {{"TreeID IN", {"ProcInstanceID"}, {{12}, {13}, {27}}},
                        {"= 134217728", {"ProcInstanceID"}, {{12}, {13}, {27}}},
                        {"WHERE FKProcInstanceID = 12", {"ActivityInstanceID"}, {{5}, {6}}}};
    connection->fail_on = cases[i].fail_on;
    try {
      cases[i].call(*On<COrvEngineDP>(connection));
      EXPECT_TRUE(cases[i].fail_on.empty()) << "case " << i << " should have failed";
    } catch (const Error&) {
      EXPECT_FALSE(cases[i].fail_on.empty()) << "case " << i;
    }
    EXPECT_EQ(connection->Shape(), cases[i].shape) << "case " << i;
  }
  SetClearLogBatchSizeForTesting(0);

  // A refused ClearLog ends its session twice inside the unit of end; the
  // unit still commits on the connection it began on.
  auto connection = std::make_shared<DeadlockingConnection>();
  connection->rows = {{"TreeID IN", {"ProcInstanceID"}, {{12}, {13}, {27}}}};
  connection->scalars = {{"ProcInstanceID IN (12,13,27)", "13"}};
  EXPECT_TRUE(On<COrvEngineDP>(connection)->EndProcess(7, true));
  EXPECT_EQ(connection->Shape(), "S...C");
  EXPECT_EQ(connection->depth_at_commit, std::vector<int>{1});
}

}  // namespace
}  // namespace orvmysql
