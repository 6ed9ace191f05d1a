// Pause, resume, terminate, end and skip on a process tree in mixed states,
// judged by the State words and dates the database holds afterwards, beside
// another tree that must stay as it was.

#include <algorithm>
#include <map>
#include <string>

#include "live/EngineFixture.h"
#include "unit/QueryTestSupport.h"

namespace orvtest {
namespace {

using orvmysql::Date;

constexpr int32_t kOpen = 0x4000000;
constexpr int32_t kClosed = 0x8000000;
constexpr int32_t kPaused = 0x20000000;
constexpr int32_t kPausedToo = 0x40000000;
constexpr int32_t kTerminated = 0x8000002;
constexpr int32_t kSkipped = 0x8000004;

using StateMap = std::map<std::string, int32_t>;

// The states with f applied to every word for which it returns a value.
template <class F>
StateMap Mapped(StateMap states, F f) {
  for (auto& [key, state] : states) state = f(state);
  return states;
}

class EngineTree : public EngineTest {
 protected:
  void SetUp() override {
    EngineTest::SetUp();
    tree_ = AddTree();
    other_ = AddTree();
    before_ = States(tree_.ids);
    other_before_ = States(other_.ids);
  }
  void TearDown() override { EXPECT_EQ(States(other_.ids), other_before_) << "the other tree"; }

  void SetState(const std::string& table, const std::string& key, int32_t id, int32_t state) {
    Db().Exec("UPDATE " + table + " SET State = " + std::to_string(state) + " WHERE " + key +
              " = " + std::to_string(id));
  }

