#include "bench/CaseLife.h"

#include <algorithm>
#include <functional>
#include <stdexcept>
#include <utility>

#include "bench/BenchSupport.h"
#include "orvmysql/Definitions.h"
#include "orvmysql/Query.h"

namespace orvbench {

namespace {

using orvmysql::Variant;

constexpr int32_t kOpen = 0x4000000;
constexpr int32_t kStarted = 0x4000004;  // open, and started by someone
constexpr int32_t kClosed = 0x8000000;
constexpr int32_t kCompleted = 1;  // added to a closed word

const char* const kResources[kItemsPerActivity] = {"ann", "bob"};

// The process instance's parameter values: name, value, data type (1 is
// stored as text, 2 and 5 as numbers).
struct Value {
  const char* name;
  const char* value;
  int32_t type;
};
constexpr Value kValues[] = {
    {"Supplier", "Office Chairs Ltd", 1}, {"Quantity", "12", 2}, {"Amount", "1250.50", 5}};

// A query document in which every condition must hold.
std::string Filter(std::vector<std::pair<std::string, Variant>> conditions) {
  orvmysql::CQuery query;
  auto all = std::make_shared<orvmysql::CConditionExpression>(orvmysql::dloAnd);
  for (auto& [attribute, value] : conditions) {
    all->Conditions()->Add(
        std::make_shared<orvmysql::CCondition>(attribute, orvmysql::dcoEqualto, std::move(value)));
  }
  query.SetCriteria(all);
  return query.ToXML();
}

int32_t FirstKey(const std::shared_ptr<orvmysql::IListIterator>& rows, const char* column) {
  if (!rows->GetNext()) throw std::runtime_error(std::string("no row to read ") + column + " from");
  return rows->CurrentItem()->GetValue(column).ToLong();
}

}  // namespace

CaseDefinition StoreCaseDefinition(orvmysql::CMYSqlDP& handler) {
  auto activities = Source<orvmysql::IActivitiesDP>(handler, orvmysql::kDsActivities);
  CaseDefinition definition;
  definition.process = StoreDefinition(handler, "Purchase order (workload)");
  for (int a = 0; a < kCaseActivities; ++a) {
    const std::string id = "step" + std::to_string(a + 1);
    activities->Add({"Step " + std::to_string(a + 1), "", 1, 0, 1, 1, 1, 1, 1, definition.process,
                     1, "", "", id, 0, "{WORKLOAD}"});
  }
  auto rows = activities->GetActivitiesForProcess(definition.process);
  std::vector<int32_t> ids;
  while (rows->GetNext()) ids.push_back(rows->CurrentItem()->GetValue("ActivityID").ToLong());
  if (ids.size() != definition.activities.size()) {
    throw std::runtime_error("the workload definition has " + std::to_string(ids.size()) +
                             " activities");
  }
  std::sort(ids.begin(), ids.end());
  std::copy(ids.begin(), ids.end(), definition.activities.begin());
  return definition;
}

struct CaseLife::Step {
  std::string name;
  std::function<void(CaseLife&, const std::string& guid, CaseKeys&)> run;
};

// The steps in the order the engine takes them.
const std::vector<CaseLife::Step>& CaseLife::Steps() {
  static const std::vector<Step> steps = [] {
    std::vector<Step> list;
    list.push_back({"start the process instance", [](CaseLife& c, const std::string& guid,
                                                     CaseKeys& k) { c.StartProcess(guid, k); }});
    list.push_back({"record its parameter values",
                    [](CaseLife& c, const std::string&, CaseKeys& k) { c.RecordValues(k); }});
    for (int a = 0; a < kCaseActivities; ++a) {
      const std::string which = " (activity " + std::to_string(a + 1) + ")";
      list.push_back({"enter the activity" + which, [a](CaseLife& c, const std::string&,
                                                        CaseKeys& k) { c.EnterActivity(a, k); }});
      list.push_back(
          {"offer its work items" + which,
           [a](CaseLife& c, const std::string&, CaseKeys& k) { c.OfferWorkItems(a, k); }});
      list.push_back(
          {"acknowledge and finish the work items" + which,
           [a](CaseLife& c, const std::string&, CaseKeys& k) { c.FinishWorkItems(a, k); }});
      list.push_back({"finish the activity" + which, [a](CaseLife& c, const std::string&,
                                                         CaseKeys& k) { c.FinishActivity(a, k); }});
    }
    list.push_back({"copy the case data",
                    [](CaseLife& c, const std::string&, CaseKeys& k) { c.CopyCaseData(k); }});
    list.push_back({"end the process and clear its log",
                    [](CaseLife& c, const std::string&, CaseKeys& k) { c.EndProcess(k); }});
    return list;
  }();
  return steps;
}

CaseLife::CaseLife(std::shared_ptr<orvmysql::CMYSqlDP> handler, const CaseDefinition& definition)
    : handler_(std::move(handler)),
      definition_(definition),
      processes_(Source<orvmysql::IProcInstanceDP>(*handler_, orvmysql::kDsProcInstance)),
      values_(Source<orvmysql::IProcInstanceParamsDP>(*handler_, orvmysql::kDsProcInstData)),
      tasks_(Source<orvmysql::IActivityInstanceDP>(*handler_, orvmysql::kDsActivityInstance)),
      items_(Source<orvmysql::IWorkitemsDP>(*handler_, orvmysql::kDsWorkitems)),
      engine_(Source<orvmysql::IOrvEngineDP>(*handler_, orvmysql::kDsEngine)) {}

CaseKeys CaseLife::Run(const std::string& guid) {
  CaseKeys keys;
  for (const Step& step : Steps()) {
    try {
      step.run(*this, guid, keys);
    } catch (const std::exception& e) {
      throw std::runtime_error(step.name + ": " + e.what());
    }
  }
  return keys;
}

void CaseLife::StartProcess(const std::string& guid, CaseKeys& keys) {
  processes_->Add({"PO 1042", definition_.process, Variant(), "u-ann", Variant(), kOpen, 2,
                   Variant(), guid, 0, "user", "Ann", orvmysql::Date::Now(), Variant(), Variant(),
                   "workload"});
  // Add hands back no key: the engine finds the instance by its GUID.
  keys.process = FirstKey(processes_->Load(Filter({{"GUID", guid}})), "ProcInstanceID");
  processes_->ChangeWIState(keys.process, kOpen, kStarted, false);
}

void CaseLife::RecordValues(const CaseKeys& keys) {
  for (const Value& v : kValues) {
    values_->Add({keys.process, v.name, v.value, v.type, 0, 0.0, 0.0, 1, "", "", ""});
  }
}

void CaseLife::EnterActivity(int activity, CaseKeys& keys) {
  const int32_t id = definition_.activities[activity];
  tasks_->Add({kOpen,
               Variant(),
               Variant(),
               "Step " + std::to_string(activity + 1),
               id,
               keys.process,
               1,
               1,
               "",
               "",
               "",
               0,
               "",
               "0",
               "",
               0,
               0,
               "main",
               "step" + std::to_string(activity + 1),
               Variant(),
               orvmysql::Date::Now(),
               Variant(),
               Variant(),
               2,
               ""});
  keys.tasks[activity] =
      FirstKey(tasks_->Load(Filter({{"FKProcInstanceID", keys.process}, {"FKActivityID", id}})),
               "ActivityInstanceID");
  tasks_->ChangeAIState(keys.tasks[activity], kOpen, kStarted, false, "started");
}

void CaseLife::OfferWorkItems(int activity, CaseKeys& keys) {
  const int32_t task = keys.tasks[activity];
  for (const char* resource : kResources) {
    items_->Add({kOpen, orvmysql::Date::Now(), Variant(), Variant(), resource, "user", resource,
                 "Approve PO 1042", "", task, keys.process, 0, Variant(), 1, Variant(), Variant(),
                 Variant(), 3, 0});
  }
  auto rows = items_->GetWorkItemsForATask(task);
  auto& items = keys.items[activity];
  size_t found = 0;
  while (rows->GetNext()) {
    if (found == items.size()) throw std::runtime_error("more work items than were offered");
    items[found++] = rows->CurrentItem()->GetValue("WorkitemID").ToLong();
  }
  if (found != items.size()) throw std::runtime_error("an offered work item is missing");
}

void CaseLife::FinishWorkItems(int activity, const CaseKeys& keys) {
  for (const int32_t item : keys.items[activity]) {
    items_->ChangeWorkitemState(item, kOpen, kStarted, false);  // acknowledged
    // Closing takes two changes: the closed flag, then the outcome added to
    // it, which stamps the finish.
    items_->ChangeWorkitemState(item, kStarted, kClosed, false);
    items_->ChangeWorkitemState(item, kClosed, kCompleted, true);
  }
}

void CaseLife::FinishActivity(int activity, const CaseKeys& keys) {
  const int32_t task = keys.tasks[activity];
  tasks_->ChangeAIState(task, kStarted, kClosed, false, "finished");
  tasks_->ChangeAIState(task, kClosed, kCompleted, true, "completed");
}

void CaseLife::CopyCaseData(const CaseKeys& keys) {
  // The process instance's values become the case's data (entity type 0).
  engine_->InsertCaseRelatedData(keys.process, keys.process, 0, 0, "ann", "user", "Ann");
}

void CaseLife::EndProcess(const CaseKeys& keys) {
  if (!engine_->EndProcess(keys.process, true)) {
    throw std::runtime_error("the process instance was not completed");
  }
}

}  // namespace orvbench
