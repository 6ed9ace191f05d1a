// Demo section: one case of the purchase-order process. A root instance and
// a sub-process in one tree, activity instances, work items for ann and bob,
// states moved with the stamps they leave, ann's work list through a filter
// document, and the whole tree printed as a person would read it. The demo
// runs on a clock of its own so that the stamps tell the story's times.

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "orvmysql/orvmysql.h"
#include "tools/Demo.h"

namespace orvdemo {

namespace {

using namespace orvmysql;

// The state word of this demo's engine.
constexpr int32_t kOpen = 0x4000000;
constexpr int32_t kStarted = 0x4000004;  // open, and started by someone
constexpr int32_t kClosed = 0x8000000;
constexpr int32_t kCompleted = 1;  // added to a closed word
constexpr int32_t kPaused = 0x20000000;

}  // namespace

std::string StateWords(int32_t state) {
  std::string words;
  if (state & kClosed) {
    words = "closed";
    if ((state & 7) == 1) words += "/completed";
    if ((state & 7) == 2) words += "/terminated";
    if ((state & 7) == 4) words += "/skipped";
  } else if (state & kOpen) {
    words = (state & 4) ? "open, started" : "open";
  } else {
    words = "new";
  }
  if (state & kPaused) words += ", paused";
  return words;
}

namespace {

// A working morning; each step of the story sets the time it happens.
Date& StoryTime() {
  static Date now;
  return now;
}
void At(int hour, int minute) {
  StoryTime() = Date::FromParts(2024, 5, 17, hour, minute, 0);
}
struct StoryClock {
  StoryClock() {
    At(8, 55);
    SetClockForTesting([] { return StoryTime(); });
  }
  ~StoryClock() { SetClockForTesting(nullptr); }
};

}  // namespace

std::string Filter(const std::string& entity, std::vector<std::shared_ptr<CCondition>> conditions,
                   const std::string& sort_key, SortOrderEnum order) {
  CQuery query;
  query.SetEntityName(entity);
  auto all = std::make_shared<CConditionExpression>(dloAnd);
  for (auto& c : conditions) all->Conditions()->Add(c);
  query.SetCriteria(all);
  if (!sort_key.empty()) query.OrderBy()->Add(std::make_shared<COrderExpression>(sort_key, order));
  return query.ToXML();
}

std::shared_ptr<CCondition> Is(const std::string& attribute, Variant value) {
  return std::make_shared<CCondition>(attribute, dcoEqualto, std::move(value));
}

namespace {

// "hh:mm" of a stamp.
std::string Time(const Variant& v) {
  const DateParts t = v.ToDate().Parts();
  return (t.hour < 10 ? "0" : "") + std::to_string(t.hour) + (t.minute < 10 ? ":0" : ":") +
         std::to_string(t.minute);
}

class Case {
 public:
  Case(CMYSqlDP& handler, std::ostream& out)
      : out_(out),
        handler_(handler),
        processes_(Source<IProcInstanceDP>(handler, kDsProcInstance)),
        tasks_(Source<IActivityInstanceDP>(handler, kDsActivityInstance)),
        items_(Source<IWorkitemsDP>(handler, kDsWorkitems)) {}

