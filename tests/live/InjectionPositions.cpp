// The registry of the injection replay's positions, the shared rows they
// refer to, and the groups of the providers built so far. A provider built
// later registers its group from a file of its own (see InjectionPositions.h).

#include "live/InjectionPositions.h"

#include <algorithm>
#include <utility>

#include "live/MessagingFixture.h"
#include "live/RuntimeFixture.h"
#include "orvmysql/Definitions.h"
#include "orvmysql/Messaging.h"
#include "orvmysql/Query.h"
#include "orvmysql/Routing.h"
#include "orvmysql/Runtime.h"

namespace orvtest {
namespace {

using orvmysql::FieldArray;
using orvmysql::Variant;

std::vector<InjectionGroup>& Groups() {
  static std::vector<InjectionGroup> groups;
  return groups;
}

// The fixtures' complete field arrays, reached without a fixture.
struct Arrays : MessagingTest, RuntimeTest {
  using MessagingTest::ActivityFields;
  using MessagingTest::Attachment;
  using MessagingTest::DefinitionFields;
  using MessagingTest::MessageFields;
  using MessagingTest::ParameterAddFields;
  using MessagingTest::ProcessParamFields;
  using MessagingTest::PropertyFields;
  using MessagingTest::Recipient;
  using MessagingTest::SwitchFields;
  using MessagingTest::TransitionFields;
  using RuntimeTest::ActivityInstanceFields;
  using RuntimeTest::ProcessFields;
  using RuntimeTest::WorkitemFields;
};

FieldArray Definition(const InjectionTargets&) {
  return Arrays::DefinitionFields("injection");
}
FieldArray Activity(const InjectionTargets& t) {
  return Arrays::ActivityFields(t.definition, "Task", t.activity_identifier);
}
FieldArray Transition(const InjectionTargets& t) {
  return Arrays::TransitionFields(t.definition, t.activity, 1, t.switch_row, 2, "arc");
}
FieldArray Switch(const InjectionTargets& t) {
  return Arrays::SwitchFields(t.definition, 1, "split");
}
FieldArray ProcessParam(const InjectionTargets& t) {
  return Arrays::ProcessParamFields(t.definition, "amount");
}
FieldArray Property(const InjectionTargets& t) {
  return Arrays::PropertyFields(t.activity, "colour");
}
FieldArray Parameter(const InjectionTargets& t) {
  return Arrays::ParameterAddFields(t.activity, "limit");
}
FieldArray Message(const InjectionTargets&) {
  FieldArray fields = Arrays::MessageFields("Order 7");
  fields.push_back(1);  // the recipient's DisplayMask, read by Update
  return fields;
}
FieldArray Recipient(const InjectionTargets&) {
  return Arrays::Recipient("ann", "Ann");
}
FieldArray Attachment(const InjectionTargets& t) {
  return Arrays::Attachment(t.message, 1, "order as text");
}
FieldArray Split(const InjectionTargets&) {
  return {0, "T-1", 0, 1, 67108864, 2};
}
FieldArray Thread(const InjectionTargets&) {
  return {1, 67108864};
}
FieldArray Process(const InjectionTargets& t) {
  return Arrays::ProcessFields("guid-1", t.definition, 0);
}
FieldArray ActivityInstance(const InjectionTargets& t) {
  return Arrays::ActivityInstanceFields(t.process, t.activity, "Review");
}
FieldArray Workitem(const InjectionTargets& t) {
  return Arrays::WorkitemFields(t.process, t.activity_instance, "ann");
}

// A query with one condition on a text attribute: built in code and written
// by the library, or a document written by hand with the text in it as it
// stands (only &, < and > escaped), as a screen might send it.
std::string ModelDocument(const std::string& attribute, orvmysql::ConditionOperatorEnum op,
                          const std::string& text) {
  auto group = std::make_shared<orvmysql::CConditionExpression>(orvmysql::dloAnd);
  group->Conditions()->Add(std::make_shared<orvmysql::CCondition>(attribute, op, Variant(text)));
  orvmysql::CQuery query;
  query.SetCriteria(group);
  return query.ToXML();
}

std::string HandDocument(const std::string& attribute, orvmysql::ConditionOperatorEnum op,
                         const std::string& text) {
  std::string value;
  for (char c : text) {
    value += c == '&' ? "&amp;" : c == '<' ? "&lt;" : c == '>' ? "&gt;" : std::string(1, c);
  }
  return "<query><criteria><conditionexpression logicaloperator=\"dloAnd\"><conditions>"
         "<condition attributename=\"" +
         attribute + "\" operator=\"" +
         (op == orvmysql::dcoEqualto ? "dcoEqualto" : "dcoContains") +
         "\" valuetype=\"dcfvtConstant\">" + value +
         "</condition></conditions></conditionexpression></criteria></query>";
}

void Workitems(const InjectionTargets& t, const std::string& filter) {
  Source<orvmysql::IWorkitemsDP>(t, 10)->Load(filter);
}
void ProcInstances(const InjectionTargets& t, const std::string& filter) {
  Source<orvmysql::IProcInstanceDP>(t, 11)->Load(filter);
}
void ActivityInstances(const InjectionTargets& t, const std::string& filter) {
  Source<orvmysql::IActivityInstanceDP>(t, 14)->Load(filter);
}
void Messages(const InjectionTargets& t, const std::string& filter) {
  Source<orvmysql::IMessageDP>(t, 18)->Load(filter);
}
void Recipients(const InjectionTargets& t, const std::string& filter) {
  Source<orvmysql::IMessageDP>(t, 18)->LoadReceipent(filter);
}

// Definitions (4), activities (7), transitions (5), switches (6), process
// parameters (24), property bags (23), parameter bags (20).
void DefinitionPositions(std::vector<InjectionPosition>& all) {
  using namespace orvmysql;
  const Positions definition_texts{0, 1, 5, 6, 7, 8, 9, 10, 22, 23};
  AddsAndUpdates<IOrvDefinitionsDP>(all, 4, "IOrvDefinitionsDP", &Definition, definition_texts,
                                    &InjectionTargets::definition);
  Argument<IOrvDefinitionsDP>(all, 4, "IOrvDefinitionsDP::WorkflowDefinitionExist name",
                              [](auto& p, const auto& t, const auto& text) {
                                p.WorkflowDefinitionExist(text, t.definition);
                              });
  Adds<IActivitiesDP>(all, 7, "IActivitiesDP", &Activity, {0, 1, 11, 12, 13, 15});
  InArray<IActivitiesDP>(all, 7, "IActivitiesDP::Update", &Activity, {0, 1, 11, 12, 13, 15},
                         [](IActivitiesDP& p, const InjectionTargets& t, const FieldArray& f) {
                           p.Update(t.definition, t.activity_identifier, f);
                         });
  Argument<IActivitiesDP>(
      all, 7, "IActivitiesDP::Update identifier",
      [](auto& p, const auto& t, const auto& text) { p.Update(t.definition, text, Activity(t)); });
  Argument<IActivitiesDP>(all, 7, "IActivitiesDP::ActivityExist name",
                          [](auto& p, const auto& t, const auto& text) {
                            p.ActivityExist(text, t.definition, t.activity);
                          });
  AddsAndUpdates<ITransitionsDP>(all, 5, "ITransitionsDP", &Transition, {4, 6},
                                 &InjectionTargets::transition);
  AddsAndUpdates<ISwitchesDP>(all, 6, "ISwitchesDP", &Switch, {1, 3},
                              &InjectionTargets::switch_row);
  const Positions parameter_texts{1, 2, 4, 10, 11, 12, 13};
  AddsAndUpdates<IProcessParamsDP>(all, 24, "IProcessParamsDP", &ProcessParam, parameter_texts,
                                   &InjectionTargets::process_param);
  Argument<IProcessParamsDP>(
      all, 24, "IProcessParamsDP::ParameterExist name",
      [](auto& p, const auto& t, const auto& text) { p.ParameterExist(text, t.definition); });
  const Positions property_texts{1, 2, 3, 5, 9, 10, 11, 12, 13};
  AddsAndUpdates<IPropertyValueDP>(all, 23, "IPropertyValueDP", &Property, property_texts,
                                   &InjectionTargets::property);
  Adds<IParameterValueDP>(all, 20, "IParameterValueDP", &Parameter, {1, 2, 3, 9, 10, 11, 12, 13});
  Updates<IParameterValueDP>(all, 20, "IParameterValueDP", &Parameter, {1, 2, 8, 9, 10, 11, 12},
                             &InjectionTargets::parameter);
}

// Splits (15) and threads (17) of parallel routing; a thread's key is the
// caller's text (Add deletes the thread first, so that it never exists).
void RoutingPositions(std::vector<InjectionPosition>& all) {
  using namespace orvmysql;
  AddsAndUpdates<ISplitInstanceDP>(all, 15, "ISplitInstanceDP", &Split, {1},
                                   &InjectionTargets::split);
  Argument<IThreadInstanceDP>(all, 17, "IThreadInstanceDP::Add thread id",
                              [](auto& p, const auto& t, const auto& text) {
                                p.Delete(text);
                                p.Add(text, Thread(t));
                              });
  Argument<IThreadInstanceDP>(
      all, 17, "IThreadInstanceDP::Update thread id",
      [](auto& p, const auto& t, const auto& text) { p.Update(text, Thread(t)); });
  Argument<IThreadInstanceDP>(all, 17, "IThreadInstanceDP::GetByID thread id",
                              [](auto& p, const auto&, const auto& text) { p.GetByID(text); });
  Argument<IThreadInstanceDP>(
      all, 17, "IThreadInstanceDP::GetCurrentState thread id",
      [](auto& p, const auto&, const auto& text) { p.GetCurrentState(text); });
  Argument<IThreadInstanceDP>(
      all, 17, "IThreadInstanceDP::ChangeState thread id",
      [](auto& p, const auto&, const auto& text) { p.ChangeState(text, 1, true); });
}

// Messages with their recipients (18) and attachments (19), and their list
// filters.
void MessagingPositions(std::vector<InjectionPosition>& all) {
  using namespace orvmysql;
  const Positions message_texts{0, 1, 2, 3, 4, 5, 7};
  Adds<IMessageDP>(all, 18, "IMessageDP", &Message, message_texts);
  InArray<IMessageDP>(all, 18, "IMessageDP::Update", &Message, message_texts,
                      [](IMessageDP& p, const InjectionTargets& t, const FieldArray& f) {
                        p.Update(std::to_string(t.message), f);
                      });
  InArray<IMessageDP>(all, 18, "IMessageDP::AddReceipent", &Recipient, {0, 1, 2, 3},
                      [](IMessageDP& p, const InjectionTargets& t, const FieldArray& f) {
                        p.AddReceipent(t.message, f);
                      });
  Argument<IMessageDP>(
      all, 18, "IMessageDP::DeleteReceipent name",
      [](auto& p, const auto& t, const auto& text) { p.DeleteReceipent(t.message, text); });
  // The token is read back from the row and written into the copy's
  // statements. Update makes the message outgoing and new again each time.
  Argument<IMessageDP>(all, 18, "IMessageDP::SendMessage stored token",
                       [](auto& p, const auto& t, const auto& text) {
                         FieldArray fields = Message(t);
                         fields[7] = text;
                         p.Update(std::to_string(t.outgoing), fields);
                         p.SendMessage(t.outgoing);
                       });
  Adds<IAttachmentDP>(all, 19, "IAttachmentDP", &Attachment, {1, 2, 3});
  InArray<IAttachmentDP>(all, 19, "IAttachmentDP::Update", &Attachment, {1, 2, 3},
                         [](IAttachmentDP& p, const InjectionTargets& t, const FieldArray& f) {
                           p.Update(0, t.attachment, f);
                         });
  Filter(all, "IMessageDP::Load", &Messages, "Subject");
  Filter(all, "IMessageDP::Load", &Messages, "Message");
  Filter(all, "IMessageDP::Load", &Messages, "RecepientName");
  Filter(all, "IMessageDP::LoadReceipent", &Recipients, "RecepientName");
}

// Process instances (11), activity instances (14) and work items (10), and
// their list filters, on a cut and an uncut text attribute each.
void RuntimePositions(std::vector<InjectionPosition>& all) {
  using namespace orvmysql;
  const Positions process_texts{0, 3, 8, 10, 11, 15};
  AddsAndUpdates<IProcInstanceDP>(all, 11, "IProcInstanceDP", &Process, process_texts,
                                  &InjectionTargets::process);
  const Positions task_texts{3, 8, 9, 10, 12, 13, 14, 17, 18, 24};
  AddsAndUpdates<IActivityInstanceDP>(all, 14, "IActivityInstanceDP", &ActivityInstance, task_texts,
                                      &InjectionTargets::activity_instance);
  Argument<IActivityInstanceDP>(all, 14, "IActivityInstanceDP::ChangeAIState note",
                                [](auto& p, const auto& t, const auto& text) {
                                  p.ChangeAIState(t.activity_instance, 0, 67108864, false, text);
                                });
  const Positions workitem_texts{4, 5, 6, 7, 8};
  AddsAndUpdates<IWorkitemsDP>(all, 10, "IWorkitemsDP", &Workitem, workitem_texts,
                               &InjectionTargets::workitem);
  Filter(all, "IWorkitemsDP::Load", &Workitems, "Subject");
  Filter(all, "IWorkitemsDP::Load", &Workitems, "Note");
  Filter(all, "IProcInstanceDP::Load", &ProcInstances, "ProcInstanceName");
  Filter(all, "IProcInstanceDP::Load", &ProcInstances, "Note");
  Filter(all, "IActivityInstanceDP::Load", &ActivityInstances, "DisplayName");
  Filter(all, "IActivityInstanceDP::Load", &ActivityInstances, "ActivityNote");
}

const bool kRegistered = RegisterInjectionGroup({"definitions", &DefinitionPositions}) &&
                         RegisterInjectionGroup({"messaging", &MessagingPositions}) &&
                         RegisterInjectionGroup({"routing", &RoutingPositions}) &&
                         RegisterInjectionGroup({"runtime", &RuntimePositions});

int32_t NewestKey(const std::shared_ptr<orvmysql::IListIterator>& rows, const std::string& column) {
  int32_t key = -1;
  while (rows->GetNext()) key = std::max(key, rows->CurrentItem()->GetValue(column).ToLong());
  if (key < 0) throw std::runtime_error("no row for the injection targets");
  return key;
}

}  // namespace

bool RegisterInjectionGroup(InjectionGroup group) {
  Groups().push_back(std::move(group));
  std::sort(Groups().begin(), Groups().end(),
            [](const auto& a, const auto& b) { return a.name < b.name; });
  return true;
}

const std::vector<InjectionPosition>& InjectionPositions() {
  static const std::vector<InjectionPosition> positions = [] {
    std::vector<InjectionPosition> all;
    for (const InjectionGroup& group : Groups()) group.add(all);
    return all;
  }();
  return positions;
}

void Filter(std::vector<InjectionPosition>& all, const std::string& name, List list,
            const std::string& attribute) {
  for (auto op : {orvmysql::dcoEqualto, orvmysql::dcoContains}) {
    for (auto document : {&ModelDocument, &HandDocument}) {
      all.push_back({name + " filter " + attribute + (op == orvmysql::dcoEqualto ? " = " : " ~ ") +
                         (document == &ModelDocument ? "(query model)" : "(document)"),
                     [=](const InjectionTargets& t, const std::string& text) {
                       list(t, document(attribute, op, text));
                     },
                     document == &HandDocument});
    }
  }
}

InjectionTargets PrepareInjectionTargets(std::shared_ptr<orvmysql::CMYSqlDP> handler) {
  using namespace orvmysql;
  InjectionTargets t;
  t.handler = std::move(handler);
  Source<IOrvDefinitionsDP>(t, 4)->Add(Definition(t));
  t.definition = NewestKey(
      Source<IOrvDefinitionsDP>(t, 4)->Load("ORDER BY ProcessDefID DESC LIMIT 1"), "ProcessDefID");
  Source<IActivitiesDP>(t, 7)->Add(Activity(t));
  t.activity =
      NewestKey(Source<IActivitiesDP>(t, 7)->GetActivitiesForProcess(t.definition), "ActivityID");
  t.switch_row = Source<ISwitchesDP>(t, 6)->Add(Switch(t));
  t.transition = Source<ITransitionsDP>(t, 5)->Add(Transition(t));
  t.process_param = Source<IProcessParamsDP>(t, 24)->Add(ProcessParam(t));
  t.property = Source<IPropertyValueDP>(t, 23)->Add(Property(t));
  t.parameter = Source<IParameterValueDP>(t, 20)->Add(Parameter(t)).ToLong();
  t.split = Source<ISplitInstanceDP>(t, 15)->Add(Split(t));
  t.message = Source<IMessageDP>(t, 18)->Add(Message(t));
  t.outgoing = Source<IMessageDP>(t, 18)->Add(Message(t));
  Source<IMessageDP>(t, 18)->AddReceipent(t.outgoing, Recipient(t));
  t.attachment = Source<IAttachmentDP>(t, 19)->Add(Attachment(t));
  const auto newest = [&](const std::string& key, const std::string& table) {
    return std::stoi(
        t.handler->Connection()->ExecuteScalar("SELECT MAX(" + key + ") FROM " + table, "0"));
  };
  Source<IProcInstanceDP>(t, 11)->Add(Process(t));
  t.process = newest("ProcInstanceID", "tblProcessInstance");
  Source<IActivityInstanceDP>(t, 14)->Add(ActivityInstance(t));
  t.activity_instance = newest("ActivityInstanceID", "tblActivityInstance");
  Source<IWorkitemsDP>(t, 10)->Add(Workitem(t));
  t.workitem = newest("WorkitemID", "tblWorkitems");
  for (const InjectionGroup& group : Groups()) {
    if (group.prepare != nullptr) group.prepare(t);
  }
  return t;
}

}  // namespace orvtest
