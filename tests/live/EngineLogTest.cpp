// Clearing the log: a tree's rows in all ten tables, refused while one of its
// processes is open, never for a list that is not ids, and in blank mode every
// closed instance of every tree, batch by batch (each blank-mode test has a
// database of its own, since it clears everything closed).

#include <string>
#include <utility>
#include <vector>

#include "live/EngineFixture.h"
#include "runtime/COrvEngineDP.h"

namespace orvtest {
namespace {

class EngineLog : public EngineTest {
 protected:
  void SetUp() override {
    EngineTest::SetUp();
    tree_ = AddTree();
    AddLogData(tree_.root);
    AddLogData(tree_.closed_sub);
  }
  Tree tree_;
};

TEST_F(EngineLog, TreeListDeletesEveryRowOfItsClosedProcesses) {
  const Tree other = AddTree();
  AddLogData(other.root);
  const long long other_rows = LogRows(other.ids);
  Db().Exec("INSERT INTO tblMessages (MessageID, Subject) VALUES (77, 'kept')");
  const long long rows = LogRows(tree_.ids);
  EXPECT_EQ(rows, 3 + 9 + 12 + 2 * (3 + 3 + 5));

  // Refused while the root is open: nothing goes.
  EXPECT_FALSE(engine_->ClearLog(tree_.ids));
  EXPECT_EQ(LogRows(tree_.ids), rows);
  // Caller text that is not a list of ids never reaches the statements.
  EXPECT_EQ(ErrorOf([&] { engine_->ClearLog("0) OR (1=1"); }), orvmysql::kErrTypeMismatch);
  EXPECT_EQ(LogRows(tree_.ids), rows);

  EXPECT_TRUE(engine_->TerminateProcess(tree_.root, true));
  EXPECT_EQ(LogRows(tree_.ids), 0);
  EXPECT_EQ(LogRows(other.ids), other_rows);
  EXPECT_EQ(Db().Count("tblMessages", "MessageID = 77"), 1);
  // Ids that name nothing are not an error.
  EXPECT_TRUE(engine_->ClearLog(tree_.ids + ", 999999"));
}

TEST_F(EngineLog, EndWithClearLogDeletesTheTreeOnceAllOfItIsClosed) {
  engine_->TerminateProcess(tree_.open_sub, false);
  Db().Exec("UPDATE tblProcessInstance SET State = 67108864 WHERE ProcInstanceID = " +
            std::to_string(tree_.root));
  EXPECT_TRUE(engine_->EndProcess(tree_.root, true));
  EXPECT_EQ(LogRows(tree_.ids), 0);
}

class EngineLogBlank : public EngineTest {};

TEST_F(EngineLogBlank, DeletesEveryClosedInstanceOfEveryTreeInBatches) {
  EXPECT_TRUE(engine_->ClearLog("  "));  // nothing closed yet: nothing to do
  std::vector<Tree> trees;
  for (int i = 0; i < 3; ++i) {
    trees.push_back(AddTree());
    AddLogData(trees.back().root);
  }
  engine_->TerminateProcess(trees[0].root, false);
  engine_->TerminateProcess(trees[2].root, false);
  const long long open_rows = LogRows(trees[1].ids);

  // Seven closed instances: the closed sub-process of each tree and the
  // whole of two trees, three batches of at most three ids.
  orvmysql::SetClearLogBatchSizeForTesting(3);
  auto progress_of = std::dynamic_pointer_cast<orvmysql::IClearLogProgress>(engine_);
  ASSERT_NE(progress_of, nullptr);
  std::vector<std::pair<int64_t, int64_t>> progress;
  progress_of->SetClearLogProgress(
      [&](int64_t done, int64_t total) { progress.emplace_back(done, total); });
  const bool cleared = engine_->ClearLog("");
  orvmysql::SetClearLogBatchSizeForTesting(0);
  EXPECT_TRUE(cleared);
  EXPECT_EQ(progress, (std::vector<std::pair<int64_t, int64_t>>{{3, 7}, {6, 7}, {7, 7}}));
  EXPECT_EQ(LogRows(trees[0].ids), 0);
  EXPECT_EQ(LogRows(trees[2].ids), 0);
  EXPECT_EQ(LogRows(std::to_string(trees[1].closed_sub)), 0);
  EXPECT_EQ(LogRows(trees[1].ids), open_rows - 1 - 3 - 4);
  EXPECT_EQ(Db().Count("tblProcessInstance", "State & 134217728 = 134217728"), 0);
}

}  // namespace
}  // namespace orvtest
