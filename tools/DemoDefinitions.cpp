// Demo section: a small purchase-order process stored through the definition
// providers, read back as a person would describe it, published, and deleted
// with everything that hangs on it.

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "orvmysql/Definitions.h"
#include "orvmysql/orvmysql.h"
#include "tools/Demo.h"

namespace orvdemo {

namespace {

using orvmysql::CMYSqlDP;
using orvmysql::Date;
using orvmysql::FieldArray;
using orvmysql::IListIterator;
using orvmysql::Variant;

// Codes of this demo's engine: node types of the graph and data types.
constexpr int32_t kActivityNode = 1;
constexpr int32_t kStartSwitch = 2;
constexpr int32_t kTextType = 1;
constexpr int32_t kNumberType = 2;

struct Providers {
  explicit Providers(CMYSqlDP& handler)
      : definitions(Source<orvmysql::IOrvDefinitionsDP>(handler, 4)),
        transitions(Source<orvmysql::ITransitionsDP>(handler, 5)),
        switches(Source<orvmysql::ISwitchesDP>(handler, 6)),
        activities(Source<orvmysql::IActivitiesDP>(handler, 7)),
        parameters(Source<orvmysql::IParameterValueDP>(handler, 20)),
        properties(Source<orvmysql::IPropertyValueDP>(handler, 23)),
        process_params(Source<orvmysql::IProcessParamsDP>(handler, 24)) {}

