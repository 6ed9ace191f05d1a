// Bad input: a value that is not a number where a number goes, a short field
// array, or an activity key that is not a number fails with a clear error
// before anything is written, and no key is used up. Load tails are raw SQL,
// and their failures carry the provider's location.

#include <functional>
#include <string>
#include <vector>

#include "live/DefinitionsFixture.h"

namespace orvtest {
namespace {

using orvmysql::FieldArray;

class DefinitionInput : public DefinitionsTest {
 protected:
  // Rows of every definition table plus the key counters, as one text.
  std::string Snapshot() const {
    std::string text;
    for (const char* table :
         {"tblProcessDef", "tblActivities", "tblTransitions", "tblSwitches", "tblProcessParams",
          "tblActivityPropertyBag", "tblActivityParamBag"}) {
      text += std::to_string(Db().Count(table)) + " ";
    }
    return text + Db().Scalar(
                      "SELECT GROUP_CONCAT(LastAllocatedKey ORDER BY EntityTypeCode) "
                      "FROM tblKeyGen");
  }

  struct Case {
    std::string what;
    std::function<void()> call;
    int32_t error;
  };

  void ExpectEachFailsAndChangesNothing(const std::vector<Case>& cases) {
    for (const Case& c : cases) {
      const std::string before = Snapshot();
      EXPECT_EQ(ErrorOf(c.call), c.error) << c.what;
      EXPECT_EQ(Snapshot(), before) << c.what;
    }
  }
};

TEST_F(DefinitionInput, BadValuesFailBeforeAnyStatementAndUseUpNoKey) {
  const int32_t definition = AddDefinition(Unique("input"));
  const int32_t activity = AddActivity(definition, "input");
  const std::string injected = "1); DELETE FROM tblProcessDef; --";
  auto with = [](FieldArray fields, std::size_t pos, const orvmysql::Variant& value) {
    fields[pos] = value;
    return fields;
  };
  auto shorter = [](FieldArray fields) {
    fields.pop_back();
    return fields;
  };
  const int32_t mismatch = orvmysql::kErrTypeMismatch;
  const int32_t subscript = orvmysql::kErrSubscript;
  ExpectEachFailsAndChangesNothing({
      {"definition Duration", [&] { definitions_->Add(with(DefinitionFields("x"), 11, injected)); },
       mismatch},
      {"definition Update State",
       [&] { definitions_->Update(definition, with(DefinitionFields("x"), 18, "2 OR 1=1")); },
       mismatch},
      {"property Min", [&] { properties_->Add(with(PropertyFields(activity, "p"), 7, "1,5")); },
       mismatch},
      {"transition to node",
       [&] { transitions_->Add(with(TransitionFields(definition, 1, 1, 2, 1, "t"), 2, injected)); },
       mismatch},
      {"activity key of Delete", [&] { activities_->Delete(definition, "0 OR 1=1"); }, mismatch},
      {"short definition", [&] { definitions_->Add(shorter(DefinitionFields("x"))); }, subscript},
      {"short activity update",
       [&] { activities_->Update(definition, "i", shorter(ActivityFields(definition, "n", "i"))); },
       subscript},
      {"short process parameter",
       [&] { process_params_->Add(shorter(ProcessParamFields(definition, "p"))); }, subscript},
      {"definition without a name",
       [&] { definitions_->Add(with(DefinitionFields("x"), 0, orvmysql::Null)); },
       orvmysql::kErrInvalidUseOfNull},
  });
}

TEST_F(DefinitionInput, NumbersGivenAsTextAreWrittenAsNumbers) {
  const int32_t activity = AddActivity(AddDefinition(Unique("numbers")), "numbers");
  FieldArray fields = PropertyFields(activity, "range");
  fields[6] = " 3 ";
  fields[7] = "-2.5";
  fields[8] = "1e3";
  const int32_t id = properties_->Add(fields);
  ExpectOneRow(properties_->GetPropertyByID(id),
               {{"Attributes", "3"}, {"Min", "-2.5"}, {"Max", "1000"}});
}

TEST_F(DefinitionInput, BrokenLoadTailsFailWithTheProviderLocation) {
  const std::string tail = "WHERE no_such_column = 1";
  // One provider written out by hand and one run from its keyed table.
  const std::vector<std::pair<std::string, std::function<void()>>> loads = {
      {"COrvDefinitionsDP:IOrvDefinitionsDP_Load Function (", [&] { definitions_->Load(tail); }},
      {"CActivityParamBagDP:IParameterValueDP_Load Function (", [&] { parameters_->Load(tail); }},
  };
  for (const auto& [location, load] : loads) {
    try {
      load();
      ADD_FAILURE() << location << " accepted a broken tail";
    } catch (const orvmysql::Error& e) {
      EXPECT_EQ(e.Number(), orvmysql::kErrDatabase) << location;
      EXPECT_NE(e.Description().find(tail), std::string::npos) << e.Description();
      // The trail ends in this provider's location and the line number.
      const auto at = e.Source().rfind(" => \r\n" + location);
      ASSERT_NE(at, std::string::npos) << e.Source();
      EXPECT_EQ(e.Source().back(), ')') << e.Source();
    }
  }
  // A well-formed tail filters and orders as written.
  AddDefinition(Unique("tail b"));
  AddDefinition(Unique("tail a"));
  const auto rows = Read(definitions_->Load("WHERE ProcDefName LIKE 'tail %' ORDER BY ProcDefName"),
                         {"ProcDefName"});
  ASSERT_EQ(rows.size(), 2u);
  EXPECT_LT(rows[0].at("ProcDefName"), rows[1].at("ProcDefName"));
}

}  // namespace
}  // namespace orvtest
