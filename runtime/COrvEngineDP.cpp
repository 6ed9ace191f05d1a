#include "runtime/COrvEngineDP.h"

#include <algorithm>
#include <atomic>
#include <string_view>
#include <vector>

#include "access/SqlValues.h"
#include "query/TextUtil.h"

namespace orvmysql {

namespace {

using dp::Cat;
using dp::Step;

// The bits of the State word, as they are written into the statements.
constexpr std::string_view kOpen = "67108864";
constexpr std::string_view kClosed = "134217728";
constexpr std::string_view kCompleted = "134217729";
constexpr std::string_view kTerminated = "134217730";
constexpr std::string_view kSkipped = "134217732";
constexpr std::string_view kPaused = "536870912";
constexpr std::string_view kPausedToo = "1073741824";
constexpr std::string_view kBothPauses = "1610612736";

// One table of a process tree and the pieces its tree statements share.
struct TreeTable {
  std::string_view update{};       // " UPDATE <table> SET "
  std::string_view resume_both{};  // assignments before the State when both pauses go
  std::string_view state{};        // the qualified State column
  std::string_view finished{};     // " ,<table>.FinishedOn = "
  std::string_view in{};           // " WHERE <process column> IN ("
};

constexpr TreeTable kWorkitems{
    .update = " UPDATE tblWorkitems SET ",
    .state = "tblWorkitems.State",
    .finished = " ,tblWorkitems.FinishedOn = ",
    .in = " WHERE FKProcInstanceID IN (",
};
constexpr TreeTable kTasks{
    .update = " UPDATE tblActivityInstance SET ",
    .resume_both = "tblActivityInstance.ActivityNote = NULL,",
    .state = "tblActivityInstance.State",
    .finished = " ,tblActivityInstance.FinishedOn = ",
    .in = "  WHERE FKProcInstanceID IN (",
};
constexpr TreeTable kProcesses{
    .update = " UPDATE tblProcessInstance SET ",
    .state = "tblProcessInstance.State",
    .finished = " ,tblProcessInstance.FinishedOn = ",
    .in = " WHERE tblProcessInstance.ProcInstanceID IN (",
};
constexpr const TreeTable* kTree[] = {&kWorkitems, &kTasks, &kProcesses};

// "(<state> & <bits>) = <bits>" and "(<state> & <bits>) = 0".
std::string Has(std::string_view state, std::string_view bits) {
  return Cat("(", state, " & ", bits, ") = ", bits);
}
std::string Lacks(std::string_view state, std::string_view bits) {
  return Cat("(", state, " & ", bits, ") = 0");
}

std::string Pause(const TreeTable& t, const std::string& ids) {
  return Cat(t.update, t.state, " = ", t.state, " | ", kPaused, t.in, ids, ") AND ",
             Has(t.state, kOpen), " AND ", Lacks(t.state, kPaused));
}

// Resumes the rows with only the paused flag, or with both pause flags.
std::string Resume(const TreeTable& t, const std::string& ids, bool both) {
  return Cat(t.update, both ? t.resume_both : "", t.state, " = ", t.state, " - ",
             both ? kBothPauses : kPaused, t.in, ids, ") AND ", Has(t.state, kOpen), " AND ",
             Has(t.state, kPaused), " AND ",
             both ? Has(t.state, kPausedToo) : Lacks(t.state, kPausedToo));
}

std::string Terminate(const TreeTable& t, const std::string& ids) {
  return Cat(t.update, t.state, " = ", kTerminated, t.finished, sql::DateTime(Variant(Date::Now())),
             t.in, ids, ") AND (", Has(t.state, kOpen), " OR ", Has(t.state, kPaused), ")");
}

constexpr std::string_view kSiblings =
    " SELECT  tblProcessInstance.ProcInstanceID FROM tblProcessInstance "
    " WHERE tblProcessInstance.TreeID IN ( SELECT tblProcessInstance.TreeID FROM "
    "tblProcessInstance WHERE tblProcessInstance.ProcInstanceID = ";
constexpr std::string_view kSelectTasks =
    " SELECT tblActivityInstance.ActivityInstanceID FROM tblActivityInstance WHERE ";
constexpr std::string_view kSplitTasks =
    " tblActivityInstance.FKsplitInstanceID IN (  SELECT tblProcPathInstance.FKSplitInstanceID  "
    "FROM tblProcPathInstance WHERE tblProcPathInstance.PathID = ";
constexpr std::string_view kSelectProcesses =
    " SELECT ProcInstanceID FROM tblProcessInstance WHERE ";

// The deletions of ClearLog in their order, each followed by the id list and
// ")": children before their parents. The two activity-instance data tables
// are reached by a join over the activity instances of the listed processes.
constexpr std::string_view kLogCascade[] = {
    " DELETE FROM tblWorkitems WHERE FKProcInstanceID IN (",
    " DELETE tblAIPropertyData FROM tblAIPropertyData INNER JOIN tblActivityInstance ON "
    "tblAIPropertyData.FKActivityInstanceID = tblActivityInstance.ActivityInstanceID WHERE "
    "tblActivityInstance.FKProcInstanceID IN (",
    " DELETE tblActivityInstanceData FROM tblActivityInstanceData INNER JOIN tblActivityInstance "
    "ON tblActivityInstanceData.FKActivityInstanceID = tblActivityInstance.ActivityInstanceID "
    "WHERE tblActivityInstance.FKProcInstanceID IN (",
    " DELETE FROM tblActivityInstance WHERE FKProcInstanceID IN (",
    " DELETE FROM tblProcPathInstance WHERE FKProcInstanceID IN (",
    " DELETE FROM tblProcSplitInstance WHERE FKProcInstanceID IN (",
    " DELETE FROM tblPIReleventData WHERE FKProcInstanceID IN (",
    " DELETE FROM tblProcInstanceData WHERE FKProcInstanceID IN (",
    " DELETE FROM tblProcThreadInstance WHERE FKProcInstanceID IN (",
    " DELETE FROM tblProcessInstance WHERE ProcInstanceID IN (",
};

struct Locations {
  std::string_view pause = "COrvEngineDP: IOrvEngineDP_PauseProcess Function (";
  std::string_view resume = "COrvEngineDP: IOrvEngineDP_ResumeProcess Function (";
  std::string_view skip = "COrvEngineDP: IOrvEngineDP_SkipActivity Function (";
  std::string_view end = "COrvEngineDP: IOrvEngineDP_EndProcess Function (";
  std::string_view terminate = "COrvEngineDP: IOrvEngineDP_TerminateProcess Function (";
  std::string_view skip_split = "COrvEngineDP:IOrvEngineDP_SkipPendingTaskOnSplit Ln ";
  std::string_view siblings = "COrvEngineDP: GetAllProcInstanceSiblings Sub (";
  std::string_view clear_log = "COrvEngineDP: IOrvEngineDP_ClearLog Function (";
};
constexpr Locations kAt{};

std::atomic<std::size_t> batch_size{kClearLogBatchSize};

}  // namespace

void SetClearLogBatchSizeForTesting(std::size_t size) {
  batch_size = size == 0 ? kClearLogBatchSize : size;
}

std::string COrvEngineDP::GetAllProcInstanceSiblings(int32_t proc_instance_id) {
  return detail::Guard({kAt.siblings}, [&] {
    return dp::JoinedColumn(*Rows(Cat(kSiblings, std::to_string(proc_instance_id), ")")),
                            "ProcInstanceID");
  });
}

bool COrvEngineDP::SkipSelected(const std::string& select) {
  StartSession();
  auto rows = Rows(select);
  // Nothing selected: the session is deliberately left open.
  if (rows->Count() < 1) return true;
  const std::string today = sql::DateTime(Variant(Date::Now().DateOnly()));
  std::vector<Step> steps;
  while (rows->GetNext()) {
    const std::string id = sql::Long(rows->CurrentItem()->GetValue("ActivityInstanceID"));
    steps.push_back({Cat(kWorkitems.update, " `State` = ", kSkipped, " ,FinishedOn = ", today,
                         " WHERE FKActivityInstanceID = ", id)});
    steps.push_back(
        {Cat(kTasks.update, " `State` = ", kSkipped, " WHERE ActivityInstanceID = ", id)});
  }
  AsOneUnit([&] { RunSteps(steps); });
  EndSession();
  return true;
}

void COrvEngineDP::DeleteLog(const std::string& ids) {
  std::vector<Step> steps;
  for (std::string_view head : kLogCascade) steps.push_back({Cat(head, ids, ")")});
  // A list's log goes whole or not at all; a blank-mode batch is one list.
  AsOneUnit([&] { RunSteps(steps); });
}

// IOrvEngineDP

bool COrvEngineDP::PauseProcess(int32_t proc_instance_id) {
  return detail::Guard({kAt.pause}, [&] {
    StartSession();
    const bool paused = AsOneUnit([&] {
      const std::string ids = GetAllProcInstanceSiblings(proc_instance_id);
      std::vector<Step> steps;
      for (const TreeTable* t : kTree) steps.push_back({Pause(*t, ids)});
      return RunSteps(steps).back() >= 1;
    });
    EndSession();
    return paused;
  });
}

bool COrvEngineDP::ResumeProcess(int32_t proc_instance_id) {
  return detail::Guard({kAt.resume}, [&] {
    StartSession();
    const bool resumed = AsOneUnit([&] {
      const std::string ids = GetAllProcInstanceSiblings(proc_instance_id);
      // Per table: the rows with the paused flag alone; only when there are
      // none, the rows with both flags.
      std::vector<Step> steps;
      for (const TreeTable* t : kTree) {
        steps.push_back({Resume(*t, ids, false)});
        steps.push_back({Resume(*t, ids, true), true});
      }
      const auto changed = RunSteps(steps);
      return std::max(changed[4], changed[5]) >= 1;
    });
    EndSession();
    return resumed;
  });
}

bool COrvEngineDP::SkipActivity(const std::string& condition) {
  return detail::Guard({kAt.skip}, [&] {
    if (detail::TrimBlanks(condition).empty()) return false;
    return SkipSelected(Cat(kSelectTasks, condition));
  });
}

bool COrvEngineDP::SkipPendingTaskOnSplit(int32_t path_id) {
  return detail::Guard({kAt.skip_split}, [&] {
    return SkipSelected(Cat(kSelectTasks, kSplitTasks, std::to_string(path_id), ")"));
  });
}

bool COrvEngineDP::EndProcess(int32_t proc_instance_id, bool clear_log) {
  return detail::Guard({kAt.end}, [&] {
    const std::string id = std::to_string(proc_instance_id);
    const std::string end =
        Cat(kProcesses.update, kProcesses.state, " = ", kCompleted, kProcesses.finished,
            sql::DateTime(Variant(Date::Now())), " WHERE tblProcessInstance.ProcInstanceID = ", id,
            " AND NOT EXISTS ( SELECT 1 FROM tblActivityInstance  WHERE FKProcInstanceID = ", id,
            " AND ", Has(kTasks.state, kOpen), ")");
    StartSession();
    // Alone, the one UPDATE needs no unit; with the log it clears, it is one.
    const auto end_tree = [&] {
      const bool ended = RunSteps({Step{end}}).back() > 0;
      if (ended && clear_log) ClearLog(GetAllProcInstanceSiblings(proc_instance_id));
      return ended;
    };
    const bool ended = clear_log ? AsOneUnit(end_tree) : end_tree();
    EndSession();
    return ended;
  });
}

bool COrvEngineDP::TerminateProcess(int32_t proc_instance_id, bool clear_log) {
  return detail::Guard({kAt.terminate}, [&] {
    const std::string ids = GetAllProcInstanceSiblings(proc_instance_id);
    std::vector<Step> steps;
    for (const TreeTable* t : kTree) steps.push_back({Terminate(*t, ids)});
    StartSession();
    const bool terminated = AsOneUnit([&] {
      const bool changed = RunSteps(steps).back() >= 1;
      if (clear_log) ClearLog(ids);
      return changed;
    });
    EndSession();
    return terminated;
  });
}

bool COrvEngineDP::ClearLog(const std::string& proc_instance_ids) {
  return detail::Guard({kAt.clear_log}, [&] {
    const bool blank = detail::TrimBlanks(proc_instance_ids).empty();
    if (!blank) dp::RequireIdList(proc_instance_ids);
    StartSession();
    if (!blank) {
      const std::string open_one =
          Scalar(Cat(kSelectProcesses, "ProcInstanceID IN (", proc_instance_ids, ") AND ",
                     Lacks(kProcesses.state, kClosed)),
                 "-1");
      if (Variant(open_one).ToDouble() != -1) {
        // Refused: the session is ended twice, as the engine expects.
        EndSession();
        EndSession();
        return false;
      }
      DeleteLog(proc_instance_ids);
      EndSession();
      return true;
    }
    auto rows = Rows(Cat(kSelectProcesses, Has(kProcesses.state, kClosed)));
    const std::size_t total = static_cast<std::size_t>(std::max(rows->Count(), 0));
    const std::size_t batch = batch_size;
    std::size_t cleared = 0;
    std::string ids;
    while (rows->GetNext()) {
      if (!ids.empty()) ids += ',';
      ids += sql::Long(rows->CurrentItem()->GetValue("ProcInstanceID"));
      if (++cleared % batch != 0 && cleared != total) continue;
      DeleteLog(ids);
      ids.clear();
      if (progress_) progress_(static_cast<int64_t>(cleared), static_cast<int64_t>(total));
    }
    EndSession();
    return true;
  });
}

// IClearLogProgress

void COrvEngineDP::SetClearLogProgress(std::function<void(int64_t, int64_t)> progress) {
  progress_ = std::move(progress);
}

}  // namespace orvmysql