  FixedClock clock_{Date::FromParts(2024, 5, 17, 10, 15, 30)};
  Tree tree_, other_;
  StateMap before_, other_before_;
};

TEST_F(EngineTree, PauseMarksOpenRowsOnlyAndResumeRestoresThem) {
  const StateMap paused =
      Mapped(before_, [](int32_t s) { return (s & kOpen) && !(s & kPaused) ? s | kPaused : s; });
  ASSERT_NE(paused, before_);
  EXPECT_TRUE(engine_->PauseProcess(tree_.open_sub));  // any member names the tree
  EXPECT_EQ(States(tree_.ids), paused);
  EXPECT_FALSE(engine_->PauseProcess(tree_.root));
  EXPECT_EQ(States(tree_.ids), paused);

  EXPECT_TRUE(engine_->ResumeProcess(tree_.closed_sub));
  EXPECT_EQ(States(tree_.ids), before_);
  EXPECT_FALSE(engine_->ResumeProcess(tree_.root));
}

TEST_F(EngineTree, ResumeClearsBothPauseFlagsOnlyWhereNoRowHasTheFirstAlone) {
  // The second pause flag is the engine's; set it directly.
  for (const auto& [key, state] : before_) {
    if (!(state & kOpen)) continue;
    const int32_t id = std::stoi(key.substr(1));
    const int32_t both = state | kPaused | kPausedToo;
    if (key[0] == 'p') SetState("tblProcessInstance", "ProcInstanceID", id, both);
    if (key[0] == 'a') SetState("tblActivityInstance", "ActivityInstanceID", id, both);
    if (key[0] == 'w') SetState("tblWorkitems", "WorkitemID", id, both);
  }
  Db().Exec("UPDATE tblActivityInstance SET ActivityNote = 'on hold' WHERE FKProcInstanceID IN (" +
            tree_.ids + ")");
  EXPECT_TRUE(engine_->ResumeProcess(tree_.root));
  EXPECT_EQ(States(tree_.ids), before_);
  // Only the resumed activity instances lose their note.
  EXPECT_EQ(Db().Count("tblActivityInstance",
                       "ActivityNote IS NULL AND FKProcInstanceID IN (" + tree_.ids + ")"),
            6);

  // Mixed: one work item paused alone, another with both flags. One call
  // resumes the first group; the next call the second.
  const auto items = Db().NewConnection()->Execute(
      "SELECT WorkitemID FROM tblWorkitems WHERE State = 67108864 AND FKProcInstanceID IN (" +
      tree_.ids + ") ORDER BY WorkitemID");
  ASSERT_TRUE(items->GetNext());
  const int32_t alone = items->CurrentItem()->GetValue("WorkitemID").ToLong();
  ASSERT_TRUE(items->GetNext());
  const int32_t both = items->CurrentItem()->GetValue("WorkitemID").ToLong();
  SetState("tblWorkitems", "WorkitemID", alone, kOpen | kPaused);
  SetState("tblWorkitems", "WorkitemID", both, kOpen | kPaused | kPausedToo);
  EXPECT_FALSE(engine_->ResumeProcess(tree_.root));  // no process row was paused
  EXPECT_EQ(workitems_->GetCurrentState(alone), kOpen);
  EXPECT_EQ(workitems_->GetCurrentState(both), kOpen | kPaused | kPausedToo);
  engine_->ResumeProcess(tree_.root);
  EXPECT_EQ(workitems_->GetCurrentState(both), kOpen);
}

TEST_F(EngineTree, TerminateClosesOpenAndPausedRowsAndKeepsClosedOnes) {
  engine_->PauseProcess(tree_.root);
  EXPECT_TRUE(engine_->TerminateProcess(tree_.open_sub, false));
  EXPECT_EQ(States(tree_.ids),
            Mapped(before_, [](int32_t s) { return s & kOpen ? kTerminated : s; }));
  const auto finished = [&](const std::string& table, const std::string& when) {
    return Db().Count(table, "FKProcInstanceID IN (" + tree_.ids + ") AND " + when);
  };
  EXPECT_EQ(finished("tblWorkitems", "FinishedOn = '2024-05-17 10:15:30'"), 6);
  EXPECT_EQ(finished("tblWorkitems", "FinishedOn = '2024-05-01 08:00:00'"), 6);
  EXPECT_EQ(finished("tblActivityInstance", "FinishedOn = '2024-05-17 10:15:30'"), 6);
  EXPECT_EQ(
      Db().Count("tblProcessInstance", "FinishedOn = '2024-05-01 08:00:00' AND ProcInstanceID = " +
                                           std::to_string(tree_.closed_sub)),
      1);
  EXPECT_FALSE(engine_->TerminateProcess(tree_.root, false));
}

TEST_F(EngineTree, EndCompletesTheOneProcessOnceNoActivityIsOpen) {
  EXPECT_FALSE(engine_->EndProcess(tree_.open_sub, true));
  EXPECT_EQ(States(tree_.ids), before_);
  EXPECT_EQ(LogRows(tree_.ids), 3 + 9 + 12);

  // Its open activity instances closed, the sub-process ends alone; its
  // clear-log request is refused because the root is still open.
  for (int32_t task : {tree_.tasks[3], tree_.tasks[4]}) {
    SetState("tblActivityInstance", "ActivityInstanceID", task, kClosed + 1);
  }
  const StateMap ended_before = States(tree_.ids);
  EXPECT_TRUE(engine_->EndProcess(tree_.open_sub, true));
  StateMap expected = ended_before;
  expected["p" + std::to_string(tree_.open_sub)] = kClosed + 1;
  EXPECT_EQ(States(tree_.ids), expected);
  EXPECT_EQ(Column("tblProcessInstance", "FinishedOn", "ProcInstanceID", tree_.open_sub),
            "2024-05-17 10:15:30");
  EXPECT_EQ(LogRows(tree_.ids), 3 + 9 + 12);
}

TEST_F(EngineTree, SkipSetsEverySelectedTaskAndItsItemsWhateverTheirState) {
  // The completed task of the root and the open one of the open sub-process.
  const std::string condition = "ActivityInstanceID IN (" + std::to_string(tree_.tasks[2]) + ", " +
                                std::to_string(tree_.tasks[3]) + ")";
  EXPECT_TRUE(engine_->SkipActivity(condition));
  EXPECT_EQ(Db().Count("tblActivityInstance", condition + " AND State = 134217732"), 2);
  const std::string items = "FKActivityInstanceID IN (" + std::to_string(tree_.tasks[2]) + ", " +
                            std::to_string(tree_.tasks[3]) + ")";
  EXPECT_EQ(Db().Count("tblWorkitems",
                       items + " AND State = 134217732 AND FinishedOn = '2024-05-17 00:00:00'"),
            3);
  EXPECT_EQ(Column("tblActivityInstance", "FinishedOn", "ActivityInstanceID", tree_.tasks[3]),
            "NULL");
  const StateMap after = States(tree_.ids);
  EXPECT_EQ(std::count_if(after.begin(), after.end(),
                          [&](const auto& row) { return row.second != before_.at(row.first); }),
            5);

  EXPECT_TRUE(engine_->SkipActivity("ActivityInstanceID = -1"));
  handler_->EndSession();  // the session the empty skip left open
  EXPECT_FALSE(engine_->SkipActivity("   "));
}

TEST_F(EngineTree, SkipPendingTasksOfTheSplitOfAPath) {
  Db().Exec(
      "INSERT INTO tblProcSplitInstance (SplitInstanceID, FKProcInstanceID, State) VALUES "
      "(7001, " +
      std::to_string(tree_.root) + ", 67108864), (7002, " + std::to_string(tree_.root) +
      ", 67108864)");
  Db().Exec(
      "INSERT INTO tblProcPathInstance (PathID, FKSplitInstanceID, FKProcInstanceID, State) "
      "VALUES (7101, 7001, " +
      std::to_string(tree_.root) + ", 67108864), (7102, 7001, " + std::to_string(tree_.root) +
      ", 67108864)");
  Db().Exec(
      "UPDATE tblActivityInstance SET FKSplitInstanceID = 7001 WHERE ActivityInstanceID IN (" +
      std::to_string(tree_.tasks[0]) + ", " + std::to_string(tree_.tasks[1]) + ")");
  Db().Exec("UPDATE tblActivityInstance SET FKSplitInstanceID = 7002 WHERE ActivityInstanceID = " +
            std::to_string(tree_.tasks[2]));
  EXPECT_TRUE(engine_->SkipPendingTaskOnSplit(7102));
  EXPECT_EQ(Db().Count("tblActivityInstance", "FKSplitInstanceID = 7001 AND State = 134217732"), 2);
  EXPECT_EQ(Db().Count("tblActivityInstance", "FKSplitInstanceID = 7002 AND State = 134217732"), 0);
  EXPECT_EQ(Db().Count("tblWorkitems",
                       "State = 134217732 AND FKProcInstanceID = " + std::to_string(tree_.root)),
            3);
}

TEST_F(EngineTree, AnEmptyTreeFailsWithTheDatabasesError) {
  Db().Exec("UPDATE tblProcessInstance SET TreeID = NULL WHERE ProcInstanceID = " +
            std::to_string(tree_.root));
  for (int32_t id : {tree_.root, -5}) {
    const orvmysql::Error e = Raised([&] { engine_->PauseProcess(id); });
    EXPECT_EQ(e.Number(), orvmysql::kErrDatabase);
    EXPECT_EQ(e.NativeError(), 1064u) << e.Description();
    EXPECT_NE(e.Source().find("COrvEngineDP: IOrvEngineDP_PauseProcess Function ("),
              std::string::npos);
    handler_->EndSession();  // the failed operation's session
  }
  EXPECT_EQ(States(tree_.ids), before_);
}

}  // namespace
}  // namespace orvtest
