// Units of work on the server: a statement that fails part way leaves every
// row in place and no row locked while the caller's session (and so the
// connection) stays open; a server killed after any statement of a unit has
// kept all of it or none of it when it comes back.

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "orvmysql/Definitions.h"
#include "orvmysql/Engine.h"
#include "orvmysql/Observer.h"
#include "support/ErrorCapture.h"
#include "support/LiveDb.h"
#include "tools/DevServer.h"

namespace orvtest {
namespace {

using Exec = std::function<void(const std::string&)>;
using Scalar = std::function<std::string(const std::string&)>;

// A definition with two activities, two properties and a parameter on each,
// a switch, two transitions and two process parameters, under keys from base
// up (keys only: every other column may be NULL).
struct DefinitionGraph {
  explicit DefinitionGraph(int32_t base) : definition(base), activities{base + 1, base + 2} {}

  void Insert(const Exec& exec) const {
    const std::string d = std::to_string(definition);
    const std::string a = std::to_string(activities[0]), b = std::to_string(activities[1]);
    const auto key = [&](int offset) { return std::to_string(definition + offset); };
    exec("INSERT INTO tblProcessDef (ProcessDefID) VALUES (" + d + ")");
    exec("INSERT INTO tblActivities (ActivityID, FKProcDefinitionID) VALUES (" + a + "," + d +
         "),(" + b + "," + d + ")");
    exec("INSERT INTO tblActivityPropertyBag (ActivityPropertyID, FKActivityID) VALUES (" +
         key(11) + "," + a + "),(" + key(12) + "," + a + "),(" + key(13) + "," + b + "),(" +
         key(14) + "," + b + ")");
    exec("INSERT INTO tblActivityParamBag (ActivityParameterID, FKActivityID) VALUES (" + key(21) +
         "," + a + "),(" + key(22) + "," + b + ")");
    exec("INSERT INTO tblSwitches (SwitchID, FKProcDefinitionID) VALUES (" + key(31) + "," + d +
         ")");
    exec("INSERT INTO tblTransitions (TransitionID, FKProcDefinitionID) VALUES (" + key(41) + "," +
         d + "),(" + key(42) + "," + d + ")");
    exec("INSERT INTO tblProcessParams (ParameterID, FKProcDefID) VALUES (" + key(51) + "," + d +
         "),(" + key(52) + "," + d + ")");
  }

  // " WHERE FKActivityID IN (<both activities>)"
  std::string ActivitiesBags() const {
    return " WHERE FKActivityID IN (" + std::to_string(activities[0]) + "," +
           std::to_string(activities[1]) + ")";
  }

  // Rows of the definition, its activities, their properties and parameters,
  // its switches, transitions and process parameters.
  std::vector<long long> Counts(const Scalar& scalar) const {
    const std::string d = std::to_string(definition);
    const auto count = [&](const std::string& table, const std::string& where) {
      return std::stoll(scalar("SELECT COUNT(*) FROM " + table + where));
    };
    return {count("tblProcessDef", " WHERE ProcessDefID = " + d),
            count("tblActivities", " WHERE ActivityID IN (" + std::to_string(activities[0]) + "," +
                                       std::to_string(activities[1]) + ")"),
            count("tblActivityPropertyBag", ActivitiesBags()),
            count("tblActivityParamBag", ActivitiesBags()),
            count("tblSwitches", " WHERE FKProcDefinitionID = " + d),
            count("tblTransitions", " WHERE FKProcDefinitionID = " + d),
            count("tblProcessParams", " WHERE FKProcDefID = " + d)};
  }

  // Counts of the whole graph, after deleting the first activity, after
  // deleting the definition.
  static inline const std::vector<long long> kFull{1, 2, 4, 2, 1, 2, 2};
  static inline const std::vector<long long> kFirstActivityGone{1, 1, 2, 1, 1, 2, 2};
  static inline const std::vector<long long> kNone{0, 0, 0, 0, 0, 0, 0};

  int32_t definition;
  std::vector<int32_t> activities;
};

// A process tree: a root and a sub-process sharing a TreeID, an activity
// instance and a work item on each (both activity instances in one split,
// which has a path), and a row in each other table of the log, under keys
// from base up.
struct EngineTree {
  explicit EngineTree(int32_t base) : base(base) {}

