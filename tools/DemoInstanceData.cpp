// Demo section: the data of the purchase order that the runtime section left
// running. The case gets its parameter values (amount and requester), read
// back beside the declarations of its definition; ann's approval task records
// its parameters and its activity instance its properties, each read beside
// the activity's bags; and the case-relevant data of the instance is listed
// with the activity each row belongs to.

#include <clocale>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "orvmysql/orvmysql.h"
#include "tools/Demo.h"

namespace orvdemo {

namespace {

using namespace orvmysql;

// Codes of this demo's engine.
constexpr int32_t kTextType = 1;
constexpr int32_t kNumberType = 2;
constexpr int32_t kProcessLevel = 0;  // case-relevant rows of the process itself
constexpr int32_t kTaskLevel = 1;     // ... of an activity instance

// The running order of the runtime section: its definition, the process
// instance, ann's approval (an activity instance) and the task index of her
// work item.
struct Order {
  int32_t definition = 0, process = 0, approval = 0, task = 0;
};

std::string Text(const Variant& v) {
  return v.IsNull() ? "(no value)" : v.ToText();
}

// The first row of a filtered list; the filter document has one condition
// per attribute, all of which must hold.
std::shared_ptr<IListItem> Find(const std::shared_ptr<IListIterator>& rows) {
  if (!rows->GetNext()) throw std::runtime_error("the running order is not there");
  return rows->CurrentItem();
}

std::string Filter(const std::map<std::string, Variant>& equal) {
  CQuery query;
  auto all = std::make_shared<CConditionExpression>(dloAnd);
  for (const auto& [attribute, value] : equal) {
    all->Conditions()->Add(std::make_shared<CCondition>(attribute, dcoEqualto, value));
  }
  query.SetCriteria(all);
  return query.ToXML();
}

// Finds the case the runtime section left running, as the engine would: the
// process instance by its GUID, ann's open work item in it, and the activity
// instance and task index that work item is for.
Order FindOrder(CMYSqlDP& handler, std::ostream& out) {
  auto processes = Source<IProcInstanceDP>(handler, kDsProcInstance);
  auto items = Source<IWorkitemsDP>(handler, kDsWorkitems);
  Order order;
  auto process = Find(processes->Load(Filter({{"GUID", "{PO-1042}"}})));
  order.process = process->GetValue("ProcInstanceID").ToLong();
  order.definition = process->GetValue("FKProcDefID").ToLong();
  auto item =
      Find(items->Load(Filter({{"FKProcInstanceID", order.process}, {"ResourceID", "ann"}})));
  order.approval = item->GetValue("FKActivityInstanceID").ToLong();
  order.task = item->GetValue("TaskIndex").ToLong();
  out << "The case \"" << process->GetValue("ProcInstanceName").ToText() << "\" (process instance "
      << order.process << ") is running; ann's work item \"" << item->GetValue("Subject").ToText()
      << "\" is task " << order.task << " of activity instance " << order.approval << "\n";
  return order;
}

void ShowProcessValues(IProcInstanceParamsDP& values, const Order& order, std::ostream& out) {
  auto rows = values.GetParameterForProcess(order.process);
  while (rows->GetNext()) {
    auto row = rows->CurrentItem();
    const bool number = row->GetValue("DataType").ToLong() == kNumberType;
    out << "  " << row->GetValue("DisplayName").ToText() << " ("
        << row->GetValue("ParameterName").ToText() << ", " << (number ? "number" : "text");
    if (number) out << " up to " << row->GetValue("Max").ToText();
    if (!row->GetValue("DefaultValue").IsNull()) {
      out << ", default " << row->GetValue("DefaultValue").ToText();
    }
    out << "): " << Text(row->GetValue(number ? "NumericValue" : "TextValue")) << "\n";
  }
}

// The program's numeric locale for a while: German when the machine has it.
class GermanNumbers {
 public:
  GermanNumbers() : previous_(std::setlocale(LC_NUMERIC, nullptr)) {
    for (const char* name : {"de_DE.UTF-8", "de_DE.utf8", "de_DE"}) {
      if (std::setlocale(LC_NUMERIC, name) != nullptr) {
        name_ = name;
        return;
      }
    }
  }
  ~GermanNumbers() { std::setlocale(LC_NUMERIC, previous_.c_str()); }
  // The locale's name, or "" when the machine has no German locale.
  const std::string& Name() const { return name_; }

