#pragma once

// Engine operations: state changes and deletions over whole process trees
// (pause, resume, end, terminate, skip, clear the log), the start node and
// the outgoing transitions of the graph while a case is routed, and the copy
// of instance data into the case-relevant data.
//
// Obtain the provider from the data handler and cast it to its interface:
//   auto engine = std::dynamic_pointer_cast<IOrvEngineDP>(handler.GetDataSource(kDsEngine));
//
// Common rules:
// - A process tree is a root instance and every sub-process that shares its
//   TreeID, with their activity instances and work items. The operations find
//   the tree of the id they are given and change all of it with one UPDATE or
//   DELETE per table, testing and changing the State word in SQL (bitwise OR
//   and AND, subtraction), never reading a state into memory.
// - State word: 0x4000000 (67108864) open; 0x8000000 (134217728) closed, with
//   134217729 completed, 134217730 terminated and 134217732 skipped;
//   0x20000000 (536870912) paused, on top of the open word; 0x40000000
//   (1073741824) a second pause flag that resuming clears but nothing here sets.
// - An id that names no process instance, or one whose TreeID is NULL, makes
//   an empty tree: the next statement holds "IN ()", and the operation fails
//   with the database's syntax error (1064).
// - Sessions: the multi-statement operations run between StartSession and
//   EndSession. A failing operation re-raises the error with its location
//   appended WITHOUT ending the session it opened (nor any other), so the
//   caller's session count stays one higher; the engine ends it.
// - Transactions: pause, resume, terminate, end with its log clearing, both
//   skips, and each list (or blank-mode batch) of ClearLog run their changes
//   as one transaction (see IConnection): a failure, or a server lost part
//   way, leaves none of them applied, and ROLLBACK is sent before the error
//   is raised, so the session left open holds no row lock. EndProcess without
//   clear_log is one statement and needs none.
// - Ids are 32-bit integers written in decimal; texts reach SQL only quoted by
//   GetQuotedString. Two inputs are raw SQL by design and must be the engine's
//   own text, never an end user's: the condition of SkipActivity, and nothing
//   else (ClearLog's list is checked to be decimal ids).

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "orvmysql/List.h"
#include "orvmysql/Object.h"

namespace orvmysql {

// A node of a process definition's graph: an activity or a switch, told apart
// by NodeType (for a switch its SwitchType; the start switch has type 2).
// Created by name as "orvmysql.CNode".
class ORVMYSQL_EXPORT INode : public virtual IObject {
 public:
  virtual int32_t NodeID() const = 0;
  virtual void SetNodeID(int32_t id) = 0;
  virtual int32_t NodeType() const = 0;
  virtual void SetNodeType(int32_t type) = 0;
};

class ORVMYSQL_EXPORT CNode : public INode {
 public:
  int32_t NodeID() const override { return id_; }
  void SetNodeID(int32_t id) override { id_ = id; }
  int32_t NodeType() const override { return type_; }
  void SetNodeType(int32_t type) override { type_ = type; }

