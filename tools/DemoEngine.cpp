// Demo section: the engine's operations on the purchase-order case of the
// runtime section. The whole tree is paused, resumed and finally terminated,
// with the state of every row printed as a person reads it; the case is
// routed from the start node along the transitions of its definition; its
// data is copied into the case-relevant data; and its log is cleared, after
// which nothing of the tree is left.

#include <map>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "orvmysql/orvmysql.h"
#include "tools/Demo.h"

namespace orvdemo {

namespace {

using namespace orvmysql;

// Node types of this demo's engine (see the definitions section).
constexpr int32_t kActivityNode = 1;
constexpr int32_t kSwitchNode = 2;
// Case-relevant data of the approval task is recorded under this entity type.
constexpr int32_t kTaskEntity = 1;

class Operations {
 public:
  Operations(CMYSqlDP& handler, std::ostream& out)
      : out_(out),
        handler_(handler),
        engine_(Source<IOrvEngineDP>(handler, kDsEngine)),
        processes_(Source<IProcInstanceDP>(handler, kDsProcInstance)),
        tasks_(Source<IActivityInstanceDP>(handler, kDsActivityInstance)),
        items_(Source<IWorkitemsDP>(handler, kDsWorkitems)) {}

  void Run() {
    auto found = processes_->Load(Filter("", {Is("GUID", "{PO-1042}")}));
    if (!found->GetNext()) throw std::runtime_error("the purchase-order case is missing");
    root_ = found->CurrentItem()->GetValue("ProcInstanceID").ToLong();
    definition_ = found->CurrentItem()->GetValue("FKProcDefID").ToLong();
    tree_ = Sql("SELECT TreeID FROM tblProcessInstance WHERE ProcInstanceID = " +
                std::to_string(root_));
    ReadTree();
    out_ << "The case \"" << name_[root_] << "\" is a tree of " << ids_.size()
         << " process instances (" << IdList() << "):\n";
    Show();

    out_ << "\nPauseProcess(" << root_ << "): " << engine_->PauseProcess(root_) << "\n";
    Show();
    out_ << "PauseProcess again: " << engine_->PauseProcess(root_)
         << " (nothing open and unpaused is left)\n";
    out_ << "\nResumeProcess(" << ids_.back()
         << "), any member names the tree: " << engine_->ResumeProcess(ids_.back()) << "\n";
    Show();
    out_ << "(bob's check, paused on its own earlier, is resumed with the rest: the flag does "
            "not say who set it)\n";

    Route();
    CopyCaseData();

    out_ << "\nClearLog(\"" << IdList()
         << "\") while the case runs: " << engine_->ClearLog(IdList())
         << " (refused: only closed instances are cleared)\n";
    out_ << "TerminateProcess(" << root_ << ", false): " << engine_->TerminateProcess(root_, false)
         << "\n";
    Show();
    out_ << "ClearLog(\"" << IdList() << "\"): " << engine_->ClearLog(IdList()) << "\n";
    out_ << "Left of the tree: " << processes_->Load(Filter("", {Is("TreeID", tree_)}))->Count()
         << " process instances, " << Rows("tblActivityInstance") << " activity instances, "
         << Rows("tblWorkitems") << " work items, " << Rows("tblProcInstanceData")
         << " process values, " << Rows("tblPIReleventData") << " case-relevant rows\n";
  }

 private:
  std::string Sql(const std::string& select) {
    return handler_.Connection()->ExecuteScalar(select, "");
  }
  // Rows of a table that belong to the tree's process instances.
  std::string Rows(const std::string& table) {
    return Sql("SELECT COUNT(*) FROM " + table + " WHERE FKProcInstanceID IN (" + IdList() + ")");
  }
  std::string IdList() const {
    std::string list;
    for (int32_t id : ids_) list += (list.empty() ? "" : ",") + std::to_string(id);
    return list;
  }

  void ReadTree() {
    auto rows = processes_->Load(Filter("", {Is("TreeID", tree_)}, "ProcInstanceID"));
    while (rows->GetNext()) {
      const int32_t id = rows->CurrentItem()->GetValue("ProcInstanceID").ToLong();
      ids_.push_back(id);
      name_[id] = rows->CurrentItem()->GetValue("ProcInstanceName").ToText();
    }
  }

  // Every row of the tree with its state in words.
  void Show() {
    for (int32_t process : ids_) {
      auto p = processes_->GetProcessByID(process);
      p->GetNext();
      out_ << "  " << (process == root_ ? "case " : "  sub-process ") << "\"" << name_[process]
           << "\": " << StateWords(p->CurrentItem()->GetValue("State").ToLong()) << "\n";
      auto tasks =
          tasks_->Load(Filter("", {Is("FKProcInstanceID", process)}, "ActivityInstanceID"));
      while (tasks->GetNext()) {
        auto task = tasks->CurrentItem();
        out_ << "      activity \"" << task->GetValue("ActivityName").ToText()
             << "\": " << StateWords(task->GetValue("State").ToLong()) << "\n";
        auto items = items_->GetWorkItemsForATask(task->GetValue("ActivityInstanceID").ToLong());
        while (items->GetNext()) {
          auto item = items->CurrentItem();
          out_ << "        " << item->GetValue("ResourceID").ToText()
               << "'s work item: " << StateWords(item->GetValue("State").ToLong()) << "\n";
        }
      }
    }
  }

