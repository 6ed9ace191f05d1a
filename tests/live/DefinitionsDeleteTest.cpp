// Deleting a whole definition, one activity with its bags, and single rows or
// whole groups of bags, transitions and switches.

#include <string>
#include <vector>

#include "live/DefinitionsFixture.h"

namespace orvtest {
namespace {

class DefinitionDelete : public DefinitionsTest {
 protected:
  struct Graph {
    int32_t definition = 0;
    std::vector<int32_t> activities;
    std::vector<int32_t> properties;  // two per activity, in activity order
    std::vector<int32_t> parameters;  // one per activity
    std::vector<int32_t> transitions;
    int32_t start = 0;
  };

  // A definition with two activities, their bags, a start switch, two
  // transitions and two process parameters.
  Graph Populate() {
    Graph g;
    g.definition = AddDefinition(Unique("cascade"));
    for (const char* ident : {"a", "b"}) {
      const int32_t activity = AddActivity(g.definition, ident);
      g.activities.push_back(activity);
      g.properties.push_back(properties_->Add(PropertyFields(activity, "p1")));
      g.properties.push_back(properties_->Add(PropertyFields(activity, "p2")));
      g.parameters.push_back(parameters_->Add(ParameterAddFields(activity, "x")).ToLong());
    }
    g.start = switches_->Add(SwitchFields(g.definition, 2, "start"));
    g.transitions.push_back(
        transitions_->Add(TransitionFields(g.definition, g.start, 2, g.activities[0], 1, "t1")));
    g.transitions.push_back(transitions_->Add(
        TransitionFields(g.definition, g.activities[0], 1, g.activities[1], 1, "t2")));
    process_params_->Add(ProcessParamFields(g.definition, "p"));
    process_params_->Add(ProcessParamFields(g.definition, "q"));
    return g;
  }

  static std::string IdList(const std::vector<int32_t>& ids) {
    std::string text;
    for (int32_t id : ids) text += (text.empty() ? "" : ",") + std::to_string(id);
    return text;
  }