 private:
  int32_t id_ = 0;
  int32_t type_ = 0;
};

// Blank-argument ClearLog deletes the closed process instances in batches of
// this many ids (ten DELETE statements per batch), so that no statement grows
// with the number of closed instances: ids of up to 10 digits make statements
// of at most about 11 KB. With fewer closed instances than this, it sends
// exactly one batch.
inline constexpr int32_t kClearLogBatchSize = 1000;

// The engine operations (data-source code 13, COrvEngineDP), in the order of
// the engine's interface.
class ORVMYSQL_EXPORT IOrvEngineDP : public virtual IObject {
 public:
  // Copies instance data into tblPIReleventData under the case (CaseID is the
  // case's process instance id), one row per source row, each with a new key
  // (GetNextID -21), in a session:
  // - entity_type 0: the process instance entity_id's values, with the three
  //   resource texts given (quoted, cut to 255 characters) and task_index;
  // - entity_type not 0 and task_index < 0: every task of activity instance
  //   entity_id that has a work item of the same task index, each with that
  //   work item's resource; the resource arguments are not used;
  // - entity_type not 0 and task_index >= 0: that one task's values, with the
  //   resource texts given; then the rows of entity type entity_type that
  //   other activity instances of the same activity in the same process
  //   instance left are deleted (only when this activity instance has rows
  //   of that type, so an activity instance that copied nothing removes
  //   nothing).
  // Texts are written quoted: the parameter name and the resource, lookup,
  // list and relevance texts cut to 255 characters, the text value whole; a
  // NULL among the last four texts and the text value is written as ''. A
  // NULL parameter name or resource text raises 94 at that row, the rows
  // before it staying inserted. Numbers are written as numbers, NULL as NULL.
  // ALWAYS returns false: success is the absence of an error.
  virtual bool InsertCaseRelatedData(int32_t case_id, int32_t entity_id, int32_t entity_type,
                                     int32_t task_index, const std::string& resource_id,
                                     const std::string& resource_type,
                                     const std::string& resource_name) = 0;
  // The definition's start switch (SwitchType 2) as a node of type 2, or null
  // when it has none. With several, the first the database returns.
  virtual std::shared_ptr<INode> GetStartNodeID(int32_t definition_id) = 0;
  // Whole tblTransitions rows leaving the node (FKFromNodeID, FromNodeType) in
  // the definition, in no particular order.
  virtual std::shared_ptr<IListIterator> GetTransitions(int32_t definition_id,
                                                        int32_t from_node_type,
                                                        int32_t from_node_id) = 0;
  // Sets every activity instance that the condition (a SQL boolean expression
  // over tblActivityInstance, RAW SQL: trusted engine input only) selects,
  // and all of its work items, to skipped (134217732), whatever their state;
  // the work items' FinishedOn becomes today at 00:00:00, the activity
  // instance gets no finish date. A blank condition returns false and sends
  // nothing. When the condition selects nothing it returns true WITHOUT
  // ending the session it opened (the engine relies on this); otherwise true.
  virtual bool SkipActivity(const std::string& condition) = 0;
  // Completes the one process row (134217729, FinishedOn now) when none of
  // its activity instances is open; its activity instances and work items
  // are left alone. Then, with clear_log, clears the log of its tree
  // (ClearLog, whose result is ignored). True when the row was completed.
  virtual bool EndProcess(int32_t proc_instance_id, bool clear_log) = 0;
  // Terminates every open or paused work item, activity instance and process
  // instance of the tree (134217730, FinishedOn now); closed rows keep their
  // state and date. Then, with clear_log, clears the log of the tree
  // (ClearLog, whose result is ignored). True when a process row changed.
  virtual bool TerminateProcess(int32_t proc_instance_id, bool clear_log) = 0;
  // Deletes the run-time rows of closed process instances: work items,
  // activity-instance properties and parameters, activity instances, paths,
  // splits, case-relevant data, instance data, threads, then the instances;
  // messages are not touched.
  // - proc_instance_ids: decimal ids joined by commas (blanks around an id
  //   allowed), as a tree's ids are; anything else raises 13 before any
  //   session or statement. When one of them is not closed nothing is
  //   deleted and the result is false; that path calls EndSession TWICE (one
  //   more than it started), which ends a session the caller holds. Ids that
  //   name no instance are not an error.
  // - blank: every closed process instance of every tree, kClearLogBatchSize
  //   ids at a time; true, also when there is none.
  virtual bool ClearLog(const std::string& proc_instance_ids) = 0;
  // Adds the paused flag to every open, not yet paused work item, activity
  // instance and process instance of the tree (in that order); closed rows
  // are untouched. True when a process row changed: pausing a paused tree
  // gives false.
  virtual bool PauseProcess(int32_t proc_instance_id) = 0;
  // Takes the pause away from the tree's open, paused rows, table by table
  // (work items, activity instances, process instances): first from the rows
  // that carry only the paused flag; only when there is none in that table,
  // both flags from the rows that carry both (activity instances resumed so
  // also lose their ActivityNote). So a table holding rows of both kinds
  // resumes only the first kind in one call. True when the last process
  // statement changed a row: resuming a tree that is not paused gives false.
  virtual bool ResumeProcess(int32_t proc_instance_id) = 0;
  // As SkipActivity, for every activity instance of the split(s) that the
  // path (tblProcPathInstance.PathID) belongs to. Always true; when nothing
  // is selected the session it opened is not ended either.
  virtual bool SkipPendingTaskOnSplit(int32_t path_id) = 0;
};

// Progress of a blank-argument ClearLog, which may take minutes on a large
// history. COrvEngineDP implements it beside IOrvEngineDP.
class ORVMYSQL_EXPORT IClearLogProgress : public virtual IObject {
 public:
  // Called after each batch with the closed instances cleared so far and
  // their total; null (the default) reports nothing. The callback must not
  // throw.
  virtual void SetClearLogProgress(
      std::function<void(int64_t cleared, int64_t total)> progress) = 0;
};

}  // namespace orvmysql
