// Name clashes of definitions, activities and process parameters: names are
// matched literally (LIKE wildcards in them mean nothing), apostrophes and
// backslashes are safe, a row never clashes with itself, and case follows the
// collation.

#include <string>

#include "live/DefinitionsFixture.h"

namespace orvtest {
namespace {

using orvmysql::FieldArray;

class DefinitionNames : public DefinitionsTest {};

TEST_F(DefinitionNames, DefinitionNamesMatchLiterallyAndNeverThemselves) {
  const std::string suffix = Unique("");
  AddDefinition("50AXoff [x]" + suffix);
  // The stored name would match this text as an unescaped LIKE pattern.
  const std::string pattern = "50%_off [x]" + suffix;
  EXPECT_FALSE(definitions_->WorkflowDefinitionExist(pattern, 0));
  const int32_t literal = AddDefinition(pattern);
  EXPECT_TRUE(definitions_->WorkflowDefinitionExist(pattern, 0));
  EXPECT_FALSE(definitions_->WorkflowDefinitionExist(pattern, literal));

  const std::string quoted = Unique("O'Brien's \\flow");
  const int32_t id = AddDefinition(quoted);
  EXPECT_TRUE(definitions_->WorkflowDefinitionExist(quoted, 0));
  EXPECT_FALSE(definitions_->WorkflowDefinitionExist(quoted, id));
  std::string shouted = quoted;
  for (char& c : shouted) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  EXPECT_TRUE(definitions_->WorkflowDefinitionExist(shouted, id + 1));
  EXPECT_FALSE(definitions_->WorkflowDefinitionExist("O'Brien", 0));
}

TEST_F(DefinitionNames, ActivityNamesClashOnlyWithinTheirDefinition) {
  const int32_t definition = AddDefinition(Unique("activities"));
  const int32_t other = AddDefinition(Unique("activities"));
  const int32_t underscore = AddActivity(definition, "a_b");  // named "Task a_b"
  const int32_t plain = AddActivity(definition, "axb");       // named "Task axb"

  EXPECT_TRUE(activities_->ActivityExist("Task a_b", definition, plain));
  EXPECT_FALSE(activities_->ActivityExist("Task a_b", definition, underscore));
  EXPECT_FALSE(activities_->ActivityExist("Task a_b", other, 0));
  // "_" and "%" are no wildcards: nothing else is named like that.
  EXPECT_FALSE(activities_->ActivityExist("Task a%", definition, 0));
  EXPECT_FALSE(activities_->ActivityExist("Task _xb", definition, 0));
  EXPECT_TRUE(activities_->ActivityExist("task AXB", definition, underscore));

  FieldArray quoted = ActivityFields(definition, "Sign 'n' \\ send", "q");
  activities_->Add(quoted);
  EXPECT_TRUE(activities_->ActivityExist("Sign 'n' \\ send", definition, 0));
}

TEST_F(DefinitionNames, ProcessParameterNamesAreEscapedForLike) {
  const int32_t definition = AddDefinition(Unique("params"));
  const int32_t other = AddDefinition(Unique("params"));
  process_params_->Add(ProcessParamFields(definition, "axb"));
  process_params_->Add(ProcessParamFields(definition, "it's"));

  EXPECT_FALSE(process_params_->ParameterExist("a_b", definition));
  EXPECT_TRUE(process_params_->ParameterExist("AXB", definition));
  EXPECT_TRUE(process_params_->ParameterExist("it's", definition));
  EXPECT_FALSE(process_params_->ParameterExist("axb", other));
}

TEST_F(DefinitionNames, OnlyState2IsPublished) {
  FieldArray fields = DefinitionFields(Unique("published"));
  fields[18] = 2;
  const int32_t published = AddDefinition(fields);
  const int32_t draft = AddDefinition(Unique("draft"));  // State 0
  EXPECT_TRUE(definitions_->IsWorkflowPublished(published));
  EXPECT_FALSE(definitions_->IsWorkflowPublished(draft));
  EXPECT_FALSE(definitions_->IsWorkflowPublished(draft + 1000));
}

}  // namespace
}  // namespace orvtest