  std::string Key(int offset) const { return std::to_string(base + offset); }
  std::string Ids() const { return Key(0) + "," + Key(1); }

  void Insert(const Exec& exec, int32_t root, int32_t sub, int32_t tasks) const {
    const std::string tree = "'T" + Key(0) + "'", t = std::to_string(tasks);
    exec("INSERT INTO tblProcessInstance (ProcInstanceID, TreeID, State) VALUES (" + Key(0) + "," +
         tree + "," + std::to_string(root) + "),(" + Key(1) + "," + tree + "," +
         std::to_string(sub) + ")");
    exec(
        "INSERT INTO tblActivityInstance (ActivityInstanceID, FKProcInstanceID, "
        "FKsplitInstanceID, State) VALUES (" +
        Key(10) + "," + Key(0) + "," + Key(70) + "," + t + "),(" + Key(11) + "," + Key(1) + "," +
        Key(70) + "," + t + ")");
    exec(
        "INSERT INTO tblWorkitems (WorkitemID, FKProcInstanceID, FKActivityInstanceID, State) "
        "VALUES (" +
        Key(20) + "," + Key(0) + "," + Key(10) + "," + t + "),(" + Key(21) + "," + Key(1) + "," +
        Key(11) + "," + t + ")");
    exec("INSERT INTO tblProcSplitInstance (SplitInstanceID, FKProcInstanceID) VALUES (" + Key(70) +
         "," + Key(0) + ")");
    exec("INSERT INTO tblProcPathInstance (PathID, FKSplitInstanceID, FKProcInstanceID) VALUES (" +
         Key(80) + "," + Key(70) + "," + Key(0) + ")");
    exec("INSERT INTO tblAIPropertyData (AIPropertyID, FKActivityInstanceID) VALUES (" + Key(30) +
         "," + Key(10) + ")");
    exec("INSERT INTO tblActivityInstanceData (AIParameterID, FKActivityInstanceID) VALUES (" +
         Key(40) + "," + Key(10) + ")");
    exec("INSERT INTO tblPIReleventData (PIReleventDataID, FKProcInstanceID) VALUES (" + Key(50) +
         "," + Key(0) + ")");
    exec("INSERT INTO tblProcInstanceData (ProcInstanceDataID, FKProcInstanceID) VALUES (" +
         Key(60) + "," + Key(0) + ")");
    exec("INSERT INTO tblProcThreadInstance (ThreadID, FKProcInstanceID) VALUES ('t" + Key(0) +
         "'," + Key(0) + ")");
  }

  // The tree's rows as text: keys relative to base, the State words, whether
  // a finish date is set, and the row counts of the other log tables. Two
  // trees that went through the same give the same text.
  std::string Snapshot(const Scalar& scalar) const {
    const std::string in = " IN (" + Ids() + ")";
    const auto states = [&](const std::string& key, const std::string& table,
                            const std::string& owner) {
      return scalar("SELECT IFNULL(GROUP_CONCAT(CONCAT(" + key + " - " + Key(0) +
                    ", ':', IFNULL(State, -1), ':', FinishedOn IS NULL) ORDER BY " + key +
                    "), '') FROM " + table + " WHERE " + owner + in);
    };
    std::string text = states("ProcInstanceID", "tblProcessInstance", "ProcInstanceID") + " | " +
                       states("ActivityInstanceID", "tblActivityInstance", "FKProcInstanceID") +
                       " | " + states("WorkitemID", "tblWorkitems", "FKProcInstanceID") + " |";
    for (const char* table : {"tblProcSplitInstance", "tblProcPathInstance", "tblPIReleventData",
                              "tblProcInstanceData", "tblProcThreadInstance"}) {
      text += " " +
              scalar(std::string("SELECT COUNT(*) FROM ") + table + " WHERE FKProcInstanceID" + in);
    }
    for (const char* table : {"tblAIPropertyData", "tblActivityInstanceData"}) {
      text += " " + scalar(std::string("SELECT COUNT(*) FROM ") + table +
                           " WHERE FKActivityInstanceID IN (" + Key(10) + "," + Key(11) + ")");
    }
    return text;
  }