  // Rows per table that belong to the graph, found by the keys recorded when
  // it was built (so that rows left behind without their parent still count).
  std::vector<long long> Counts(const Graph& g) const {
    const std::string def = std::to_string(g.definition);
    const std::string activities = "(" + IdList(g.activities) + ")";
    return {Db().Count("tblProcessDef", "ProcessDefID = " + def),
            Db().Count("tblActivities", "ActivityID IN " + activities),
            Db().Count("tblActivityPropertyBag", "FKActivityID IN " + activities),
            Db().Count("tblActivityParamBag", "FKActivityID IN " + activities),
            Db().Count("tblSwitches", "FKProcDefinitionID = " + def),
            Db().Count("tblTransitions", "FKProcDefinitionID = " + def),
            Db().Count("tblProcessParams", "FKProcDefID = " + def)};
  }
};

TEST_F(DefinitionDelete, CascadeLeavesNothingOfTheDefinitionAndTouchesNoOther) {
  const Graph doomed = Populate();
  const Graph kept = Populate();
  const std::vector<long long> full{1, 2, 4, 2, 1, 2, 2};
  ASSERT_EQ(Counts(doomed), full);
  ASSERT_EQ(Counts(kept), full);

  EXPECT_TRUE(definitions_->Delete(doomed.definition));
  EXPECT_EQ(Counts(doomed), std::vector<long long>(7, 0));
  EXPECT_EQ(Counts(kept), full);

  // A definition that does not exist deletes nothing and still succeeds.
  EXPECT_TRUE(definitions_->Delete(kept.definition + 1000));
  EXPECT_EQ(Counts(kept), full);
}

TEST_F(DefinitionDelete, DefinitionInUseIsReportedButDeleteDoesNotAsk) {
  const Graph g = Populate();
  const Graph other = Populate();
  Db().Exec("INSERT INTO tblProcessInstance (ProcInstanceID, FKProcDefID) VALUES (" +
            std::to_string(g.definition * 100) + "," + std::to_string(g.definition) + ")");
  EXPECT_TRUE(definitions_->IsOrvdefinitionInUse(g.definition));
  EXPECT_FALSE(definitions_->IsOrvdefinitionInUse(other.definition));
  EXPECT_TRUE(definitions_->Delete(g.definition));
  EXPECT_EQ(Counts(g)[0], 0);
  EXPECT_EQ(Db().Count("tblProcessInstance", "FKProcDefID = " + std::to_string(g.definition)), 1);
}

TEST_F(DefinitionDelete, ActivityGoesWithItsBagsWhileTransitionsStay) {
  const Graph g = Populate();
  EXPECT_TRUE(activities_->Delete(0, std::to_string(g.activities[0])));
  const std::string gone = std::to_string(g.activities[0]);
  const std::string kept = std::to_string(g.activities[1]);
  EXPECT_EQ(Db().Count("tblActivities", "ActivityID = " + gone), 0);
  EXPECT_EQ(Db().Count("tblActivityPropertyBag", "FKActivityID = " + gone), 0);
  EXPECT_EQ(Db().Count("tblActivityParamBag", "FKActivityID = " + gone), 0);
  EXPECT_EQ(Db().Count("tblActivityPropertyBag", "FKActivityID = " + kept), 2);
  EXPECT_EQ(Db().Count("tblActivityParamBag", "FKActivityID = " + kept), 1);
  EXPECT_EQ(Db().Count("tblTransitions", "FKToNodeID = " + gone), 1);
}

TEST_F(DefinitionDelete, BagsDeleteOneRowByKeyOrTheWholeBagOfAnActivity) {
  const Graph g = Populate();
  const std::string first = std::to_string(g.activities[0]);
  const std::string second = std::to_string(g.activities[1]);

  // Activity 0 deletes by key only.
  EXPECT_TRUE(properties_->Delete(g.properties[0], 0));
  EXPECT_EQ(Db().Count("tblActivityPropertyBag", "FKActivityID = " + first), 1);
  EXPECT_EQ(Db().Count("tblActivityPropertyBag", "FKActivityID = " + second), 2);

  // With an activity the key is ignored: the first activity's remaining
  // property survives although its key is passed.
  EXPECT_TRUE(properties_->Delete(g.properties[1], g.activities[1]));
  EXPECT_EQ(Db().Count("tblActivityPropertyBag", "FKActivityID = " + second), 0);
  EXPECT_EQ(Db().Count("tblActivityPropertyBag", "FKActivityID = " + first), 1);

  EXPECT_TRUE(parameters_->Delete(g.parameters[0], 0));
  EXPECT_EQ(Db().Count("tblActivityParamBag", "FKActivityID IN (" + first + "," + second + ")"), 1);
  EXPECT_TRUE(parameters_->Delete(0, g.activities[1]));
  EXPECT_EQ(Db().Count("tblActivityParamBag", "FKActivityID = " + second), 0);
}

TEST_F(DefinitionDelete, GraphRowsDeleteOneByKeyOrAllOfADefinition) {
  const Graph g = Populate();
  const Graph other = Populate();
  const std::string def = "FKProcDefinitionID = " + std::to_string(g.definition);

  EXPECT_TRUE(transitions_->Delete(g.transitions[0], 0));
  EXPECT_EQ(Db().Count("tblTransitions", def), 1);
  EXPECT_TRUE(transitions_->Delete(0, g.definition));
  EXPECT_EQ(Db().Count("tblTransitions", def), 0);

  EXPECT_TRUE(switches_->Delete(0, g.definition));
  EXPECT_EQ(Db().Count("tblSwitches", def), 0);
  EXPECT_TRUE(switches_->Delete(other.start, 0));
  EXPECT_EQ(Counts(other), (std::vector<long long>{1, 2, 4, 2, 0, 2, 2}));

  const auto params =
      Read(process_params_->GetParameterForProcess(other.definition), {"ParameterID"});
  ASSERT_EQ(params.size(), 2u);
  EXPECT_TRUE(process_params_->Delete(std::stoi(params[0].at("ParameterID"))));
  EXPECT_EQ(Counts(other), (std::vector<long long>{1, 2, 4, 2, 0, 2, 1}));
}

}  // namespace
}  // namespace orvtest
