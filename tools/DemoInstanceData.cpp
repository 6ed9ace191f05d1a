// Demo section: the data of a running purchase order. The case gets its
// parameter values (amount and requester), which are read back beside the
// declarations of its definition; ann's approval task records its parameters
// and its activity instance its properties, each read beside the activity's
// bags; and the case-relevant data of the instance is listed with the
// activity each row belongs to.

#include <clocale>
#include <map>
#include <memory>
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
constexpr int32_t kOpen = 0x4000000;
constexpr int32_t kProcessLevel = 0;  // case-relevant rows of the process itself
constexpr int32_t kTaskLevel = 1;     // ... of an activity instance

// The running order: its definition, the process instance, the approval
// activity and its activity instance, and the task index of ann's work item.
struct Order {
  int32_t definition = 0, process = 0, approve = 0, approval = 0, task = 0;
};

std::string Text(const Variant& v) {
  return v.IsNull() ? "(no value)" : v.ToText();
}

// Stores the definition of the order (process parameters, the approval
// activity with its bags) and starts the case: the process instance, the
// approval's activity instance and ann's work item are written as the
// runtime providers would write them.
Order StartOrder(CMYSqlDP& handler, std::ostream& out) {
  auto definitions = Source<IOrvDefinitionsDP>(handler, kDsDefinitions);
  auto activities = Source<IActivitiesDP>(handler, kDsActivities);
  auto params = Source<IProcessParamsDP>(handler, kDsProcessParams);
  auto bag = Source<IParameterValueDP>(handler, kDsActivityParamBag);
  auto properties = Source<IPropertyValueDP>(handler, kDsActivityPropertyBag);
  Order order;

  const std::string name = "Purchase order (instance data)";
  definitions->Add({name,      "Approval of purchase orders",
                    1,         Date::Now(),
                    Variant(), "Ann",
                    "",        "u-100",
                    "user",    "",
                    "",        3,
                    2,         1,
                    true,      0,
                    1,         0,
                    2,         5,
                    2,         0,
                    "",        ""});
  auto found = definitions->Load("WHERE ProcDefName = '" + name + "'");
  found->GetNext();
  order.definition = found->CurrentItem()->GetValue("ProcessDefID").ToLong();
  params->Add({order.definition, "Amount", "Order amount", kNumberType, "", 0, 1, 0, 5000, 1, "",
               "", "", ""});
  params->Add({order.definition, "Requester", "", kTextType, "", 0, 1, 0, 0, 1, "", "", "", ""});
  params->Add({order.definition, "CostCentre", "Cost centre", kTextType, "CC-100", 0, 1, 0, 0, 1,
               "", "", "", ""});
  activities->Add({"Approve", "A manager approves the request", 1, 0, 1, 1, 2, 3, 2,
                   order.definition, 1, "Approve PO", "", "approve", 0, "{DEMO-HANDLER}"});
  auto list = activities->GetActivitiesForProcess(order.definition);
  list->GetNext();
  order.approve = list->CurrentItem()->GetValue("ActivityID").ToLong();
  for (const std::string p : {"Approved", "Comment"}) {
    bag->Add({order.approve, p, "", "", kTextType, 0, 0, 0, 1, "", "", "", "", "", 1});
  }
  properties->Add({order.approve, "Performer", "Performer", "", kTextType, "manager", 0, 0, 0, "",
                   "", "", "", "", 1});
  properties->Add({order.approve, "DueDays", "Due in days", "", kNumberType, "2", 0, 0, 0, "", "",
                   "", "", "", 1});

  IConnection& db = *handler.Connection();
  handler.StartSession();
  order.process = std::stoi(GetNextID(db, -kDsProcInstance));
  order.approval = std::stoi(GetNextID(db, -kDsActivityInstance));
  const std::string item = GetNextID(db, -kDsWorkitems);
  const std::string p = std::to_string(order.process), a = std::to_string(order.approval);
  db.ExecuteNonQuery(
      "INSERT INTO tblProcessInstance (ProcInstanceID,ProcInstanceName,FKProcDefID,State,Guid) "
      "VALUES (" +
      p + ",'PO-1042: 12 office chairs'," + std::to_string(order.definition) + "," +
      std::to_string(kOpen) + ",'{PO-1042}')");
  db.ExecuteNonQuery(
      "INSERT INTO tblActivityInstance (ActivityInstanceID,FKActivityID,FKProcInstanceID,"
      "DisplayName,State) VALUES (" +
      a + "," + std::to_string(order.approve) + "," + p + ",'Approve'," + std::to_string(kOpen) +
      ")");
  db.ExecuteNonQuery(
      "INSERT INTO tblWorkitems (WorkitemID,ResourceID,ResourceType,ResourceName,Subject,State,"
      "FKActivityInstanceID,FKProcInstanceID,TaskIndex) VALUES (" +
      item + ",'ann','user','Ann','Approve PO-1042'," + std::to_string(kOpen) + "," + a + "," + p +
      "," + std::to_string(order.task) + ")");
  handler.EndSession();
  out << "Case \"PO-1042: 12 office chairs\" is process instance " << p << " of \"" << name
      << "\"; ann's approval is activity instance " << a << ", task " << order.task
      << " (written directly: this section does not need the runtime providers)\n";
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
  {
    // The requester types the amount the way his German desktop writes it.
    GermanNumbers german;
    const std::string amount = german.Name().empty() ? "1068.50" : "1068,50";
    values->Add({order.process, "Amount", amount, kNumberType, 0, 0, 5000, 1, "", "", ""});
    out << "\nThe case's values, given as \"" << amount << "\" and \"bob\""
        << (german.Name().empty() ? " (no German locale on this machine)"
                                  : " by a program running with LC_NUMERIC " + german.Name())
        << ",\n";
  }
  values->Add({order.process, "Requester", "bob", kTextType, 0, 0, 0, 1, "", "", ""});
  out << "read back beside the declarations (the cost centre has no value yet):\n";
  ShowProcessValues(*values, order, out);

  try {
    values->Add({order.process, "Amount", "12,5", kNumberType, 0, 0, 5000, 1, "", "", ""});
  } catch (const Error& e) {
    out << "Under the C locale \"12,5\" is no number: error " << e.Number() << " ("
        << e.Description() << "); nothing was written\n";
  }
  out << "The definition's declarations without any case: "
      << values->LoadProcessInstanceParams(order.definition, -1)->Count()
      << " rows; with this case: "
      << values->LoadProcessInstanceParams(order.definition, order.process)->Count() << " rows\n";
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
  out << "\nCase-relevant data of the case (only rows of activity instances are read, with the "
         "activity they belong to):\n";
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
  const Order order = StartOrder(handler, out);
  DemoProcessValues(handler, order, out);
  DemoTask(handler, order, out);
  DemoCaseData(handler, order, out);
}

}  // namespace orvdemo