  int32_t base;
};

constexpr int32_t kOpen = 67108864;
constexpr int32_t kPausedOpen = 67108864 | 536870912;
constexpr int32_t kCompleted = 134217729;

class UnitOfWorkLive : public LiveTest {
 protected:
  // A trigger that makes the server refuse the statements of its event, for
  // as long as the object lives.
  class RefusingTrigger {
   public:
    explicit RefusingTrigger(const std::string& event) {
      Db().Exec("CREATE TRIGGER orvtest_refuse " + event +
                " FOR EACH ROW SIGNAL SQLSTATE '45000' SET MESSAGE_TEXT = 'refused by the test'");
    }
    ~RefusingTrigger() {
      try {
        Db().Exec("DROP TRIGGER orvtest_refuse");
      } catch (const orvmysql::Error& e) {
        ADD_FAILURE() << e.what();
      }
    }
    RefusingTrigger(const RefusingTrigger&) = delete;
    RefusingTrigger& operator=(const RefusingTrigger&) = delete;
  };
};

TEST_F(UnitOfWorkLive, FailedCascadeRollsBackAndHoldsNoLockInAnOpenSession) {
  const DefinitionGraph graph(1000);
  graph.Insert([&](const std::string& sql) { Db().Exec(sql); });
  // The third statement of both cascades is refused by the server, after the
  // bags have been deleted (and their rows locked).
  const RefusingTrigger refuse("BEFORE DELETE ON tblActivities");
  auto handler = Handler();
  auto definitions = Provider<orvmysql::IOrvDefinitionsDP>(handler, 4);
  auto activities = Provider<orvmysql::IActivitiesDP>(handler, 7);
  handler->StartSession();  // the caller's session keeps the connection open

  auto competitor = Db().NewConnection();
  competitor->StartSession();
  competitor->ExecuteNonQuery("SET SESSION innodb_lock_wait_timeout = 1");
  const std::string touch_bags =
      "UPDATE tblActivityPropertyBag SET PropertyName = 'touched' " + graph.ActivitiesBags();

  for (const auto& run : {std::function<void()>([&] { definitions->Delete(graph.definition); }),
                          std::function<void()>([&] {
                            activities->Delete(graph.definition,
                                               std::to_string(graph.activities.front()));
                          })}) {
    const orvmysql::Error e = Raised(run);
    EXPECT_NE(e.Description().find("refused by the test"), std::string::npos) << e.Description();
    EXPECT_EQ(graph.Counts([&](const std::string& sql) { return Db().Scalar(sql); }),
              DefinitionGraph::kFull);
    // Another client changes the rows the failed statements had deleted at
    // once (a lock left behind would make it wait a second and fail).
    EXPECT_EQ(competitor->ExecuteNonQuery(touch_bags), 4);
  }
  competitor->EndSession();
  handler->EndSession();
}

TEST_F(UnitOfWorkLive, FailedTreeOperationHoldsNoLockThoughItsSessionStaysOpen) {
  const EngineTree tree(3000);
  tree.Insert([&](const std::string& sql) { Db().Exec(sql); }, kOpen, kOpen, kOpen);
  const Scalar scalar = [&](const std::string& sql) { return Db().Scalar(sql); };
  const std::string before = tree.Snapshot(scalar);
  // Pausing changes the work items and activity instances, then is refused
  // at the process instances; the operation does not end its session, so
  // the connection stays open.
  const RefusingTrigger refuse("BEFORE UPDATE ON tblProcessInstance");
  auto handler = Handler();
  auto engine = Provider<orvmysql::IOrvEngineDP>(handler, orvmysql::kDsEngine);
  const orvmysql::Error e = Raised([&] { engine->PauseProcess(tree.base); });
  EXPECT_NE(e.Description().find("refused by the test"), std::string::npos) << e.Description();
  EXPECT_EQ(tree.Snapshot(scalar), before);

  auto competitor = Db().NewConnection();
  competitor->StartSession();
  competitor->ExecuteNonQuery("SET SESSION innodb_lock_wait_timeout = 1");
  EXPECT_EQ(competitor->ExecuteNonQuery("UPDATE tblWorkitems SET State = State WHERE "
                                        "FKProcInstanceID IN (" +
                                        tree.Ids() + ")"),
            2);
  EXPECT_EQ(competitor->ExecuteNonQuery("UPDATE tblActivityInstance SET State = State WHERE "
                                        "FKProcInstanceID IN (" +
                                        tree.Ids() + ")"),
            2);
  competitor->EndSession();
  handler->EndSession();
}

// A private server of the suite's own, killed (SIGKILL) in the middle of units
// and started again on the same data directory.
class UnitOfWorkKill : public ::testing::Test {
 public:
  static void SetUpTestSuite() {
    const char* mariadbd = std::getenv("ORVMYSQL_MARIADBD");
    if (!std::filesystem::exists(mariadbd != nullptr ? mariadbd : "/usr/sbin/mariadbd")) return;
    server_ = orvmysql::devkit::DevServer::AcquirePrivate({});
    orvmysql::devkit::InstallSchema(server_->Address(), kDatabase);
  }
  static void TearDownTestSuite() { server_.reset(); }

