// Update of each provider: which row it finds, which columns it writes, and
// the two field layouts of the activity parameter bag.

#include <string>

#include "live/DefinitionsFixture.h"

namespace orvtest {
namespace {

using orvmysql::FieldArray;
using orvmysql::Variant;

class DefinitionUpdate : public DefinitionsTest {};

TEST_F(DefinitionUpdate, DefinitionRowIsRewrittenAndMissingRowsReportFalse) {
  const int32_t id = AddDefinition(Unique("before"));
  FieldArray fields = DefinitionFields(Unique("after"));
  fields[1] = "";            // description gone: NULL
  fields[4] = Variant();     // no modification date: NULL
  fields[6] = "Bob Editor";  // modifier now known
  fields[9] = "u-42";
  fields[10] = "user";
  fields[14] = false;
  fields[18] = 2;
  fields[23] = "on:start";
  EXPECT_TRUE(definitions_->Update(id, fields));
  ExpectOneRow(definitions_->GetProcessDefByID(id), {{"ProcdefDescription", "NULL"},
                                                     {"ModifiedDate", "NULL"},
                                                     {"ProcModifiedByUserName", "Bob Editor"},
                                                     {"ProcModifiedByUserID", "u-42"},
                                                     {"ProcModifiedByUserType", "user"},
                                                     {"ExcludeNonWorkingHours", "0"},
                                                     {"State", "2"},
                                                     {"Trigger", "on:start"}});
  // Writing the same values again still finds the row.
  EXPECT_TRUE(definitions_->Update(id, fields));
  EXPECT_FALSE(definitions_->Update(id + 1000, fields));
}

TEST_F(DefinitionUpdate, ActivityIsFoundByIdentifierWithinItsDefinitionAndKeepsItsKind) {
  const int32_t definition = AddDefinition(Unique("update"));
  const int32_t other = AddDefinition(Unique("update"));
  const int32_t activity = AddActivity(definition, "step-1");
  const int32_t twin = AddActivity(other, "step-1");

  FieldArray fields = ActivityFields(other, "Renamed", "moved");
  fields[1] = "";           // Description
  fields[2] = 9;            // ActivityType: not written by Update
  fields[3] = 11;           // StartTime
  fields[11] = "Subject!";  // Subject
  fields[14] = 99;          // ActivityTypeMask: not written
  fields[15] = "{NEW}";     // ClassID: not written
  EXPECT_TRUE(activities_->Update(definition, "step-1", fields));
  ExpectOneRow(activities_->GetActivityByID(activity),
               {{"ActivityName", "Renamed"},
                {"Description", "NULL"},
                {"StartTime", "11"},
                {"Subject", "Subject!"},
                {"ActivityType", "1"},
                {"ActivityTypeMask", "16"},
                {"ClassID", "{CLASS-1}"},
                {"FKProcDefinitionID", std::to_string(definition)},
                {"ActivityProcDefID", "step-1"}});
  ExpectOneRow(activities_->GetActivityByID(twin), {{"ActivityName", "Task step-1"}});

  EXPECT_FALSE(activities_->Update(definition, "step-2", fields));
  // The identifier is compared by LIKE, so a pattern finds the row too.
  fields[0] = "By pattern";
  EXPECT_TRUE(activities_->Update(definition, "step_%", fields));
  ExpectOneRow(activities_->GetActivityByID(activity), {{"ActivityName", "By pattern"}});
}

TEST_F(DefinitionUpdate, ParameterBagUpdateReadsItsShorterLayoutAndKeepsDisplayNameAndCreator) {
  const int32_t activity = AddActivity(AddDefinition(Unique("bag")), "bagged");
  FieldArray add = ParameterAddFields(activity, "amount");
  add[2] = "Amount";
  const int32_t id = parameters_->Add(add).ToLong();

  // No display name: everything after the name moves up by one; positions 13
  // and 14 are not read, so even text there does no harm.
  const FieldArray update{activity, "amount2", "77",  4,  8,      1.5,      20,      2,
                          "<e/>",   "",        "rel", "", "list", "unused", "unused"};
  EXPECT_TRUE(parameters_->Update(id, update));
  ExpectOneRow(parameters_->GetParameterByID(id), {{"ParameterName", "amount2"},
                                                   {"DisplayName", "Amount"},
                                                   {"Value", "77"},
                                                   {"DataType", "4"},
                                                   {"Attributes", "8"},
                                                   {"Min", "1.5"},
                                                   {"Max", "20"},
                                                   {"ParameterType", "2"},
                                                   {"ExtendedAttributes", "<e/>"},
                                                   {"Mapping", "NULL"},
                                                   {"relevance", "rel"},
                                                   {"LookupTypeCode", "NULL"},
                                                   {"ListAttribute", "list"},
                                                   {"CreatorType", "5"}});
  // Fifteen positions are needed all the same.
  EXPECT_EQ(
      ErrorOf([&] { parameters_->Update(id, FieldArray(update.begin(), update.begin() + 14)); }),
      orvmysql::kErrSubscript);
}

TEST_F(DefinitionUpdate, PropertyAndProcessParameterUpdatesRewriteTheRow) {
  const int32_t definition = AddDefinition(Unique("props"));
  const int32_t activity = AddActivity(definition, "props");
  const int32_t property = properties_->Add(PropertyFields(activity, "colour"));
  FieldArray fields = PropertyFields(activity, "color");
  fields[5] = "blue";
  fields[14] = 7;
  EXPECT_TRUE(properties_->Update(property, fields));
  ExpectOneRow(properties_->GetPropertyByID(property),
               {{"PropertyName", "color"}, {"Value", "blue"}, {"CreatorType", "7"}});

  const int32_t param = process_params_->Add(ProcessParamFields(definition, "a"));
  FieldArray renamed = ProcessParamFields(definition, "b");
  renamed[4] = "default";
  EXPECT_TRUE(process_params_->Update(param, renamed));
  ExpectOneRow(process_params_->GetParameterByID(param),
               {{"ParameterName", "b"}, {"DisplayName", "b"}, {"DefaultValue", "default"}});
  // Process parameters and bags report true even for a key that is not there.
  EXPECT_TRUE(process_params_->Update(param + 1000, renamed));
  EXPECT_TRUE(properties_->Update(property + 1000, fields));
}

TEST_F(DefinitionUpdate, GraphRowsAreRewrittenAndMissingRowsReportFalse) {
  const int32_t definition = AddDefinition(Unique("graph"));
  const int32_t end = switches_->Add(SwitchFields(definition, 3, "end"));
  const int32_t transition = transitions_->Add(TransitionFields(definition, 1, 1, end, 3, "t"));

  FieldArray arc = TransitionFields(definition, 2, 1, end, 3, "t-new");
  arc[4] = "x = 1";
  EXPECT_TRUE(transitions_->Update(transition, arc));
  ExpectOneRow(
      transitions_->GetByID(transition),
      {{"FKFromNodeID", "2"}, {"TransitionCondition", "x = 1"}, {"TransitionProcDefID", "t-new"}});
  EXPECT_FALSE(transitions_->Update(transition + 1000, arc));

  FieldArray node = SwitchFields(definition, 4, "join");
  node[1] = "";
  EXPECT_TRUE(switches_->Update(end, node));
  ExpectOneRow(switches_->GetByID(end),
               {{"SwitchType", "4"}, {"DisplayName", "NULL"}, {"SwitchProcDefID", "join"}});
  EXPECT_FALSE(switches_->Update(end + 1000, node));
}

}  // namespace
}  // namespace orvtest
