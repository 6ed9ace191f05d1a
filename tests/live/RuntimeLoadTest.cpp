// Load of the three runtime providers through query documents: instances by
// their own columns, activity instances by their activity's name, a
// resource's work list, the work-item process view, and broken documents.

#include <string>
#include <vector>

#include "live/RuntimeFixture.h"

namespace orvtest {
namespace {

using orvmysql::CCondition;
using orvmysql::FieldArray;

class RuntimeLoad : public RuntimeTest {
 protected:
  void SetUp() override {
    RuntimeTest::SetUp();
    approve_ = AddActivity(definition_, "approve");
    ann_ = Unique("ann");
    bob_ = Unique("bob");
    order_a_ = AddNamedProcess("Order A", "Ann");
    order_b_ = AddNamedProcess("Order B", bob_);
    review_a_ = AddActivityInstance(order_a_, "Review A");
    approve_b_ = AddActivityInstance(ActivityInstanceFields(order_b_, approve_, "Approve B"));
    AddItem(order_a_, review_a_, ann_, 4, kOpenWord, "Review A for ann");
    AddItem(order_b_, approve_b_, ann_, 9, kOpenWord, "Approve B for ann");
    AddItem(order_b_, approve_b_, ann_, 7, 134217729, "Closed for ann");
    AddItem(order_a_, review_a_, bob_, 5, kOpenWord, "Review A for bob");
  }

  int32_t AddNamedProcess(const std::string& name, const std::string& creator) {
    FieldArray fields = ProcessFields(Unique("guid"), definition_, 0);
    fields[0] = name;
    fields[11] = creator;
    return AddProcess(fields);
  }

  void AddItem(int32_t process, int32_t task, const std::string& resource, int32_t priority,
               int32_t state, const std::string& subject) {
    FieldArray fields = WorkitemFields(process, task, resource);
    fields[0] = state;
    fields[7] = subject;
    fields[17] = priority;
    workitems_->Add(fields);
  }

  static std::vector<std::string> Column(const std::shared_ptr<orvmysql::IListIterator>& rows,
                                         const std::string& name) {
    std::vector<std::string> values;
    for (const auto& row : Read(rows, {name})) values.push_back(row.at(name));
    return values;
  }

  static constexpr int32_t kOpenWord = 67108864;
  std::string ann_, bob_;  // resources (and a creator) of this test only
  int32_t approve_ = 0, order_a_ = 0, order_b_ = 0, review_a_ = 0, approve_b_ = 0;
};

TEST_F(RuntimeLoad, InstancesAreSelectedAndSortedByTheirColumns) {
  EXPECT_EQ(Column(processes_->Load(Filter("", {Is("CreatorName", bob_)})), "ProcInstanceName"),
            std::vector<std::string>{"Order B"});
  EXPECT_EQ(Column(processes_->Load(Filter("", {Is("FKProcDefID", definition_)}, "ProcInstanceID",
                                           orvmysql::dsDescending)),
                   "ProcInstanceName"),
            (std::vector<std::string>{"Order B", "Order A"}));

  EXPECT_EQ(Column(activity_instances_->Load(Filter("", {Is("FKProcInstanceID", order_b_)})),
                   "DisplayName"),
            std::vector<std::string>{"Approve B"});
  // ActivityName is the activity's own name, from the definition.
  for (const int32_t process : {order_a_, order_b_}) {
    const auto rows =
        Column(activity_instances_->Load(Filter(
                   "", {Is("ActivityName", "Task approve"), Is("FKProcInstanceID", process)})),
               "ActivityInstanceID");
    EXPECT_EQ(rows, process == order_b_ ? std::vector<std::string>{std::to_string(approve_b_)}
                                        : std::vector<std::string>{});
  }
}

TEST_F(RuntimeLoad, WorkListOfAResourceAndTheProcessView) {
  auto open_for_ann = [&] {
    return std::vector<std::shared_ptr<CCondition>>{
        Is("ResourceID", ann_),
        std::make_shared<CCondition>("State", orvmysql::dcoContains, kOpenWord)};
  };
  EXPECT_EQ(Column(workitems_->Load(
                       Filter("tblWorkitems", open_for_ann(), "Priority", orvmysql::dsDescending)),
                   "Subject"),
            (std::vector<std::string>{"Approve B for ann", "Review A for ann"}));

  auto conditions = open_for_ann();
  conditions.push_back(Is("ProcInstanceName", "Order B"));
  ExpectOneRow(workitems_->Load(Filter("vWorkitemsProcess", conditions)),
               {{"Subject", "Approve B for ann"},
                {"ProcInstanceName", "Order B"},
                {"CreatorName", bob_},
                {"ActivityName", "Approve B"},
                {"FKActivityID", std::to_string(approve_)},
                {"Note", "NULL"}});
  EXPECT_EQ(Column(workitems_->Load(Filter("vWorkitemsProcess", open_for_ann(), "DisplayName",
                                           orvmysql::dsDescending)),
                   "ActivityName"),
            (std::vector<std::string>{"Review A", "Approve B"}));
}

TEST_F(RuntimeLoad, BrokenDocumentsFailWithTheFilterAndTheLoadInTheTrail) {
  const orvmysql::Error not_xml = Raised([&] { workitems_->Load("<query"); });
  EXPECT_EQ(not_xml.Number(), orvmysql::kErrInvalidCall);
  const auto filter_at = not_xml.Source().find("CWorkitemsDP:ParseFilter Ln ");
  ASSERT_NE(filter_at, std::string::npos) << not_xml.Source();
  EXPECT_NE(not_xml.Source().find("CWorkitemsDP:IWorkitemsDP_Load Function (", filter_at),
            std::string::npos)
      << not_xml.Source();

  const orvmysql::Error unknown =
      Raised([&] { processes_->Load(Filter("", {Is("ResourceID", "ann")})); });
  EXPECT_EQ(unknown.Number(), orvmysql::kObjectErrorBase | orvmysql::kMsgUnknownAttribute);
  EXPECT_NE(unknown.Source().find("CProcInstanceDP:IProcInstanceDP_Load Function ("),
            std::string::npos);
  EXPECT_EQ(ErrorOf([&] { workitems_->Load(Filter("vWorkitems", {})); }),
            orvmysql::kErrInvalidCall);
}

}  // namespace
}  // namespace orvtest