 protected:
  static constexpr const char* kDatabase = "orvtest_unit_kill";

  void SetUp() override {
    if (!server_) GTEST_SKIP() << "no server binaries to start a private server with";
  }

  // A statement on a connection of its own (one connect each, so it works
  // across restarts).
  static void Exec(const std::string& sql) { Helper()->ExecuteNonQuery(sql); }
  static std::string Scalar(const std::string& sql) { return Helper()->ExecuteScalar(sql, ""); }

  // Runs op on a handler of its own and kills the server as soon as the first
  // statement holding marker has run, then starts the server again. True
  // when op raised an error.
  static bool KilledAfter(const std::string& marker,
                          const std::function<void(orvmysql::CMYSqlDP&)>& op) {
    auto handler = NewHandler();
    bool killed = false;
    handler->SetStatementObserver([&](const orvmysql::StatementEvent& event) {
      if (killed || event.error != nullptr || event.sql.find(marker) == std::string::npos) return;
      killed = true;
      server_->Kill();
    });
    bool raised = false;
    try {
      op(*handler);
    } catch (const orvmysql::Error&) {
      raised = true;
    }
    EXPECT_TRUE(killed) << "no statement held " << marker;
    server_->Restart();
    return raised;
  }

  static std::shared_ptr<orvmysql::CMYSqlDP> NewHandler() {
    auto handler = std::make_shared<orvmysql::CMYSqlDP>();
    handler->Init(server_->Address().Connector(kDatabase));
    return handler;
  }

  template <class T>
  static std::shared_ptr<T> Provider(orvmysql::CMYSqlDP& handler, int code) {
    return std::dynamic_pointer_cast<T>(handler.GetDataSource(code));
  }

 private:
  static std::shared_ptr<orvmysql::IConnection> Helper() {
    return orvmysql::NewConnection(server_->Address().Connector(kDatabase));
  }

