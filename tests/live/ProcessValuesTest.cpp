// Parameter values of process instances: several instances of one definition
// holding values for the same names, each read beside the declarations; a
// declaration without a value; the value rule as the database stores it,
// under a decimal-comma locale and under C; Update and the two Deletes.

#include <algorithm>
#include <string>
#include <vector>

#include "live/InstanceDataFixture.h"
#include "support/NumericLocale.h"

namespace orvtest {
namespace {

using orvmysql::FieldArray;

constexpr int32_t kText = 1;
constexpr int32_t kNumber = 2;

using Lines = std::vector<std::string>;

class ProcessValues : public InstanceDataTest {
 protected:
  // A definition declaring Amount (number), Requester and Note (texts).
  int32_t OrderDefinition() {
    const int32_t definition = AddDefinition(Unique("Orders"));
    Declare(definition, "Amount", kNumber);
    Declare(definition, "Requester", kText);
    Declare(definition, "Note", kText);
    return definition;
  }
};

TEST_F(ProcessValues, EachInstanceReadsItsOwnValuesBesideEveryDeclaration) {
  const int32_t definition = OrderDefinition();
  const int32_t a = StartCase(definition);
  const int32_t b = StartCase(definition);
  const int32_t c = StartCase(definition);
  // Another definition declares a parameter of the same name.
  const int32_t other_definition = AddDefinition(Unique("Other"));
  Declare(other_definition, "Amount", kNumber);
  const int32_t other = StartCase(other_definition);
  for (const FieldArray& v :
       {Value(a, "Amount", "100", kNumber), Value(a, "Requester", "ann", kText),
        Value(b, "Amount", "250.5", kNumber), Value(b, "Requester", "bob", kText),
        Value(b, "Note", "rush", kText), Value(other, "Amount", "999", kNumber)}) {
    ASSERT_TRUE(values_->Add(v));
  }

  const Lines of_a = {"Amount=NULL|100", "Note=NULL|NULL", "Requester=ann|NULL"};
  const Lines of_b = {"Amount=NULL|250.5", "Note=rush|NULL", "Requester=bob|NULL"};
  const Lines none = {"Amount=NULL|NULL", "Note=NULL|NULL", "Requester=NULL|NULL"};
  EXPECT_EQ(ValueLines(values_->GetParameterForProcess(a)), of_a);
  EXPECT_EQ(ValueLines(values_->GetParameterForProcess(b)), of_b);
  EXPECT_EQ(ValueLines(values_->GetParameterForProcess(c)), none);
  EXPECT_EQ(ValueLines(values_->LoadProcessInstanceParams(definition, b)), of_b);
  EXPECT_EQ(ValueLines(values_->LoadProcessInstanceParams(-1, a)), of_a);
  EXPECT_EQ(ValueLines(values_->LoadProcessInstanceParams(definition, c)), none);
  EXPECT_EQ(ValueLines(values_->LoadProcessInstanceParams(definition, -1)), none);
  EXPECT_TRUE(ValueLines(values_->LoadProcessInstanceParams(other_definition, a)).empty());
  EXPECT_EQ(ValueLines(values_->GetParameterForProcess(other)), Lines{"Amount=NULL|999"});

  // Every row of an instance's read names that instance; a declaration
  // without a value has no value row.
  EXPECT_EQ(RowLines(values_->GetParameterForProcess(a), "ParameterName",
                     {"ProcInstanceID", "DisplayName", "TemplateAttributes", "Attributes"}),
            (Lines{"Amount=" + std::to_string(a) + "|Amount shown|2|6",
                   "Note=" + std::to_string(a) + "|Note shown|2|NULL",
                   "Requester=" + std::to_string(a) + "|Requester shown|2|6"}));
  EXPECT_EQ(RowLines(values_->LoadProcessInstanceParams(definition, -1), "ParameterName",
                     {"ProcInstanceID", "ProcInstanceDataID", "Max"}),
            (Lines{"Amount=NULL|NULL|5000", "Note=NULL|NULL|5000", "Requester=NULL|NULL|5000"}));

  const int32_t amount_of_a = KeyOf("tblProcInstanceData", "ProcInstanceDataID", "FKProcInstanceID",
                                    a, "ParameterName", "Amount");
  ExpectOneRow(values_->GetParameterByID(amount_of_a),
               {{"ProcInstanceID", std::to_string(a)},
                {"ProcInstanceDataID", std::to_string(amount_of_a)},
                {"FKProcDefID", std::to_string(definition)},
                {"NumericValue", "100"},
                {"DataType", "2"}});

  EXPECT_EQ(ValueLines(values_->Load("WHERE tblProcessInstance.FKProcDefID = " +
                                     std::to_string(definition))),
            (Lines{"Amount=NULL|100", "Amount=NULL|250.5", "Note=rush|NULL", "Requester=ann|NULL",
                   "Requester=bob|NULL"}));

  EXPECT_TRUE(values_->ParameterExist("Amount", a));
  EXPECT_FALSE(values_->ParameterExist("Note", a));
  EXPECT_TRUE(values_->ParameterExist("Note", b));
  EXPECT_FALSE(values_->ParameterExist("Amoun_", a));
}

TEST_F(ProcessValues, ValueRuleAsStored) {
  const int32_t definition = AddDefinition(Unique("Values"));
  const int32_t instance = StartCase(definition);
  const std::vector<std::pair<FieldArray, std::string>> cases = {
      {Value(instance, "Blank", "    ", kNumber), "Blank=NULL|NULL"},
      {Value(instance, "BlankText", "  ", kText), "BlankText=NULL|NULL"},
      {Value(instance, "Text", " 12,5 ", kText), "Text=12,5|NULL"},
      {Value(instance, "Quoted", "it's C:\\dir", 6), "Quoted=it's C:\\dir|NULL"},
      {Value(instance, "Long", std::string(300, 'x'), 7),
       "Long=" + std::string(300, 'x') + "|NULL"},
      {Value(instance, "Point", " 12.5 ", kNumber), "Point=NULL|12.5"},
      {Value(instance, "Whole", "42", 3), "Whole=NULL|42"},
      {Value(instance, "Double", 0.125, 4), "Double=NULL|0.125"},
  };
  Lines expected;
  for (const auto& [fields, line] : cases) {
    Declare(definition, fields[1].ToText(), fields[3].ToLong());
    ASSERT_TRUE(values_->Add(fields));
    expected.push_back(line);
  }
  {
    NumericLocale comma(NumericLocale::Comma());
    Declare(definition, "Comma", kNumber);
    ASSERT_TRUE(values_->Add(Value(instance, "Comma", "12,5", kNumber)));
    expected.push_back("Comma=NULL|12.5");
  }
  std::sort(expected.begin(), expected.end());
  EXPECT_EQ(ValueLines(values_->GetParameterForProcess(instance)), expected);
  // Min and Max were written with a point under the comma locale too.
  EXPECT_EQ(Db().Scalar("SELECT CONCAT(`Min`, ' ', `Max`) FROM tblProcInstanceData WHERE "
                        "ParameterName = 'Comma' AND FKProcInstanceID = " +
                        std::to_string(instance)),
            "0.5 99.75");

  // Under C a decimal comma is no number: nothing is written, no key is used.
  NumericLocale c("C");
  const auto keys = [] {
    return Db().Scalar("SELECT LastAllocatedKey FROM tblKeyGen WHERE EntityTypeCode = -22");
  };
  const std::string before = keys();
  const long long rows = Db().Count("tblProcInstanceData");
  EXPECT_EQ(ErrorOf([&] { values_->Add(Value(instance, "Comma", "12,5", kNumber)); }),
            orvmysql::kErrTypeMismatch);
  EXPECT_EQ(ErrorOf([&] { values_->Add(Value(instance, "Word", "twelve", kNumber)); }),
            orvmysql::kErrTypeMismatch);
  EXPECT_EQ(keys(), before);
  EXPECT_EQ(Db().Count("tblProcInstanceData"), rows);
}

TEST_F(ProcessValues, UpdateAndDeleteOneRowOrAllOfAnInstance) {
  const int32_t definition = OrderDefinition();
  const int32_t a = StartCase(definition);
  const int32_t b = StartCase(definition);
  for (const std::string name : {"Amount", "Requester", "Note"}) {
    values_->Add(Value(a, name, "1", kNumber));
    values_->Add(Value(b, name, "2", kNumber));
  }
  const int32_t note_of_a = KeyOf("tblProcInstanceData", "ProcInstanceDataID", "FKProcInstanceID",
                                  a, "ParameterName", "Note");
  EXPECT_TRUE(values_->Update(note_of_a, Value(a, "Note", "call first", kText)));
  EXPECT_TRUE(values_->Update(999999, Value(a, "Note", "nobody", kText)));
  EXPECT_EQ(ValueLines(values_->GetParameterForProcess(a)),
            (Lines{"Amount=NULL|1", "Note=call first|NULL", "Requester=NULL|1"}));

  EXPECT_TRUE(values_->Delete(note_of_a, 0));
  EXPECT_EQ(ValueLines(values_->GetParameterForProcess(a)),
            (Lines{"Amount=NULL|1", "Note=NULL|NULL", "Requester=NULL|1"}));
  // With an instance the data id is ignored: every value of a goes, b keeps its own.
  const int32_t amount_of_b = KeyOf("tblProcInstanceData", "ProcInstanceDataID", "FKProcInstanceID",
                                    b, "ParameterName", "Amount");
  EXPECT_TRUE(values_->Delete(amount_of_b, a));
  EXPECT_EQ(Db().Count("tblProcInstanceData", "FKProcInstanceID = " + std::to_string(a)), 0);
  EXPECT_EQ(ValueLines(values_->GetParameterForProcess(b)),
            (Lines{"Amount=NULL|2", "Note=NULL|2", "Requester=NULL|2"}));
}

}  // namespace
}  // namespace orvtest