 private:
  std::string previous_, name_;
};

void DemoProcessValues(CMYSqlDP& handler, const Order& order, std::ostream& out) {
  auto values = Source<IProcInstanceParamsDP>(handler, kDsProcInstData);
  out << "\nIts parameters before any value, one row per declaration of the definition:\n";
  ShowProcessValues(*values, order, out);
  {
    // bob types the amount the way his German desktop writes numbers.
    GermanNumbers german;
    const std::string amount = german.Name().empty() ? "1068.50" : "1068,50";
    values->Add({order.process, "Amount", amount, kNumberType, 0, 0, 5000, 1, "", "", ""});
    out << "The case is given the amount \"" << amount << "\""
        << (german.Name().empty() ? " (this machine has no German locale)"
                                  : " by a program running with LC_NUMERIC " + german.Name())
        << " and the requester \"bob\":\n";
  }
  values->Add({order.process, "Requester", "bob", kTextType, 0, 0, 0, 1, "", "", ""});
  ShowProcessValues(*values, order, out);
  try {
    values->Add({order.process, "Amount", "12,5", kNumberType, 0, 0, 5000, 1, "", "", ""});
  } catch (const Error& e) {
    out << "Under the C locale \"12,5\" is no number: error " << e.Number() << " ("
        << e.Description() << "), and nothing is written\n";
  }
}

void DemoTask(CMYSqlDP& handler, const Order& order, std::ostream& out) {
  auto task = Source<ITaskParamsDP>(handler, kDsActivityInstanceData);
  auto properties = Source<ITaskPropertyDP>(handler, kDsAIPropertyData);
  task->Add({order.approval, "Approved", "yes", kTextType, 0, 0, 0, 1, "", "", "", order.task});
  properties->Add({order.approval, "Performer", "ann", kTextType, 0, 0, 0, 0, "", "", ""});

  out << "\nann's task (activity instance " << order.approval << ", task " << order.task
      << ") beside the approval's parameter bag:\n";
  auto rows = task->GetParameterForTask(order.approval, order.task);
  while (rows->GetNext()) {
    auto row = rows->CurrentItem();
    out << "  " << row->GetValue("ParameterName").ToText() << ": "
        << Text(row->GetValue("TextValue")) << "\n";
  }
  out << "Its properties beside the property bag (the bag's value is the default):\n";
  auto props = properties->GetPropertiesForInstance(order.approval);
  while (props->GetNext()) {
    auto row = props->CurrentItem();
    out << "  " << row->GetValue("DisplayName").ToText() << ": " << Text(row->GetValue("Value"))
        << " (default " << Text(row->GetValue("DefaultValue")) << ")\n";
  }
}

void DemoCaseData(CMYSqlDP& handler, const Order& order, std::ostream& out) {
  auto cases = Source<IParameterValueDP>(handler, kDsPIReleventData);
  // What routing records when the case passes the approval: the process's
  // own values (entity type 0) and ann's task values (type 1, with her name).
  cases->Add({order.process, "Amount", "1068.5", kNumberType, 0, 0, 5000, 1, 0, "", "", "",
              order.process, kProcessLevel});
  cases->Add({order.approval, "Approved", "yes", kTextType, 0, 0, 0, 1, order.task, "ann", "user",
              "Ann", order.process, kTaskLevel});
  out << "\nCase-relevant data of the case, with the activity each row belongs to (the "
         "process's own row, entity type 0, is stored but read by no list):\n";
  auto rows = cases->GetParameterForEntity(order.process);
  while (rows->GetNext()) {
    auto row = rows->CurrentItem();
    out << "  " << row->GetValue("ActivityName").ToText() << ", task "
        << row->GetValue("TaskIndex").ToText() << ", by " << row->GetValue("ResourceName").ToText()
        << ": " << row->GetValue("ParameterName").ToText() << " = "
        << Text(row->GetValue("TextValue")) << "\n";
  }
}

}  // namespace

void DemoInstanceData(CMYSqlDP& handler, std::ostream& out) {
  out << "\n== Instance data of a running purchase order\n";
  const Order order = FindOrder(handler, out);
  DemoProcessValues(handler, order, out);
  DemoTask(handler, order, out);
  DemoCaseData(handler, order, out);
}

}  // namespace orvdemo
