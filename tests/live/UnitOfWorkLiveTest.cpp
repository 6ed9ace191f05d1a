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

}  // namespace
}  // namespace orvtest
