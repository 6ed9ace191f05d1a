// Splits, paths and threads of parallel routing, written through their
// providers and read back; the open-path count the engine asks when it joins;
// results on missing keys; bad arrays that must write nothing; trusted Load
// tails; and the plans of every keyed statement on tables of 100k rows.

#include <functional>
#include <string>
#include <vector>

#include "live/DefinitionsFixture.h"
#include "orvmysql/Routing.h"
#include "runtime/CPathInstanceDP.h"
#include "runtime/CSplitInstanceDP.h"
#include "runtime/CThreadInstanceDP.h"
#include "support/RecordingConnection.h"

namespace orvtest {
namespace {

using orvmysql::FieldArray;

constexpr int32_t kOpen = 67108864;
constexpr int32_t kPaused = 536870912;
constexpr int32_t kCompleted = 134217729;

class Routing : public DefinitionsTest {
 protected:
  void SetUp() override {
    DefinitionsTest::SetUp();
    splits_ = Provider<orvmysql::ISplitInstanceDP>(handler_, 15);
    paths_ = Provider<orvmysql::IPathInstanceDP>(handler_, 16);
    threads_ = Provider<orvmysql::IThreadInstanceDP>(handler_, 17);
  }

  // A process instance number no other test of the suite uses.
  static int32_t NewProcess() {
    static int32_t next = 500;
    return ++next;
  }

  static std::string Column(const std::shared_ptr<orvmysql::IListIterator>& rows,
                            const std::string& column) {
    const auto found = Read(rows, {column});
    return found.size() == 1 ? found[0].at(column) : "rows: " + std::to_string(found.size());
  }