  // From the start switch along every transition, each node once.
  void Route() {
    std::map<int32_t, std::string> activities;
    auto list =
        Source<IActivitiesDP>(handler_, kDsActivities)->GetActivitiesForProcess(definition_);
    while (list->GetNext()) {
      activities[list->CurrentItem()->GetValue("ActivityID").ToLong()] =
          list->CurrentItem()->GetValue("ActivityName").ToText();
    }
    const auto start = engine_->GetStartNodeID(definition_);
    out_ << "\nRouting the definition from its start node (switch " << start->NodeID() << ", type "
         << start->NodeType() << "):\n";
    const auto name = [&](int32_t type, int32_t id) {
      return type == kActivityNode ? "\"" + activities[id] + "\"" : "the start switch";
    };
    std::vector<std::pair<int32_t, int32_t>> next = {{start->NodeType(), start->NodeID()}};
    std::set<std::pair<int32_t, int32_t>> seen(next.begin(), next.end());
    while (!next.empty()) {
      const auto [type, id] = next.front();
      next.erase(next.begin());
      auto arcs = engine_->GetTransitions(definition_, type, id);
      while (arcs->GetNext()) {
        auto arc = arcs->CurrentItem();
        const std::pair to{arc->GetValue("ToNodeType").ToLong(),
                           arc->GetValue("FKToNodeID").ToLong()};
        const std::string when = arc->GetValue("TransitionCondition").IsNull()
                                     ? ""
                                     : arc->GetValue("TransitionCondition").ToText();
        out_ << "  " << name(type, id) << " -> " << name(to.first, to.second)
             << (when.empty() ? "" : "  when " + when) << "\n";
        if (seen.insert(to).second) next.push_back(to);
      }
    }
    out_ << "  (a switch of type " << kSwitchNode << " starts the case; activities have type "
         << kActivityNode << ")\n";
  }

  void CopyCaseData() {
    const std::string root = std::to_string(root_);
    // The instance-data section stored the case's values and the approval's
    // parameters; copy both into the case-relevant data.
    auto approval =
        tasks_->Load(Filter("", {Is("FKProcInstanceID", root_), Is("ActivityName", "Approve")}));
    approval->GetNext();
    const int32_t task = approval->CurrentItem()->GetValue("ActivityInstanceID").ToLong();

    out_ << "\nInsertCaseRelatedData(case " << root_ << ", process " << root_
         << ", entity type 0, task 0, ann): "
         << engine_->InsertCaseRelatedData(root_, root_, 0, 0, "ann", "user", "Ann");
    out_ << "\nInsertCaseRelatedData(case " << root_ << ", activity instance " << task
         << ", entity type " << kTaskEntity << ", every task): "
         << engine_->InsertCaseRelatedData(root_, task, kTaskEntity, -1, "", "", "")
         << "\n  (false is what it always returns; success is the absence of an error)\n"
         << "Case-relevant data of the case:\n";
    auto rows = handler_.Connection()->Execute(
        "SELECT ParameterName, COALESCE(NULLIF(TextValue, ''), NumericValue) AS Value, EntityType, "
        "IFNULL(ResourceName, '') AS ResourceName "
        "FROM tblPIReleventData WHERE FKProcInstanceID = " +
        root + " ORDER BY PIReleventDataID");
    while (rows->GetNext()) {
      auto row = rows->CurrentItem();
      out_ << "  " << row->GetValue("ParameterName").ToText() << " = "
           << row->GetValue("Value").ToText() << " ("
           << (row->GetValue("EntityType").ToLong() == 0 ? "of the case" : "of the approval")
           << ", for " << row->GetValue("ResourceName").ToText() << ")\n";
    }
  }

  std::ostream& out_;
  CMYSqlDP& handler_;
  std::shared_ptr<IOrvEngineDP> engine_;
  std::shared_ptr<IProcInstanceDP> processes_;
  std::shared_ptr<IActivityInstanceDP> tasks_;
  std::shared_ptr<IWorkitemsDP> items_;
  int32_t root_ = 0, definition_ = 0;
  std::string tree_;
  std::vector<int32_t> ids_;
  std::map<int32_t, std::string> name_;
};

}  // namespace

void DemoEngine(CMYSqlDP& handler, std::ostream& out) {
  out << "\n== Engine operations on the purchase-order case\n" << std::boolalpha;
  Operations(handler, out).Run();
  out << std::noboolalpha;
}

}  // namespace orvdemo