  std::shared_ptr<orvmysql::IOrvDefinitionsDP> definitions;
  std::shared_ptr<orvmysql::ITransitionsDP> transitions;
  std::shared_ptr<orvmysql::ISwitchesDP> switches;
  std::shared_ptr<orvmysql::IActivitiesDP> activities;
  std::shared_ptr<orvmysql::IParameterValueDP> parameters;
  std::shared_ptr<orvmysql::IPropertyValueDP> properties;
  std::shared_ptr<orvmysql::IProcessParamsDP> process_params;
};

// Reads every row of a list into column texts ("NULL" for a NULL).
std::vector<std::map<std::string, std::string>> Rows(const std::shared_ptr<IListIterator>& list,
                                                     const std::vector<std::string>& columns) {
  std::vector<std::map<std::string, std::string>> rows;
  while (list->GetNext()) {
    auto item = list->CurrentItem();
    auto& row = rows.emplace_back();
    for (const auto& c : columns) {
      const Variant v = item->GetValue(c);
      row[c] = v.IsNull() ? "NULL" : v.ToText();
    }
  }
  return rows;
}

struct ActivityPlan {
  std::string identifier, name, description;
  std::vector<std::pair<std::string, std::string>> properties;  // name, value
  std::vector<std::pair<std::string, int32_t>> parameters;      // name, data type
};

FieldArray DefinitionFields(const std::string& name, int32_t state) {
  return {name,      "Approval of purchase orders above the free limit",
          1,         Date::FromParts(2024, 5, 2, 9, 30, 0),
          Variant(), "Ann Author",
          "",        "u-100",
          "user",    "",
          "",        3,
          2,         1,
          true,      0,
          1,         0,
          state,     5,
          2,         0,
          "",        ""};
}

FieldArray ActivityFields(int32_t definition, const ActivityPlan& plan) {
  return {plan.name, plan.description,
          1,         0,
          1,         1,
          2,         3,
          2,         definition,
          1,         plan.name + " needed",
          "",        plan.identifier,
          0,         "{DEMO-HANDLER}"};
}

FieldArray PropertyFields(int32_t activity, const std::string& name, const std::string& value) {
  return {activity, name, name, "", kTextType, value, 0, 0, 0, "", "", "", "", "", 1};
}

FieldArray ParameterFields(int32_t activity, const std::string& name, int32_t type) {
  return {activity, name, "", "", type, 0,  0, type == kNumberType ? 5000 : 0,
          1,        "",   "", "", "",   "", 1};
}

FieldArray ProcessParamFields(int32_t definition, const std::string& name, int32_t type,
                              const std::string& display) {
  return {definition, name, display, type, "", 0, 1, 0, type == kNumberType ? 5000 : 0,
          1,          "",   "",      "",   ""};
}

int32_t Store(Providers& p, const std::string& name, std::ostream& out) {
  const std::vector<ActivityPlan> plans = {
      {"submit",
       "Submit request",
       "The requester describes what to buy",
       {{"Performer", "requester"}, {"Form", "po-request"}},
       {{"Amount", kNumberType}, {"Supplier", kTextType}}},
      {"approve",
       "Approve",
       "A manager approves or rejects the request",
       {{"Performer", "manager"}, {"DueDays", "2"}},
       {{"Approved", kTextType}}},
      {"order",
       "Place order",
       "Purchasing places the order with the supplier",
       {{"Performer", "purchasing"}},
       {{"OrderNumber", kTextType}}},
  };

  p.definitions->Add(DefinitionFields(name, 0));
  // Add reports success only; the new key is read back by name.
  const auto found =
      Rows(p.definitions->Load("WHERE ProcDefName = '" + name + "'"), {"ProcessDefID"});
  const int32_t definition = std::stoi(found.at(0).at("ProcessDefID"));
  out << "Stored definition " << definition << " \"" << name << "\"\n";

  p.process_params->Add(ProcessParamFields(definition, "Amount", kNumberType, "Order amount"));
  p.process_params->Add(ProcessParamFields(definition, "Requester", kTextType, ""));

  std::map<std::string, int32_t> ids;  // activity identifier to key
  for (const auto& plan : plans) {
    p.activities->Add(ActivityFields(definition, plan));
  }
  for (const auto& row : Rows(p.activities->GetActivitiesForProcess(definition),
                              {"ActivityID", "ActivityProcDefID"})) {
    ids[row.at("ActivityProcDefID")] = std::stoi(row.at("ActivityID"));
  }
  for (const auto& plan : plans) {
    const int32_t activity = ids.at(plan.identifier);
    for (const auto& [prop, value] : plan.properties) {
      p.properties->Add(PropertyFields(activity, prop, value));
    }
    for (const auto& [param, type] : plan.parameters) {
      p.parameters->Add(ParameterFields(activity, param, type));
    }
  }

  const int32_t start = p.switches->Add({kStartSwitch, "Start", definition, "start"});
  const auto arc = [&](int32_t from, int32_t from_type, const std::string& to,
                       const std::string& condition, const std::string& identifier) {
    p.transitions->Add(
        {from, from_type, ids.at(to), kActivityNode, condition, definition, identifier});
  };
  arc(start, kStartSwitch, "submit", "", "t-start");
  arc(ids.at("submit"), kActivityNode, "approve", "Amount > 500", "t-approve");
  arc(ids.at("approve"), kActivityNode, "order", "Approved = 'yes'", "t-order");
  arc(ids.at("submit"), kActivityNode, "order", "Amount <= 500", "t-direct");
  out << "  with 2 process parameters, " << plans.size()
      << " activities with their bags, a start switch and 4 transitions\n";
  return definition;
}

void Describe(Providers& p, int32_t definition, std::ostream& out) {
  const auto def = Rows(p.definitions->GetProcessDefByID(definition),
                        {"ProcDefName", "ProcdefDescription", "MajorVersion", "MinorVersion",
                         "CreatorName", "CreatedDate", "ProcModifiedByUserName", "State"})
                       .at(0);
  out << "\n\"" << def.at("ProcDefName") << "\", version " << def.at("MajorVersion") << "."
      << def.at("MinorVersion") << ", state " << def.at("State") << "\n"
      << "  " << def.at("ProcdefDescription") << "\n"
      << "  created by " << def.at("CreatorName") << " on " << def.at("CreatedDate")
      << (def.at("ProcModifiedByUserName") == "NULL"
              ? "; not modified since"
              : "; last modified by " + def.at("ProcModifiedByUserName"))
      << "\n";

  out << "  Process parameters:\n";
  for (const auto& row : Rows(p.process_params->GetParameterForProcess(definition),
                              {"ParameterName", "DisplayName", "DataType", "Max"})) {
    out << "    " << row.at("ParameterName") << " (shown as \"" << row.at("DisplayName")
        << "\", data type " << row.at("DataType");
    if (row.at("DataType") == std::to_string(kNumberType)) out << ", at most " << row.at("Max");
    out << ")\n";
  }

  std::map<std::string, std::string> names;  // node "type:id" to a readable name
  out << "  Activities:\n";
  for (const auto& a : Rows(p.activities->GetActivitiesForProcess(definition),
                            {"ActivityID", "ActivityName", "Description", "Subject"})) {
    const int32_t id = std::stoi(a.at("ActivityID"));
    names[std::to_string(kActivityNode) + ":" + a.at("ActivityID")] = a.at("ActivityName");
    out << "    " << a.at("ActivityName") << ": " << a.at("Description") << " (subject \""
        << a.at("Subject") << "\")\n      properties:";
    for (const auto& prop :
         Rows(p.properties->GetPropertiesForEntity(id), {"PropertyName", "Value"})) {
      out << " " << prop.at("PropertyName") << "=" << prop.at("Value");
    }
    out << "\n      parameters:";
    for (const auto& param :
         Rows(p.parameters->GetParameterForEntity(id), {"ParameterName", "DataType"})) {
      out << " " << param.at("ParameterName") << " (type " << param.at("DataType") << ")";
    }
    out << "\n";
  }

  out << "  Graph:\n";
  for (const auto& s :
       Rows(p.switches->GetForProcess(definition), {"SwitchID", "SwitchType", "DisplayName"})) {
    names[s.at("SwitchType") + ":" + s.at("SwitchID")] = "switch \"" + s.at("DisplayName") + "\"";
    if (s.at("SwitchType") == std::to_string(kStartSwitch)) {
      out << "    starts at switch \"" << s.at("DisplayName") << "\"\n";
    }
  }
  for (const auto& t :
       Rows(p.transitions->GetForProcess(definition),
            {"FKFromNodeID", "FromNodeType", "FKToNodeID", "ToNodeType", "TransitionCondition"})) {
    out << "    " << names[t.at("FromNodeType") + ":" + t.at("FKFromNodeID")] << " -> "
        << names[t.at("ToNodeType") + ":" + t.at("FKToNodeID")];
    if (t.at("TransitionCondition") != "NULL") out << "  when " << t.at("TransitionCondition");
    out << "\n";
  }
}

}  // namespace

int32_t StorePurchaseOrder(CMYSqlDP& handler, const std::string& name, std::ostream& out) {
  Providers p(handler);
  return Store(p, name, out);
}

void DemoDefinitions(CMYSqlDP& handler, std::ostream& out) {
  out << "\n== Process definitions\n";
  Providers p(handler);
  const std::string name = "Purchase order approval";
  const int32_t definition = Store(p, name, out);
  Describe(p, definition, out);

  out << "\nName checks: another definition may not be called \"" << name
      << "\": " << (p.definitions->WorkflowDefinitionExist(name, 0) ? "taken" : "free")
      << "; the definition itself may keep it: "
      << (p.definitions->WorkflowDefinitionExist(name, definition) ? "taken" : "free")
      << "; \"Purchase order%\" is read literally: "
      << (p.definitions->WorkflowDefinitionExist("Purchase order%", 0) ? "taken" : "free") << "\n";

  out << "Published: " << (p.definitions->IsWorkflowPublished(definition) ? "yes" : "no");
  p.definitions->Update(definition, DefinitionFields(name, 2));
  out << "; after Update with state 2: "
      << (p.definitions->IsWorkflowPublished(definition) ? "yes" : "no") << "\n";

  p.definitions->Delete(definition);
  out << "Deleted definition " << definition << ": "
      << p.definitions->GetProcessDefByID(definition)->Count() << " definition rows, "
      << p.activities->GetActivitiesForProcess(definition)->Count() << " activities, "
      << p.switches->GetForProcess(definition)->Count() << " switches, "
      << p.transitions->GetForProcess(definition)->Count() << " transitions, "
      << p.process_params->GetParameterForProcess(definition)->Count() << " process parameters and "
      << p.properties->Load("WHERE FKActivityID NOT IN (SELECT ActivityID FROM tblActivities)")
             ->Count()
      << " orphaned properties left\n";
}

}  // namespace orvdemo
