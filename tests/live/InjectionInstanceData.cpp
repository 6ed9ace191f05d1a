// The injection replay's positions of the instance data: values of process
// instances (22), case-relevant data (21), parameter values (9) and property
// values (8) of activity instances. Load's condition is a trusted tail and is
// not replayed.

#include <string>

#include "live/InjectionPositions.h"
#include "orvmysql/Definitions.h"
#include "orvmysql/InstanceData.h"

namespace orvtest {
namespace {

using orvmysql::FieldArray;

// Data type 1 sends the value (position 2) to TextValue as quoted text.
FieldArray ProcessValue(const InjectionTargets& t) {
  return {t.process, "Amount", "ann", 1, 0, 0, 0, 1, "lookup", "list", "relevance"};
}
FieldArray CaseRow(const InjectionTargets& t) {
  return {t.activity_instance, "Approved", "yes", 1, 0, 0, 0, 1, 0, "ann", "user", "Ann",
          t.process,           1};
}
FieldArray TaskValue(const InjectionTargets& t) {
  return {t.activity_instance, "Approved", "yes", 1, 0, 0, 0, 1, "lookup", "list", "relevance", 0};
}
FieldArray TaskProperty(const InjectionTargets& t) {
  return {t.activity_instance, "Performer", "ann", 1, 0, 0, 0, 0, "lookup", "list", "relevance"};
}

// Update of the group's own row, kept under its name in InjectionTargets::more.
template <class T>
void UpdatesOf(std::vector<InjectionPosition>& all, int32_t code, const std::string& provider,
               Base base, const Positions& positions, const std::string& row) {
  InArray<T>(all, code, provider + "::Update", base, positions,
             [row](T& p, const InjectionTargets& t, const FieldArray& f) {
               // Without prepared rows (a server refused at connect) any key does.
               const auto found = t.more.find(row);
               p.Update(found == t.more.end() ? 1 : found->second, f);
             });
}

void InstanceDataPositions(std::vector<InjectionPosition>& all) {
  using namespace orvmysql;
  const Positions value_texts{1, 2, 8, 9, 10};
  Adds<IProcInstanceParamsDP>(all, 22, "IProcInstanceParamsDP", &ProcessValue, value_texts);
  UpdatesOf<IProcInstanceParamsDP>(all, 22, "IProcInstanceParamsDP", &ProcessValue, value_texts,
                                   "process value");
  Argument<IProcInstanceParamsDP>(
      all, 22, "IProcInstanceParamsDP::ParameterExist name",
      [](auto& p, const auto& t, const auto& text) { p.ParameterExist(text, t.process); });

  const Positions case_texts{1, 2, 9, 10, 11};
  Adds<IParameterValueDP>(all, 21, "IParameterValueDP (case data)", &CaseRow, case_texts);
  UpdatesOf<IParameterValueDP>(all, 21, "IParameterValueDP (case data)", &CaseRow, case_texts,
                               "case row");

  Adds<ITaskParamsDP>(all, 9, "ITaskParamsDP", &TaskValue, value_texts);
  UpdatesOf<ITaskParamsDP>(all, 9, "ITaskParamsDP", &TaskValue, value_texts, "task value");
  Argument<ITaskParamsDP>(all, 9, "ITaskParamsDP::ParameterExist name",
                          [](auto& p, const auto& t, const auto& text) {
                            p.ParameterExist(text, t.activity_instance, 0);
                          });

  Adds<ITaskPropertyDP>(all, 8, "ITaskPropertyDP", &TaskProperty, value_texts);
  UpdatesOf<ITaskPropertyDP>(all, 8, "ITaskPropertyDP", &TaskProperty, value_texts,
                             "task property");
  Argument<ITaskPropertyDP>(
      all, 8, "ITaskPropertyDP::PropertyExist name",
      [](auto& p, const auto& t, const auto& text) { p.PropertyExist(text, t.activity_instance); });
}

void PrepareInstanceData(InjectionTargets& t) {
  using namespace orvmysql;
  const auto newest = [&](const std::string& key, const std::string& table) {
    return std::stoi(
        t.handler->Connection()->ExecuteScalar("SELECT MAX(" + key + ") FROM " + table, "0"));
  };
  Source<IProcInstanceParamsDP>(t, 22)->Add(ProcessValue(t));
  t.more["process value"] = newest("ProcInstanceDataID", "tblProcInstanceData");
  Source<IParameterValueDP>(t, 21)->Add(CaseRow(t));
  t.more["case row"] = newest("PIReleventDataID", "tblPIReleventData");
  t.more["task value"] = Source<ITaskParamsDP>(t, 9)->Add(TaskValue(t));
  t.more["task property"] = Source<ITaskPropertyDP>(t, 8)->Add(TaskProperty(t));
}

const bool kRegistered =
    RegisterInjectionGroup({"instance data", &InstanceDataPositions, &PrepareInstanceData});

}  // namespace
}  // namespace orvtest
