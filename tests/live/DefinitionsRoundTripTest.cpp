// A definition with two activities, their bags, process parameters and a
// graph, written through the providers and read back column by column.

#include <string>

#include "live/DefinitionsFixture.h"

namespace orvtest {
namespace {

using orvmysql::FieldArray;

class DefinitionRoundTrip : public DefinitionsTest {
 protected:
  void SetUp() override {
    DefinitionsTest::SetUp();
    name_ = Unique("Order 'flow' \\ 50% \xC3\xBC");
    definition_ = AddDefinition(name_);
    check_ = AddActivity(definition_, "check");
    ship_ = AddActivity(definition_, "ship");
  }

  std::string name_;
  int32_t definition_ = 0, check_ = 0, ship_ = 0;
};

TEST_F(DefinitionRoundTrip, DefinitionRowKeepsEveryPositionAndStoresNullForEmptyOptionalTexts) {
  auto rows = definitions_->GetProcessDefByID(definition_);
  ExpectOneRow(rows, {{"ProcdefDescription", "Handles orders"},
                      {"AccessLevel", "3"},
                      {"CreatedDate", "2024-03-05 14:05:09"},
                      {"ModifiedDate", "2024-03-06 08:00:00"},
                      {"CreatorName", "Ann Author"},
                      {"ProcModifiedByUserName", "NULL"},
                      {"CreatorID", "u-17"},
                      {"CreatorType", "user"},
                      {"ProcModifiedByUserID", "NULL"},
                      {"ProcModifiedByUserType", "NULL"},
                      {"Duration", "5"},
                      {"DurationUnit", "2"},
                      {"Priority", "1"},
                      {"ExcludeNonWorkingHours", "1"},
                      {"AclId", "7"},
                      {"MajorVersion", "1"},
                      {"MinorVersion", "4"},
                      {"State", "0"},
                      {"Timeout", "30"},
                      {"TimeoutUnit", "3"},
                      {"ProcDefTypeMask", "8"},
                      {"Layout", "<layout/>"},
                      {"Trigger", "NULL"}});
  const std::string id = std::to_string(definition_);
  EXPECT_EQ(Db().Scalar("SELECT CONCAT(LastActivityID, LastSwitchID, LastTransitionID) FROM "
                        "tblProcessDef WHERE ProcessDefID = " +
                        id),
            "000");
  // The name keeps its apostrophe, backslash, percent sign and UTF-8 letter.
  EXPECT_EQ(Db().Scalar("SELECT ProcDefName FROM tblProcessDef WHERE ProcessDefID = " + id), name_);
}

TEST_F(DefinitionRoundTrip, NamesAreCutTo255CharactersButLongTextsAreNot) {
  FieldArray fields = DefinitionFields(std::string(300, 'n'));
  fields[1] = std::string(300, 'd');     // ProcdefDescription
  fields[22] = std::string(70000, 'l');  // Layout
  const std::string where = "ProcessDefID = " + std::to_string(AddDefinition(fields));
  EXPECT_EQ(Db().Count("tblProcessDef", where + " AND CHAR_LENGTH(ProcDefName) = 255"), 1);
  EXPECT_EQ(Db().Count("tblProcessDef", where + " AND CHAR_LENGTH(ProcdefDescription) = 300"), 1);
  EXPECT_EQ(Db().Count("tblProcessDef", where + " AND CHAR_LENGTH(Layout) = 70000"), 1);
}

TEST_F(DefinitionRoundTrip, ActivitiesOfTheDefinitionReadBackWithNullSubject) {
  const auto rows = Read(activities_->GetActivitiesForProcess(definition_),
                         {"ActivityName", "ActivityProcDefID"});
  EXPECT_EQ(rows.size(), 2u);
  ExpectOneRow(activities_->GetActivityByID(check_),
               {{"ActivityName", "Task check"},
                {"Description", "Checks the order"},
                {"ActivityType", "1"},
                {"StartTime", "0"},
                {"StartTimeUnit", "1"},
                {"Duration", "2"},
                {"DurationUnit", "3"},
                {"Timeout", "4"},
                {"TimeoutUnit", "5"},
                {"FKProcDefinitionID", std::to_string(definition_)},
                {"Priority", "6"},
                {"Subject", "NULL"},
                {"Message", "Please check"},
                {"ActivityProcDefID", "check"},
                {"ActivityTypeMask", "16"},
                {"ClassID", "{CLASS-1}"}});
}

TEST_F(DefinitionRoundTrip, PropertyBagKeepsValueBeforeTypeAndCreatorTypeLast) {
  const int32_t id = properties_->Add(PropertyFields(check_, "timeout"));
  ASSERT_GT(id, 0);
  ExpectOneRow(properties_->GetPropertyByID(id), {{"FKActivityID", std::to_string(check_)},
                                                  {"PropertyName", "timeout"},
                                                  {"DisplayName", ""},
                                                  {"PropertyDescription", "The description"},
                                                  {"DataType", "2"},
                                                  {"Value", "NULL"},
                                                  {"Attributes", "1"},
                                                  {"Min", "0.5"},
                                                  {"Max", "99.75"},
                                                  {"ExtendedAttributes", "<x/>"},
                                                  {"Mapping", "NULL"},
                                                  {"relevance", "high"},
                                                  {"LookupTypeCode", "NULL"},
                                                  {"ListAttribute", "a;b"},
                                                  {"CreatorType", "2"}});
  FieldArray with_value = PropertyFields(check_, "limit");
  with_value[5] = "it's 100\\%";
  const int32_t second = properties_->Add(with_value);
  EXPECT_EQ(second, id + 1);
  EXPECT_EQ(Read(properties_->GetPropertyByID(second), {"Value"}).at(0).at("Value"), "it's 100\\%");
  EXPECT_EQ(Read(properties_->GetPropertiesForEntity(check_), {"PropertyName"}).size(), 2u);
  EXPECT_TRUE(Read(properties_->GetPropertiesForEntity(ship_), {"PropertyName"}).empty());
}

TEST_F(DefinitionRoundTrip, ParameterBagStoresNullForAnEmptyDisplayName) {
  const orvmysql::Variant id = parameters_->Add(ParameterAddFields(ship_, "amount"));
  ASSERT_GT(id.ToLong(), 0);
  ExpectOneRow(parameters_->GetParameterByID(id.ToLong()), {{"FKActivityID", std::to_string(ship_)},
                                                            {"ParameterName", "amount"},
                                                            {"DisplayName", "NULL"},
                                                            {"Value", "42"},
                                                            {"DataType", "3"},
                                                            {"Attributes", "4"},
                                                            {"Min", "-1.25"},
                                                            {"Max", "10"},
                                                            {"ParameterType", "1"},
                                                            {"ExtendedAttributes", "NULL"},
                                                            {"Mapping", "map"},
                                                            {"relevance", "NULL"},
                                                            {"LookupTypeCode", "LT"},
                                                            {"ListAttribute", "NULL"},
                                                            {"CreatorType", "5"}});
  EXPECT_EQ(Read(parameters_->GetParameterForEntity(ship_), {"ParameterName"}).size(), 1u);
}

TEST_F(DefinitionRoundTrip, ProcessParameterShowsItsNameWhenItHasNoDisplayName) {
  const int32_t id = process_params_->Add(ProcessParamFields(definition_, "customer"));
  ASSERT_GT(id, 0);
  ExpectOneRow(process_params_->GetParameterByID(id), {{"FKProcDefID", std::to_string(definition_)},
                                                       {"ParameterName", "customer"},
                                                       {"DisplayName", "customer"},
                                                       {"DataType", "1"},
                                                       {"DefaultValue", "NULL"},
                                                       {"Attributes", "2"},
                                                       {"ParameterType", "1"},
                                                       {"Min", "0"},
                                                       {"Max", "2.5"},
                                                       {"CreatorType", "1"},
                                                       {"ExtendedAttributes", "NULL"},
                                                       {"Relevance", "rel"},
                                                       {"LookupTypeCode", "NULL"},
                                                       {"ListAttribute", "list"}});
  FieldArray named = ProcessParamFields(definition_, "total");
  named[2] = "Order total";
  process_params_->Add(named);
  EXPECT_EQ(
      Read(process_params_->Load("WHERE FKProcDefID = " + std::to_string(definition_) +
                                 " ORDER BY ParameterID"),
           {"DisplayName"}),
      (std::vector<Expected>{{{"DisplayName", "customer"}}, {{"DisplayName", "Order total"}}}));
}

TEST_F(DefinitionRoundTrip, LargeAndFractionalLimitsReadBackExactly) {
  FieldArray fields = ProcessParamFields(definition_, "limits");
  fields[7] = 123456789.125;
  fields[8] = 2.5e16;
  const int32_t id = process_params_->Add(fields);
  ASSERT_GT(id, 0);
  auto rows = process_params_->GetParameterByID(id);
  ASSERT_TRUE(rows->GetNext());
  EXPECT_EQ(rows->CurrentItem()->GetValue("Min").ToDouble(), 123456789.125);
  EXPECT_EQ(rows->CurrentItem()->GetValue("Max").ToDouble(), 2.5e16);
}

TEST_F(DefinitionRoundTrip, GraphIsFoundTheWayRoutingReadsIt) {
  const int32_t start = switches_->Add(SwitchFields(definition_, 2, "start"));
  ASSERT_GT(start, 0);
  FieldArray first = TransitionFields(definition_, start, 2, check_, 1, "t1");
  FieldArray second = TransitionFields(definition_, check_, 1, ship_, 1, "t2");
  second[4] = "amount > 10 AND name <> 'O''Brien'";
  const int32_t t1 = transitions_->Add(first);
  const int32_t t2 = transitions_->Add(second);
  ASSERT_GT(t1, 0);
  EXPECT_EQ(t2, t1 + 1);

  ExpectOneRow(switches_->GetByID(start), {{"SwitchType", "2"},
                                           {"DisplayName", "start switch"},
                                           {"FKProcDefinitionID", std::to_string(definition_)},
                                           {"SwitchProcDefID", "start"}});
  ExpectOneRow(transitions_->GetByID(t1), {{"FKFromNodeID", std::to_string(start)},
                                           {"FromNodeType", "2"},
                                           {"FKToNodeID", std::to_string(check_)},
                                           {"ToNodeType", "1"},
                                           {"TransitionCondition", "NULL"},
                                           {"FKProcDefinitionID", std::to_string(definition_)},
                                           {"TransitionProcDefID", "t1"}});
  EXPECT_EQ(
      Read(transitions_->GetByID(t2), {"TransitionCondition"}).at(0).at("TransitionCondition"),
      "amount > 10 AND name <> 'O''Brien'");
  EXPECT_EQ(Read(transitions_->GetForProcess(definition_), {"TransitionID"}).size(), 2u);

  // The start node is the definition's switch of type 2, and the transitions
  // out of a node are found by its id and type.
  const std::string def = std::to_string(definition_);
  EXPECT_EQ(Db().Scalar(" SELECT SwitchID FROM  tblSwitches  WHERE SwitchType = 2 AND "
                        "FKProcDefinitionID = " +
                        def),
            std::to_string(start));
  EXPECT_EQ(
      Db().Scalar(" SELECT FKToNodeID FROM tblTransitions WHERE  FKFromNodeID = " +
                  std::to_string(start) + " AND FromNodeType = 2 AND  FKProcDefinitionID = " + def),
      std::to_string(check_));
}

}  // namespace
}  // namespace orvtest
