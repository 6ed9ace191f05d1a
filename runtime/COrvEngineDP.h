#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

#include "access/TableProvider.h"
#include "orvmysql/Engine.h"

namespace orvmysql {

// The engine's operations on whole process trees (runtime/COrvEngineDP.cpp)
// and its routing and case-data operations (runtime/EngineCaseData.cpp).
class COrvEngineDP : public TableProvider, public IOrvEngineDP, public IClearLogProgress {
 public:
  // IOrvEngineDP
  bool InsertCaseRelatedData(int32_t case_id, int32_t entity_id, int32_t entity_type,
                             int32_t task_index, const std::string& resource_id,
                             const std::string& resource_type,
                             const std::string& resource_name) override;
  std::shared_ptr<INode> GetStartNodeID(int32_t definition_id) override;
  std::shared_ptr<IListIterator> GetTransitions(int32_t definition_id, int32_t from_node_type,
                                                int32_t from_node_id) override;
  bool SkipActivity(const std::string& condition) override;
  bool EndProcess(int32_t proc_instance_id, bool clear_log) override;
  bool TerminateProcess(int32_t proc_instance_id, bool clear_log) override;
  bool ClearLog(const std::string& proc_instance_ids) override;
  bool PauseProcess(int32_t proc_instance_id) override;
  bool ResumeProcess(int32_t proc_instance_id) override;
  bool SkipPendingTaskOnSplit(int32_t path_id) override;

  // IClearLogProgress
  void SetClearLogProgress(std::function<void(int64_t, int64_t)> progress) override;

 private:
  // The ids of every process instance of the tree of id, joined by ",";
  // empty when id has no row or no tree.
  std::string GetAllProcInstanceSiblings(int32_t proc_instance_id);
  // Skips every activity instance the select finds, with its work items, in
  // a session that stays open when nothing is found.
  bool SkipSelected(const std::string& select);
  // The deletions of the log of the listed process instances.
  void DeleteLog(const std::string& ids);

  std::function<void(int64_t, int64_t)> progress_;
};

// Sets the number of ids per batch of a blank ClearLog; 0 restores
// kClearLogBatchSize. For tests.
void SetClearLogBatchSizeForTesting(std::size_t size);

}  // namespace orvmysql