  void Run() {
    const int32_t definition = StorePurchaseOrder(handler_, "Purchase order approval", out_);
    auto list = Source<IActivitiesDP>(handler_, kDsActivities)->GetActivitiesForProcess(definition);
    while (list->GetNext()) {
      auto row = list->CurrentItem();
      activities_[row->GetValue("ActivityProcDefID").ToText()] = {
          row->GetValue("ActivityID").ToLong(), row->GetValue("ActivityName").ToText()};
    }

    At(9, 0);
    const int32_t root = StartProcess("PO-1042: 12 office chairs", "{PO-1042}", definition, 0);
    At(9, 1);
    Move(
        "the case starts", [&] { processes_->ChangeWIState(root, kOpen, kStarted, false); },
        [&] { return ProcessStamps(root); });

    At(9, 2);
    const int32_t submit = Enter(root, "submit", "bob describes what to buy");
    At(9, 3);
    const int32_t bobs_request = Offer(root, submit, "bob", "Bob", "Describe the chairs", 2);
    At(9, 5);
    Move(
        "bob opens his work item",
        [&] { items_->ChangeWorkitemState(bobs_request, kOpen, kStarted, false); },
        [&] { return ItemStamps(bobs_request); });
    At(9, 20);
    // Closing takes two changes: the closed flag, then the outcome added to
    // it. The second, made while the word is closed, stamps the finish.
    Move(
        "bob closes it",
        [&] { items_->ChangeWorkitemState(bobs_request, kStarted, kClosed, false); },
        [&] { return ItemStamps(bobs_request); });
    Move(
        "... as completed",
        [&] { items_->ChangeWorkitemState(bobs_request, kClosed, kCompleted, true); },
        [&] { return ItemStamps(bobs_request); });
    Move(
        "the activity closes",
        [&] { tasks_->ChangeAIState(submit, kStarted, kClosed, false, "submitted"); },
        [&] { return TaskStamps(submit); });
    Move(
        "... as completed",
        [&] { tasks_->ChangeAIState(submit, kClosed, kCompleted, true, "submitted by bob"); },
        [&] { return TaskStamps(submit); });

    At(9, 21);
    const int32_t approve = Enter(root, "approve", "ann approves as manager");
    const int32_t anns_approval = Offer(root, approve, "ann", "Ann", "Approve PO-1042", 3);

    At(9, 25);
    const int32_t check =
        StartProcess("PO-1042: supplier check", "{PO-1042/supplier}", definition, root);
    At(9, 26);
    const int32_t supplier = Enter(check, "approve", "is the supplier on the list?");
    Offer(check, supplier, "ann", "Ann", "Approve the supplier", 1);
    const int32_t bobs_check = Offer(check, supplier, "bob", "Bob", "Approve the supplier", 1);
    At(9, 30);
    Move(
        "ann opens the approval",
        [&] { items_->ChangeWorkitemState(anns_approval, kOpen, kStarted, false); },
        [&] { return ItemStamps(anns_approval); });
    At(9, 40);
    Move(
        "bob is away: his check is paused",
        [&] { items_->ChangeWorkitemState(bobs_check, kOpen, kPaused, true); },
        [&] { return ItemStamps(bobs_check); });

    WorkList("ann");
    out_ << "\nThe case as one tree:\n";
    Print(root, 1);
  }

 private:
  struct Activity {
    int32_t id;
    std::string name;
  };

  int32_t StartProcess(const std::string& name, const std::string& guid, int32_t definition,
                       int32_t parent) {
    processes_->Add({name, definition, Variant(), "u-bob", Variant(), kOpen, 2,
                     Date::FromParts(2024, 5, 24), guid, parent, "user", "Bob", Date::Now(),
                     Variant(), Variant(), ""});
    // Add hands back no key: the instance is found by the GUID given to it.
    auto found = processes_->Load(Filter("", {Is("GUID", guid)}));
    found->GetNext();
    const int32_t id = found->CurrentItem()->GetValue("ProcInstanceID").ToLong();
    const std::string tree = handler_.Connection()->ExecuteScalar(
        "SELECT TreeID FROM tblProcessInstance WHERE ProcInstanceID = " + std::to_string(id), "");
    out_ << "\n[" << Time(Date::Now()) << "] " << (parent > 0 ? "sub-process" : "case") << " \""
         << name << "\" is instance " << id << " in tree " << tree << "\n";
    return id;
  }

  int32_t Enter(int32_t process, const std::string& activity, const std::string& note) {
    const Activity& a = activities_.at(activity);
    tasks_->Add({kOpen,    Variant(), Variant(),   a.name,    a.id,      process, 1, 1, "",
                 "",       "",        0,           "",        "0",       "",      0, 0, "main",
                 activity, Variant(), Date::Now(), Variant(), Variant(), 2,       ""});
    auto found =
        tasks_->Load(Filter("", {Is("FKProcInstanceID", process), Is("FKActivityID", a.id)},
                            "ActivityInstanceID", dsDescending));
    found->GetNext();
    const int32_t id = found->CurrentItem()->GetValue("ActivityInstanceID").ToLong();
    out_ << "[" << Time(Date::Now()) << "] activity \"" << a.name
         << "\" entered (activity instance " << id << ")\n";
    Move(
        "it starts", [&] { tasks_->ChangeAIState(id, kOpen, kStarted, false, note); },
        [&] { return TaskStamps(id); });
    return id;
  }

  int32_t Offer(int32_t process, int32_t task, const std::string& resource, const std::string& name,
                const std::string& subject, int32_t priority) {
    items_->Add({kOpen, Date::Now(), Variant(), Variant(), resource, "user", name, subject, "",
                 task, process, 0, Variant(), 1, Variant(), Variant(), Variant(), priority, 0});
    auto found =
        items_->Load(Filter("", {Is("FKActivityInstanceID", task), Is("ResourceID", resource)}));
    found->GetNext();
    const int32_t id = found->CurrentItem()->GetValue("WorkitemID").ToLong();
    out_ << "[" << Time(Date::Now()) << "] work item " << id << " \"" << subject << "\" offered to "
         << resource << "\n";
    return id;
  }

