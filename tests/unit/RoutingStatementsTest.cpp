// The split, path and thread providers against a recording connection: the
// exact statement of every operation, the session bracket of Add, and bad
// input stopped before anything runs. What the database stores is proved by
// the live tests.

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "runtime/CPathInstanceDP.h"
#include "runtime/CSplitInstanceDP.h"
#include "runtime/CThreadInstanceDP.h"
#include "support/ErrorCapture.h"
#include "support/RecordingConnection.h"

namespace orvmysql {
namespace {

using orvtest::ErrorOf;
using orvtest::On;
using orvtest::RecordingConnection;

struct Providers {
  std::shared_ptr<RecordingConnection> connection = std::make_shared<RecordingConnection>();
  std::shared_ptr<CSplitInstanceDP> splits = On<CSplitInstanceDP>(connection);
  std::shared_ptr<CPathInstanceDP> paths = On<CPathInstanceDP>(connection);
  std::shared_ptr<CThreadInstanceDP> threads = On<CThreadInstanceDP>(connection);
};

const FieldArray kSplit = {3, "T-1", 7, 12, 67108864, 1};
const FieldArray kPath = {5, 12, 67108864};
const FieldArray kThread = {12, 67108864};

const std::string kSplitSelect =
    "SELECT SplitInstanceID,ParentID,FKThreadInstanceID,FKPathInstanceID,FKProcInstanceID,State,"
    "SplitType FROM tblProcSplitInstance ";
const std::string kPathSelect =
    "SELECT PathID,FKSplitInstanceID,FKProcInstanceID,State FROM tblProcPathInstance ";
const std::string kThreadSelect =
    "SELECT ThreadID,FKProcInstanceID,State FROM tblProcThreadInstance ";

TEST(RoutingStatements, EachOperationRunsExactlyThisStatement) {
  struct Case {
    std::function<void(Providers&)> call;
    std::string statement;
  };
  const std::vector<Case> cases = {
      {[](Providers& p) { p.splits->Add(kSplit); },
       "INSERT INTO tblProcSplitInstance (SplitInstanceID,ParentID,FKThreadInstanceID,"
       "FKPathInstanceID,FKProcInstanceID,`State`,SplitType) VALUES (42,3,'T-1',7,12,67108864,1)"},
      {[](Providers& p) { p.splits->Update(5, kSplit); },
       "UPDATE tblProcSplitInstance SET ParentID = 3 ,FKThreadInstanceID = 'T-1' ,FKPathInstanceID "
       "= 7 ,FKProcInstanceID = 12 ,`State` = 67108864 ,SplitType = 1 WHERE SplitInstanceID = 5"},
      {[](Providers& p) { p.splits->Delete(5); },
       "DELETE FROM tblProcSplitInstance WHERE SplitInstanceID = 5"},
      {[](Providers& p) { p.splits->GetByID(5); }, kSplitSelect + " WHERE SplitInstanceID = 5"},
      {[](Providers& p) { p.splits->GetForProcess(12); },
       kSplitSelect + " WHERE FKProcInstanceID = 12"},
      {[](Providers& p) { p.splits->GetCurrentState(5); },
       "SELECT State FROM tblProcSplitInstance WHERE SplitInstanceID = 5"},
      {[](Providers& p) { p.splits->ChangeState(5, 134217729, false); },
       "UPDATE tblProcSplitInstance SET `State` = 134217729 WHERE SplitInstanceID = 5"},
      {[](Providers& p) { p.splits->ChangeState(5, -536870912, true); },
       "UPDATE tblProcSplitInstance SET `State` = `State` + -536870912 WHERE SplitInstanceID = 5"},
      {[](Providers& p) { p.splits->Load("WHERE ParentID = 0"); },
       kSplitSelect + " WHERE ParentID = 0"},
      {[](Providers& p) { p.paths->Add(kPath); },
       "INSERT INTO tblProcPathInstance (PathID,FKSplitInstanceID,FKProcInstanceID,`State`) "
       "VALUES (42,5,12,67108864)"},
      {[](Providers& p) { p.paths->Update(8, kPath); },
       "UPDATE tblProcPathInstance SET FKSplitInstanceID = 5 ,FKProcInstanceID = 12 ,`State` = "
       "67108864 WHERE PathID = 8"},
      {[](Providers& p) { p.paths->Delete(8); },
       "DELETE FROM tblProcPathInstance WHERE PathID = 8"},
      {[](Providers& p) { p.paths->GetByID(8); }, kPathSelect + " WHERE PathID = 8"},
      {[](Providers& p) { p.paths->GetForProcess(12); },
       kPathSelect + " WHERE FKProcInstanceID = 12"},
      {[](Providers& p) { p.paths->GetPathsForSplit(5); },
       kPathSelect + " WHERE FKSplitInstanceID = 5"},
      {[](Providers& p) { p.paths->GetOpenPathCount(5); },
       "SELECT COUNT(*) FROM tblProcPathInstance WHERE (`State` & 67108864) = 67108864 AND "
       "FKSplitInstanceID = 5"},
      {[](Providers& p) { p.paths->GetCurrentState(8); },
       "SELECT State FROM tblProcPathInstance WHERE PathID = 8"},
      {[](Providers& p) { p.paths->ChangeState(8, 134217729, false); },
       "UPDATE tblProcPathInstance SET `State` = 134217729 WHERE PathID = 8"},
      {[](Providers& p) { p.paths->Load(""); }, kPathSelect + " "},
      {[](Providers& p) { p.threads->Add("it's \\ T", kThread); },
       "INSERT INTO tblProcThreadInstance (ThreadID,FKProcInstanceID,`State`) VALUES ('it''s \\\\ "
       "T',12,67108864)"},
      {[](Providers& p) { p.threads->Update("T-1", kThread); },
       "UPDATE tblProcThreadInstance SET FKProcInstanceID = 12 ,`State` = 67108864 WHERE ThreadID "
       "= 'T-1'"},
      {[](Providers& p) { p.threads->Delete("T-1"); },
       "DELETE FROM tblProcThreadInstance WHERE ThreadID = 'T-1'"},
      {[](Providers& p) { p.threads->GetByID("x' OR '1'='1"); },
       kThreadSelect + " WHERE ThreadID = 'x'' OR ''1''=''1'"},
      {[](Providers& p) { p.threads->GetForProcess(12); },
       kThreadSelect + " WHERE FKProcInstanceID = 12"},
      {[](Providers& p) { p.threads->GetCurrentState("T-1"); },
       "SELECT State FROM tblProcThreadInstance WHERE ThreadID = 'T-1'"},
      {[](Providers& p) { p.threads->ChangeState("T-1", 536870912, true); },
       "UPDATE tblProcThreadInstance SET `State` = `State` + 536870912 WHERE ThreadID = 'T-1'"},
      {[](Providers& p) { p.threads->Load("ORDER BY ThreadID"); },
       kThreadSelect + " ORDER BY ThreadID"},
  };
  for (const Case& c : cases) {
    Providers p;
    c.call(p);
    ASSERT_FALSE(p.connection->statements.empty()) << c.statement;
    EXPECT_EQ(p.connection->statements.back(), c.statement);
  }
}

TEST(RoutingStatements, OnlyAddWithANewKeyOpensASessionAndFailuresAreNamed) {
  Providers p;
  EXPECT_EQ(p.splits->Add(kSplit), 42);
  EXPECT_EQ(p.paths->Add(kPath), 42);
  EXPECT_EQ(p.connection->starts, 2);
  EXPECT_EQ(p.connection->statements.size(), 6u);  // key read, key update, insert; twice
  EXPECT_TRUE(p.threads->Add("T-1", kThread));
  p.threads->ChangeState("T-1", 1, true);
  p.paths->GetOpenPathCount(5);
  EXPECT_EQ(p.connection->starts, 2);
  EXPECT_EQ(p.connection->depth, 0);

  p.connection->fail_on = "INSERT INTO tblProcPathInstance";
  const Error e = orvtest::Raised([&] { p.paths->Add(kPath); });
  EXPECT_EQ(e.Number(), kErrDatabase);
  EXPECT_TRUE(e.Source().find(" => \r\nCPathInstanceDP: IPathInstanceDP_Add Function (") !=
              std::string::npos)
      << e.Source();
  EXPECT_EQ(p.connection->depth, 0);

  const Error unset = orvtest::Raised([] { CPathInstanceDP().GetOpenPathCount(5); });
  EXPECT_EQ(unset.Number(), kErrObjectNotSet);
  EXPECT_TRUE(unset.Description().ends_with(" (Connection)")) << unset.Description();
}

TEST(RoutingStatements, BadArraysStopBeforeAnyStatementOrSession) {
  Providers p;
  const FieldArray not_a_number = {"5 OR 1=1", 12, 0};
  EXPECT_EQ(ErrorOf([&] { p.splits->Add(FieldArray(5)); }), kErrSubscript);
  EXPECT_EQ(ErrorOf([&] { p.paths->Add(not_a_number); }), kErrTypeMismatch);
  EXPECT_EQ(ErrorOf([&] { p.paths->Update(1, not_a_number); }), kErrTypeMismatch);
  EXPECT_EQ(ErrorOf([&] { p.threads->Add("T-1", {12}); }), kErrSubscript);
  EXPECT_EQ(ErrorOf([&] { p.threads->Update("T-1", {"x", 0}); }), kErrTypeMismatch);
  EXPECT_EQ(ErrorOf([&] { p.splits->Add({3, Null, 7, 12, 0, 1}); }), kErrInvalidUseOfNull);
  EXPECT_TRUE(p.connection->statements.empty());
  EXPECT_EQ(p.connection->starts, 0);
}

}  // namespace
}  // namespace orvmysql
