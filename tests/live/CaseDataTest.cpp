// Case-relevant data: rows of activity instances (entity type 1 and another
// activity type) come back with their activity's name; rows of the process
// instance itself (entity type 0) and rows of no activity instance are
// stored but never read, even when their EntityID happens to be an activity
// instance's key; the two Deletes; empty resources stored as NULL.

#include <string>
#include <vector>

#include "live/InstanceDataFixture.h"

namespace orvtest {
namespace {

using orvmysql::FieldArray;
using orvmysql::Variant;
using Lines = std::vector<std::string>;

class CaseData : public InstanceDataTest {
 protected:
  // A case row of entity entity_id and type entity_type in the process.
  static FieldArray Row(int32_t process_id, int32_t entity_id, int32_t entity_type,
                        const std::string& name, const std::string& value,
                        const std::string& resource = "ann") {
    return {entity_id, name, value,    1,  0,        0,          0,
            1,         0,    resource, "", resource, process_id, entity_type};
  }

  int32_t KeyOfRow(const std::string& name) {
    return std::stoi(Db().Scalar(
        "SELECT PIReleventDataID FROM tblPIReleventData WHERE ParameterName = '" + name + "'"));
  }

  static Lines CaseLines(const std::shared_ptr<orvmysql::IListIterator>& rows) {
    return RowLines(rows, "ParameterName", {"TextValue", "ActivityName", "EntityType"});
  }
};

TEST_F(CaseData, OnlyRowsOfActivityInstancesAreReadWithTheirActivitysName) {
  const int32_t definition = AddDefinition(Unique("Cases"));
  const int32_t review = AddActivity(definition, Unique("review"));
  const int32_t other_activity = AddActivity(definition, Unique("other"));
  // A process instance whose key is also the key of an activity instance of
  // another case: the two come from separate counters, so both are moved to
  // the later of the two before the pair is added.
  const int32_t other_case = StartCase(definition);
  Db().Exec(
      "UPDATE tblKeyGen SET LastAllocatedKey = (SELECT m FROM (SELECT MAX(LastAllocatedKey) AS m "
      "FROM tblKeyGen WHERE EntityTypeCode IN (-11,-14)) AS k) WHERE EntityTypeCode IN (-11,-14)");
  const int32_t process = StartCase(definition);
  const int32_t twin = Enter(other_case, other_activity);
  ASSERT_EQ(process, twin);
  const int32_t step = Enter(process, review);
  const std::string review_name = "Task " + Db().Scalar(
                                                "SELECT ActivityProcDefID FROM "
                                                "tblActivities WHERE ActivityID = " +
                                                std::to_string(review));

  const std::string p = std::to_string(process);
  const Variant added = cases_->Add(Row(process, step, 1, "Approved " + p, "yes"));
  EXPECT_EQ(added, Variant(true));
  cases_->Add(Row(process, step, 3, "Signed " + p, "ann", ""));
  cases_->Add(Row(process, process, 0, "Amount " + p, "100"));
  cases_->Add(Row(process, 999999, 1, "Orphan " + p, "lost"));
  EXPECT_EQ(Db().Count("tblPIReleventData", "FKProcInstanceID = " + p), 4);

  const Lines expected = {"Approved " + p + "=yes|" + review_name + "|1",
                          "Signed " + p + "=ann|" + review_name + "|3"};
  EXPECT_EQ(CaseLines(cases_->GetParameterForEntity(process)), expected);
  EXPECT_EQ(CaseLines(cases_->Load("WHERE tblPIReleventData.FKProcInstanceID = " + p)), expected);
  EXPECT_TRUE(CaseLines(cases_->GetParameterByID(KeyOfRow("Amount " + p))).empty());
  EXPECT_TRUE(CaseLines(cases_->GetParameterByID(KeyOfRow("Orphan " + p))).empty());
  ExpectOneRow(cases_->GetParameterByID(KeyOfRow("Signed " + p)),
               {{"EntityID", std::to_string(step)},
                {"TaskIndex", "0"},
                {"ResourceID", "NULL"},
                {"ResourceType", "NULL"},
                {"ResourceName", "NULL"},
                {"NumericValue", "NULL"}});
}

TEST_F(CaseData, DeleteOneRowOrTheRowsOfEntityTypeOneOfAnActivityInstance) {
  const int32_t definition = AddDefinition(Unique("Cases"));
  const int32_t review = AddActivity(definition, Unique("review"));
  const int32_t process = StartCase(definition);
  const int32_t step = Enter(process, review);
  const int32_t next = Enter(process, review);
  const std::string p = std::to_string(process);
  cases_->Add(Row(process, step, 1, "A " + p, "1"));
  cases_->Add(Row(process, step, 1, "B " + p, "2"));
  cases_->Add(Row(process, step, 3, "C " + p, "3"));
  cases_->Add(Row(process, next, 1, "D " + p, "4"));

  EXPECT_TRUE(cases_->Update(KeyOfRow("D " + p), Row(process, next, 1, "D " + p, "four")));
  EXPECT_TRUE(cases_->Delete(KeyOfRow("A " + p), 0));
  EXPECT_EQ(RowLines(cases_->GetParameterForEntity(process), "ParameterName", {"TextValue"}),
            (Lines{"B " + p + "=2", "C " + p + "=3", "D " + p + "=four"}));
  // The rows of type 1 of the step go; its row of type 3 and the next step's stay.
  EXPECT_TRUE(cases_->Delete(KeyOfRow("D " + p), step));
  EXPECT_EQ(RowLines(cases_->GetParameterForEntity(process), "ParameterName", {"TextValue"}),
            (Lines{"C " + p + "=3", "D " + p + "=four"}));
}

}  // namespace
}  // namespace orvtest