  template <class Change, class Stamps>
  void Move(const std::string& what, Change change, Stamps stamps) {
    change();
    out_ << "[" << Time(Date::Now()) << "]   " << what << ": " << stamps() << "\n";
  }

  std::string Stamps(const std::shared_ptr<IListIterator>& rows,
                     const std::vector<std::string>& columns) {
    if (!rows->GetNext()) return "(gone)";
    auto row = rows->CurrentItem();
    std::string text = StateWords(row->GetValue("State").ToLong());
    for (const auto& column : columns) {
      const Variant v = row->GetValue(column);
      if (!v.IsNull()) text += "; " + column + " " + Time(v);
    }
    return text;
  }
  std::string ProcessStamps(int32_t id) {
    return Stamps(processes_->GetProcessByID(id), {"CreatedOn", "StartedOn", "FinishedOn"});
  }
  std::string TaskStamps(int32_t id) {
    return Stamps(tasks_->GetTaskByID(id), {"StartedOn", "FinishedOn"});
  }
  std::string ItemStamps(int32_t id) {
    return Stamps(items_->GetWorkItemByID(id), {"StartedOn", "AcknowledgedOn", "FinishedOn"});
  }

  void WorkList(const std::string& resource) {
    const std::string filter = Filter(
        "vWorkitemsProcess",
        {Is("ResourceID", resource), std::make_shared<CCondition>("State", dcoContains, kOpen)},
        "Priority", dsDescending);
    out_ << "\n"
         << resource << "'s open work, most urgent first (the process view, through the "
         << "filter document\n  " << filter << "):\n";
    auto rows = items_->Load(filter);
    while (rows->GetNext()) {
      auto row = rows->CurrentItem();
      out_ << "  [priority " << row->GetValue("Priority").ToText() << "] "
           << row->GetValue("Subject").ToText() << " - " << row->GetValue("ActivityName").ToText()
           << " in \"" << row->GetValue("ProcInstanceName").ToText() << "\", "
           << StateWords(row->GetValue("State").ToLong()) << "\n";
    }
  }

  void Print(int32_t process, int depth) {
    const std::string indent(2 * depth, ' ');
    auto rows = processes_->GetProcessByID(process);
    rows->GetNext();
    out_ << indent << (depth > 1 ? "sub-process " : "") << "\""
         << rows->CurrentItem()->GetValue("ProcInstanceName").ToText() << "\", "
         << ProcessStamps(process) << "\n";
    auto tasks = tasks_->Load(Filter("", {Is("FKProcInstanceID", process)}, "ActivityInstanceID"));
    while (tasks->GetNext()) {
      auto task = tasks->CurrentItem();
      const int32_t id = task->GetValue("ActivityInstanceID").ToLong();
      out_ << indent << "  " << task->GetValue("ActivityName").ToText() << ", " << TaskStamps(id)
           << " (note: " << task->GetValue("ActivityNote").ToText() << ")\n";
      auto items = items_->GetWorkItemsForATask(id);
      while (items->GetNext()) {
        auto item = items->CurrentItem();
        out_ << indent << "    " << item->GetValue("ResourceID").ToText() << ": \""
             << item->GetValue("Subject").ToText() << "\", "
             << ItemStamps(item->GetValue("WorkitemID").ToLong()) << "\n";
      }
    }
    auto children =
        processes_->Load(Filter("", {Is("FKParentProcInstanceID", process)}, "ProcInstanceID"));
    while (children->GetNext()) {
      Print(children->CurrentItem()->GetValue("ProcInstanceID").ToLong(), depth + 1);
    }
  }

  std::ostream& out_;
  CMYSqlDP& handler_;
  std::shared_ptr<IProcInstanceDP> processes_;
  std::shared_ptr<IActivityInstanceDP> tasks_;
  std::shared_ptr<IWorkitemsDP> items_;
  std::map<std::string, Activity> activities_;  // by identifier
};

}  // namespace

void DemoRuntime(CMYSqlDP& handler, std::ostream& out) {
  out << "\n== A case of the purchase-order process\n";
  StoryClock clock;
  Case(handler, out).Run();
}

}  // namespace orvdemo