  static inline std::unique_ptr<orvmysql::devkit::DevServer> server_;
};

TEST_F(UnitOfWorkKill, DefinitionCascadeIsWholeOrAbsentAfterEveryStatement) {
  int32_t base = 10000;
  for (const char* marker : {"START TRANSACTION", "tblActivityParamBag", "tblActivityPropertyBag",
                             "DELETE FROM tblActivities", "tblTransitions", "tblSwitches",
                             "tblProcessParams", "DELETE FROM tblProcessDef", "COMMIT"}) {
    SCOPED_TRACE(marker);
    const DefinitionGraph graph(base += 100);
    graph.Insert(Exec);
    const bool raised = KilledAfter(marker, [&](orvmysql::CMYSqlDP& handler) {
      Provider<orvmysql::IOrvDefinitionsDP>(handler, 4)->Delete(graph.definition);
    });
    const bool committed = std::string(marker) == "COMMIT";
    EXPECT_EQ(raised, !committed);
    EXPECT_EQ(graph.Counts(Scalar), committed ? DefinitionGraph::kNone : DefinitionGraph::kFull);
  }
}

TEST_F(UnitOfWorkKill, ActivityDeleteIsWholeOrAbsent) {
  int32_t base = 20000;
  for (const char* marker : {"tblActivityPropertyBag", "DELETE FROM tblActivities", "COMMIT"}) {
    SCOPED_TRACE(marker);
    const DefinitionGraph graph(base += 100);
    graph.Insert(Exec);
    KilledAfter(marker, [&](orvmysql::CMYSqlDP& handler) {
      Provider<orvmysql::IActivitiesDP>(handler, 7)
          ->Delete(graph.definition, std::to_string(graph.activities.front()));
    });
    EXPECT_EQ(graph.Counts(Scalar), std::string(marker) == "COMMIT"
                                        ? DefinitionGraph::kFirstActivityGone
                                        : DefinitionGraph::kFull);
  }
}

TEST_F(UnitOfWorkKill, EngineTreeOperationsAreWholeOrAbsent) {
  struct Case {
    const char* name;
    int32_t root, sub, tasks;
    const char* kill_after;
    std::function<void(orvmysql::IOrvEngineDP&, const EngineTree&)> run;
  };
  const auto skip_both = [](orvmysql::IOrvEngineDP& engine, const EngineTree& tree) {
    engine.SkipActivity("tblActivityInstance.ActivityInstanceID IN (" + tree.Key(10) + "," +
                        tree.Key(11) + ")");
  };
  const std::vector<Case> cases = {
      {"pause", kOpen, kOpen, kOpen, "UPDATE tblActivityInstance",
       [](auto& engine, const auto& tree) { engine.PauseProcess(tree.base); }},
      {"resume", kPausedOpen, kPausedOpen, kPausedOpen, "UPDATE tblActivityInstance",
       [](auto& engine, const auto& tree) { engine.ResumeProcess(tree.base); }},
      {"terminate", kOpen, kOpen, kOpen, "UPDATE tblActivityInstance",
       [](auto& engine, const auto& tree) { engine.TerminateProcess(tree.base, false); }},
      {"terminate and clear the log", kOpen, kOpen, kOpen, "DELETE FROM tblActivityInstance ",
       [](auto& engine, const auto& tree) { engine.TerminateProcess(tree.base, true); }},
      {"end and clear the log", kOpen, kCompleted, kCompleted, " DELETE FROM tblWorkitems",
       [](auto& engine, const auto& tree) { engine.EndProcess(tree.base, true); }},
      {"end and clear the log, killed after the commit", kOpen, kCompleted, kCompleted, "COMMIT",
       [](auto& engine, const auto& tree) { engine.EndProcess(tree.base, true); }},
      {"skip", kOpen, kOpen, kOpen, "UPDATE tblActivityInstance", skip_both},
      {"skip on a split", kOpen, kOpen, kOpen, "UPDATE tblActivityInstance",
       [](auto& engine, const auto& tree) { engine.SkipPendingTaskOnSplit(tree.base + 80); }},
      {"clear the log", kCompleted, kCompleted, kCompleted, "DELETE FROM tblProcPathInstance",
       [](auto& engine, const auto& tree) { engine.ClearLog(tree.Ids()); }},
  };
  int32_t base = 100000;
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    const EngineTree twin(base += 1000), killed(base += 1000);
    twin.Insert(Exec, c.root, c.sub, c.tasks);
    killed.Insert(Exec, c.root, c.sub, c.tasks);
    const std::string before = killed.Snapshot(Scalar);
    {
      auto handler = NewHandler();
      c.run(*Provider<orvmysql::IOrvEngineDP>(*handler, orvmysql::kDsEngine), twin);
    }
    const std::string applied = twin.Snapshot(Scalar);
    ASSERT_NE(applied, before) << "the operation changed nothing";
    const bool committed = std::string(c.kill_after) == "COMMIT";
    EXPECT_EQ(KilledAfter(c.kill_after,
                          [&](orvmysql::CMYSqlDP& handler) {
                            c.run(*Provider<orvmysql::IOrvEngineDP>(handler, orvmysql::kDsEngine),
                                  killed);
                          }),
              !committed);
    EXPECT_EQ(killed.Snapshot(Scalar), committed ? applied : before);
  }
}

}  // namespace
}  // namespace orvtest