  std::shared_ptr<orvmysql::ISplitInstanceDP> splits_;
  std::shared_ptr<orvmysql::IPathInstanceDP> paths_;
  std::shared_ptr<orvmysql::IThreadInstanceDP> threads_;
};

TEST_F(Routing, SplitRoundTripWithStateChanges) {
  const int32_t process = NewProcess();
  const int32_t split = splits_->Add({0, "T-main", 0, process, kOpen, 1});
  ASSERT_GT(split, 0);
  const int32_t nested = splits_->Add({split, "T-2", 77, process, kOpen, 2});
  EXPECT_EQ(nested, split + 1);
  ExpectOneRow(splits_->GetByID(nested), {{"SplitInstanceID", std::to_string(nested)},
                                          {"ParentID", std::to_string(split)},
                                          {"FKThreadInstanceID", "T-2"},
                                          {"FKPathInstanceID", "77"},
                                          {"FKProcInstanceID", std::to_string(process)},
                                          {"State", std::to_string(kOpen)},
                                          {"SplitType", "2"}});

  EXPECT_TRUE(splits_->Update(split, {0, "T-main", 0, process, kOpen, 3}));
  EXPECT_EQ(Column(splits_->GetByID(split), "SplitType"), "3");
  // Pausing adds a flag on top of the open word and resuming takes it off again.
  EXPECT_TRUE(splits_->ChangeState(split, kPaused, true));
  EXPECT_EQ(splits_->GetCurrentState(split), kOpen + kPaused);
  EXPECT_TRUE(splits_->ChangeState(split, -kPaused, true));
  EXPECT_EQ(splits_->GetCurrentState(split), kOpen);
  EXPECT_TRUE(splits_->ChangeState(split, kCompleted, false));
  EXPECT_EQ(splits_->GetCurrentState(split), kCompleted);

  EXPECT_EQ(Read(splits_->GetForProcess(process), {"SplitInstanceID"}).size(), 2u);
  EXPECT_TRUE(splits_->Delete(nested));
  EXPECT_EQ(Column(splits_->GetForProcess(process), "SplitInstanceID"), std::to_string(split));
}

TEST_F(Routing, MissingKeysGiveFalseTrueZeroAndNoRows) {
  const int32_t missing = 999999;
  EXPECT_FALSE(paths_->Update(missing, {1, 1, kOpen}));
  EXPECT_FALSE(paths_->ChangeState(missing, kPaused, true));
  EXPECT_TRUE(paths_->Delete(missing));
  EXPECT_EQ(paths_->GetCurrentState(missing), 0);
  EXPECT_EQ(paths_->GetOpenPathCount(missing), 0);
  EXPECT_TRUE(Read(paths_->GetPathsForSplit(missing), {"PathID"}).empty());
  EXPECT_FALSE(threads_->Update("no such thread", {1, kOpen}));
  EXPECT_FALSE(threads_->ChangeState("no such thread", kOpen, false));
  EXPECT_TRUE(threads_->Delete("no such thread"));
  EXPECT_EQ(threads_->GetCurrentState("no such thread"), 0);
  EXPECT_TRUE(Read(threads_->GetByID("no such thread"), {"State"}).empty());
}

TEST_F(Routing, OpenPathsAreThoseWithTheOpenFlagPausedOnesIncluded) {
  const int32_t process = NewProcess();
  const int32_t split = splits_->Add({0, "T-main", 0, process, kOpen, 1});
  const int32_t other = splits_->Add({0, "T-main", 0, process, kOpen, 1});
  const int32_t first = paths_->Add({split, process, kOpen});
  paths_->Add({split, process, kOpen + kPaused});
  paths_->Add({split, process, kOpen + 4});  // an open sub-state
  paths_->Add({split, process, kCompleted});
  paths_->Add({other, process, kOpen});
  EXPECT_EQ(Read(paths_->GetPathsForSplit(split), {"PathID"}).size(), 4u);
  EXPECT_EQ(paths_->GetOpenPathCount(split), 3);

  EXPECT_TRUE(paths_->ChangeState(first, kCompleted, false));
  EXPECT_EQ(paths_->GetOpenPathCount(split), 2);
  EXPECT_EQ(paths_->GetOpenPathCount(other), 1);
  EXPECT_TRUE(paths_->Update(first, {other, process, kOpen}));
  EXPECT_EQ(paths_->GetOpenPathCount(other), 2);
  EXPECT_EQ(Read(paths_->GetForProcess(process), {"PathID"}).size(), 5u);
}

TEST_F(Routing, ThreadIsKeyedByTheCallersTextWhichMustBeUnique) {
  const int32_t process = NewProcess();
  const std::string id = Unique("thread 'one' \\ \xC3\xBC");
  EXPECT_TRUE(threads_->Add(id, {process, kOpen}));
  const orvmysql::Error duplicate = Raised([&] { threads_->Add(id, {process + 1, 0}); });
  EXPECT_EQ(duplicate.Number(), orvmysql::kErrDatabase);
  EXPECT_NE(duplicate.Source().find("CThreadInstanceDP: IThreadInstanceDP_Add Function ("),
            std::string::npos);
  ExpectOneRow(threads_->GetByID(id), {{"ThreadID", id},
                                       {"FKProcInstanceID", std::to_string(process)},
                                       {"State", std::to_string(kOpen)}});

  EXPECT_TRUE(threads_->Update(id, {process, kOpen + 4}));
  EXPECT_TRUE(threads_->ChangeState(id, kPaused, true));
  EXPECT_EQ(threads_->GetCurrentState(id), kOpen + 4 + kPaused);
  threads_->Add(Unique("second thread"), {process, kOpen});
  EXPECT_EQ(Read(threads_->GetForProcess(process), {"ThreadID"}).size(), 2u);
  EXPECT_TRUE(threads_->Delete(id));
  EXPECT_TRUE(Read(threads_->GetByID(id), {"ThreadID"}).empty());
  EXPECT_EQ(Read(threads_->GetForProcess(process), {"ThreadID"}).size(), 1u);
}

TEST_F(Routing, BadArraysWriteNothingAndUseUpNoKey) {
  const int32_t process = NewProcess();
  const int32_t split = splits_->Add({0, "T-main", 0, process, kOpen, 1});
  const int32_t path = paths_->Add({split, process, kOpen});
  threads_->Add(Unique("bad input"), {process, kOpen});
  const auto snapshot = [&] {
    return std::to_string(Db().Count("tblProcSplitInstance")) + " " +
           std::to_string(Db().Count("tblProcPathInstance")) + " " +
           std::to_string(Db().Count("tblProcThreadInstance")) + " " +
           Db().Scalar(
               "SELECT GROUP_CONCAT(LastAllocatedKey ORDER BY EntityTypeCode) FROM "
               "tblKeyGen") +
           " " + Read(paths_->GetByID(path), {"FKSplitInstanceID", "State"}).at(0).at("State");
  };
  const std::string injected = "1); DELETE FROM tblProcPathInstance; --";
  const std::vector<std::pair<std::function<void()>, int32_t>> cases = {
      {[&] {
         splits_->Add({0, "T", 0, process, kOpen});
       },
       orvmysql::kErrSubscript},
      {[&] {
         splits_->Add({0, "T", 0, injected, kOpen, 1});
       },
       orvmysql::kErrTypeMismatch},
      {[&] {
         paths_->Update(path, {injected, process, 0});
       },
       orvmysql::kErrTypeMismatch},
      {[&] { threads_->Add(Unique("never"), {process}); }, orvmysql::kErrSubscript},
  };
  for (const auto& [call, error] : cases) {
    const std::string before = snapshot();
    EXPECT_EQ(ErrorOf(call), error);
    EXPECT_EQ(snapshot(), before);
  }
}

TEST_F(Routing, LoadAppendsTheTrustedTail) {
  const int32_t process = NewProcess();
  const int32_t split = splits_->Add({0, "T-main", 0, process, kOpen, 1});
  const int32_t later = splits_->Add({0, "T-main", 0, process, kCompleted, 1});
  const auto rows = Read(splits_->Load("WHERE FKProcInstanceID = " + std::to_string(process) +
                                       " ORDER BY SplitInstanceID DESC"),
                         {"SplitInstanceID"});
  EXPECT_EQ(rows, (std::vector<Expected>{{{"SplitInstanceID", std::to_string(later)}},
                                         {{"SplitInstanceID", std::to_string(split)}}}));
  const orvmysql::Error e = Raised([&] { threads_->Load("WHERE no_such_column = 1"); });
  EXPECT_EQ(e.Number(), orvmysql::kErrDatabase);
  EXPECT_NE(e.Source().find(" => \r\nCThreadInstanceDP:IThreadInstanceDP_Load Function ("),
            std::string::npos)
      << e.Source();
}

// Fills the three tables with 100k rows each (4 paths per split, half of them
// open), then runs every keyed statement of the providers, as they write it,
// through EXPLAIN: none may read a whole table or a whole index.
TEST_F(Routing, KeyedStatementsUseIndexesOnLargeTables) {
  Db().Exec(
      "INSERT INTO tblProcSplitInstance (SplitInstanceID,ParentID,FKThreadInstanceID,"
      "FKPathInstanceID,FKProcInstanceID,State,SplitType) SELECT 1000000 + seq, 0, "
      "CONCAT('fill-', seq), 0, 1000000 + seq DIV 4, 67108864, 1 FROM seq_1_to_100000");
  Db().Exec(
      "INSERT INTO tblProcPathInstance (PathID,FKSplitInstanceID,FKProcInstanceID,State) "
      "SELECT 1000000 + seq, 1000000 + seq DIV 4, 1000000 + seq DIV 16, "
      "IF(seq % 2 = 0, 67108864, 134217729) FROM seq_1_to_100000");
  Db().Exec(
      "INSERT INTO tblProcThreadInstance (ThreadID,FKProcInstanceID,State) "
      "SELECT CONCAT('fill-', seq), 1000000 + seq DIV 4, 67108864 FROM seq_1_to_100000");
  Db().Exec("ANALYZE TABLE tblProcSplitInstance, tblProcPathInstance, tblProcThreadInstance");
  ASSERT_GE(Db().Count("tblProcPathInstance"), 100000);

  auto recorder = std::make_shared<RecordingConnection>();
  auto splits = On<orvmysql::CSplitInstanceDP>(recorder);
  auto paths = On<orvmysql::CPathInstanceDP>(recorder);
  auto threads = On<orvmysql::CThreadInstanceDP>(recorder);
  const int32_t key = 1050000, process = 1012500;
  splits->Update(key, {0, "T", 0, process, kOpen, 1});
  splits->Delete(key);
  splits->GetByID(key);
  splits->GetForProcess(process);
  splits->GetCurrentState(key);
  splits->ChangeState(key, kPaused, true);
  paths->Update(key, {1025000, process, kOpen});
  paths->Delete(key);
  paths->GetByID(key);
  paths->GetForProcess(process);
  paths->GetPathsForSplit(1025000);
  paths->GetOpenPathCount(1025000);
  paths->GetCurrentState(key);
  paths->ChangeState(key, kCompleted, false);
  threads->Update("fill-5000", {process, kOpen});
  threads->Delete("fill-5000");
  threads->GetByID("fill-5000");
  threads->GetForProcess(process);
  threads->GetCurrentState("fill-5000");
  threads->ChangeState("fill-5000", kPaused, true);
  ASSERT_EQ(recorder->statements.size(), 20u);

  auto explain = Db().NewConnection();
  for (const std::string& statement : recorder->statements) {
    auto plan = explain->Execute("EXPLAIN " + statement);
    int steps = 0;
    while (plan->GetNext()) {
      ++steps;
      auto step = plan->CurrentItem();
      const std::string type = Show(step->GetValue("type"));
      EXPECT_NE(type, "ALL") << statement;
      EXPECT_NE(type, "index") << statement;
      EXPECT_LT(step->GetValue("rows").ToLong(), 100) << statement;
      if (statement.find("COUNT(*)") != std::string::npos) {
        // The open paths are counted from the index alone.
        EXPECT_EQ(Show(step->GetValue("key")), "ixProcPathInstanceSplitState");
        EXPECT_NE(Show(step->GetValue("Extra")).find("Using index"), std::string::npos);
      }
    }
    EXPECT_EQ(steps, 1) << statement;
  }
}

}  // namespace
}  // namespace orvtest
