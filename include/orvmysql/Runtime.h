#pragma once

// Engine interfaces of the runtime instance providers: process instances (and
// the trees of sub-processes under them), activity instances, and the work
// items offered to resources.
//
// Obtain a provider from the data handler and cast it to its interface:
//   auto items = std::dynamic_pointer_cast<IWorkitemsDP>(handler.GetDataSource(kDsWorkitems));
//
// Common rules:
// - Add and Update take the entity's values as a FieldArray read by fixed
//   position (the tables below; the positions are not in column order). Every
//   position is read and converted before any session or statement: a short
//   array raises error 9, a value that is not a number in a numeric position
//   raises 13, a value that is not a date in a date position raises 13, Null
//   in a text position that takes no NULL raises 94, a text that is not valid
//   UTF-8 raises 5 naming its first bad byte (see Error.h); nothing is
//   written and no key is used up.
// - "quoted 255" columns are written as a quoted, escaped SQL text cut to 255
//   characters; "quoted" texts are not cut. "NULL when empty" columns store
//   NULL for Null or an empty text; the others store '' for an empty text.
//   "date and time" and "date only" store NULL for Empty or Null; "date only"
//   drops the time of day.
// - Add reports success only (the new key is not handed back); Update is
//   always true, whether or not the row exists; Delete removes the one row
//   (nothing that hangs on it) and is always true, also for a missing key.
// - GetCurrentState returns the row's state word, 0 when there is no row.
// - The state word is a set of flags (0x4000000 open, 0x8000000 closed with
//   +1 completed, +2 terminated, +4 skipped, 0x20000000 paused). A state
//   change sets the word to the value, or with add adds the value to the
//   stored word (a negative value subtracts) in one atomic UPDATE; it returns
//   true when a row changed. The date stamps it writes are given with each
//   interface; "now" is the local clock (see SetClockForTesting).
// - Load takes a query document (see Query.h, CQuery::ToXML): its criteria
//   and sort keys become the WHERE and ORDER BY of the list. Attribute names
//   are the entity's columns; numeric values must be numbers, texts are
//   quoted, so a document cannot change the shape of the statement.
// - Reading operations return rows in no particular order unless a sort key
//   asks for one.
// - Failures are raised as orvmysql::Error with the operation's location at
//   the end of Source(). An operation that opened a session ends that session
//   when it fails; it never ends a session the caller opened. Statements
//   that ran before a failure stay applied (there are no transactions).

#include <cstdint>
#include <memory>
#include <string>

#include "orvmysql/List.h"
#include "orvmysql/Object.h"
#include "orvmysql/Variant.h"

namespace orvmysql {

// Process instances, tblProcessInstance (data-source code 11, CProcInstanceDP).
// A root instance (FKParentProcInstanceID 0 or less) starts a new tree with a
// fresh GUID as its TreeID; a sub-process inherits its parent's TreeID, so
// every instance of one tree shares it. TreeID is never changed afterwards and
// is not among the columns the reading operations return.
//
// Field array of Add and Update (16 positions):
//
// | Pos | Column                 | Written as                  |
// |-----|------------------------|-----------------------------|
// | 0   | ProcInstanceName       | quoted 255                  |
// | 1   | FKProcDefID            | integer                     |
// | 2   | ScheduledStartTime     | date and time               |
// | 3   | CreatorID              | quoted 255, NULL when empty |
// | 4   | ScheduledEndTime       | date and time               |
// | 5   | State                  | integer                     |
// | 6   | Priority               | integer                     |
// | 7   | ScheduledTimeOut       | date only                   |
// | 8   | Guid                   | quoted 255                  |
// | 9   | FKParentProcInstanceID | integer; 0 or less for a root |
// | 10  | CreatorType            | quoted 255, NULL when empty |
// | 11  | CreatorName            | quoted 255, NULL when empty |
// | 12  | CreatedOn              | date and time               |
// | 13  | StartedOn              | date and time               |
// | 14  | FinishedOn             | date and time               |
// | 15  | Note                   | quoted, NULL when empty     |
//
// Rows of GetProcessByID and Load: ProcInstanceID, ProcInstanceName,
// FKProcDefID, ScheduledStartTime, ScheduledEndTime, ScheduledTimeOut,
// CreatorID, CreatorType, CreatorName, State, Priority, GUID,
// FKParentProcInstanceID, CreatedOn, StartedOn, FinishedOn, Note.
class ORVMYSQL_EXPORT IProcInstanceDP : public virtual IObject {
 public:
  // Inserts an instance with a new key. A sub-process reads its parent's
  // TreeID first and writes it as a quoted text (unquoted, a GUID-shaped tree
  // identifier would not be valid SQL). When
  // the parent has no row the INSERT fails, and the key it took stays used;
  // an orphan never gets an empty TreeID. The engine finds the new row by its
  // Guid through Load. True.
  virtual bool Add(const FieldArray& fields) = 0;
  // Deletes the one row; sub-processes, activity instances, work items and
  // instance data are left alone. True.
  virtual bool Delete(int32_t proc_instance_id) = 0;
  virtual int32_t GetCurrentState(int32_t proc_instance_id) = 0;
  virtual std::shared_ptr<IListIterator> GetProcessByID(int32_t proc_instance_id) = 0;
  // Instances selected by the query document (attributes: the columns of the
  // rows above and TreeID).
  virtual std::shared_ptr<IListIterator> Load(const std::string& filter) = 0;
  // Writes every position of the array to the row (not TreeID). True.
  virtual bool Update(int32_t proc_instance_id, const FieldArray& fields) = 0;
  // Sets or adds to the state word, in a session of its own. Stamps StartedOn
  // with now when current holds 0x4000000 and value holds 0x4000004; no other
  // change stamps anything.
  virtual bool ChangeWIState(int32_t proc_instance_id, int32_t current, int32_t value,
                             bool add) = 0;
};

// Activity instances, tblActivityInstance (data-source code 14,
// CActivityInstanceDP): one row each time an activity of a process instance
// is entered (the engine calls them tasks).
//
// Field array of Add and Update (25 positions):
//
// | Pos | Column                | Written as                                      |
// |-----|-----------------------|-------------------------------------------------|
// | 0   | State                 | integer                                         |
// | 1   | ScheduledStartTime    | date and time                                   |
// | 2   | ScheduledTimeout      | date and time in Add; date only in Update       |
// | 3   | DisplayName           | quoted 255                                      |
// | 4   | FKActivityID          | integer                                         |
// | 5   | FKProcInstanceID      | integer                                         |
// | 6   | ActivityHandlerType   | integer                                         |
// | 7   | ActivityType          | integer                                         |
// | 8   | Max                   | quoted 255, NULL when empty                     |
// | 9   | Min                   | quoted 255, NULL when empty                     |
// | 10  | Threshold             | quoted 255, NULL when empty                     |
// | 11  | Trigger               | integer                                         |
// | 12  | ExtendedAttributes    | quoted, NULL when empty                         |
// | 13  | ActivityInstanceIndex | quoted 255                                      |
// | 14  | ResourceSet           | quoted, NULL when empty                         |
// | 15  | FKSplitInstanceID     | integer                                         |
// | 16  | FKPathInstanceID      | integer                                         |
// | 17  | FKThreadInstanceID    | quoted 255                                      |
// | 18  | FKActivityProcDefID   | quoted 255                                      |
// | 19  | ScheduledEndTime      | date and time                                   |
// | 20  | CreatedOn             | date and time                                   |
// | 21  | StartedOn             | date and time                                   |
// | 22  | FinishedOn            | date and time                                   |
// | 23  | Priority              | integer                                         |
// | 24  | ActivityNote          | quoted, NULL when empty                         |
//
// Rows of GetTaskByID and Load: every column of tblActivityInstance and the
// ActivityName of its activity (an instance whose activity row is gone is not
// listed).
class ORVMYSQL_EXPORT IActivityInstanceDP : public virtual IObject {
 public:
  // Inserts an activity instance with a new key. True.
  virtual bool Add(const FieldArray& fields) = 0;
  // Writes every position of the array to the row. True.
  virtual bool Update(int32_t activity_instance_id, const FieldArray& fields) = 0;
  // Deletes the one row, in a session of its own; its data rows and work
  // items are left to the caller. True.
  virtual bool Delete(int32_t activity_instance_id) = 0;
  virtual int32_t GetCurrentState(int32_t activity_instance_id) = 0;
  virtual std::shared_ptr<IListIterator> GetTaskByID(int32_t activity_instance_id) = 0;
  // Activity instances selected by the query document (attributes: the
  // table's columns and ActivityName).
  virtual std::shared_ptr<IListIterator> Load(const std::string& filter) = 0;
  // Sets or adds to the state word and overwrites ActivityNote with the note
  // (an empty note stores '', not NULL). Stamps, first rule only: StartedOn
  // with now when current holds 0x4000000 and value holds 0x4000004;
  // otherwise FinishedOn with now when current holds 0x8000000.
  virtual bool ChangeAIState(int32_t activity_instance_id, int32_t current, int32_t value, bool add,
                             const std::string& note) = 0;
};

// Work items, tblWorkitems (data-source code 10, CWorkitemsDP): one row per
// resource offered a piece of work of an activity instance.
//
// Field array of Add and Update (19 positions):
//
// | Pos | Column                       | Written as                  |
// |-----|------------------------------|-----------------------------|
// | 0   | State                        | integer                     |
// | 1   | CreatedOn                    | date and time               |
// | 2   | FinishedOn                   | date and time               |
// | 3   | AcknowledgedOn               | date and time               |
// | 4   | ResourceID                   | quoted 255, NULL when empty |
// | 5   | ResourceType                 | quoted 255, NULL when empty |
// | 6   | ResourceName                 | quoted 255, NULL when empty |
// | 7   | Subject                      | quoted 255, NULL when empty |
// | 8   | Note                         | quoted, NULL when empty     |
// | 9   | FKActivityInstanceID         | integer                     |
// | 10  | FKProcInstanceID             | integer                     |
// | 11  | TaskIndex                    | integer                     |
// | 12  | StartedOn                    | date and time               |
// | 13  | WorkitemActivityInstanceType | integer                     |
// | 14  | ScheduledStartTime           | date and time               |
// | 15  | ScheduledEndTime             | date and time               |
// | 16  | ScheduledTimeout             | date and time               |
// | 17  | Priority                     | integer                     |
// | 18  | DisplayMask                  | integer                     |
//
// Rows of the reading operations: WorkitemID, ResourceID, ResourceType,
// ResourceName, Subject, Note, State, FKActivityInstanceID,
// WorkitemActivityInstanceType, FKProcInstanceID, AcknowledgedOn, FinishedOn,
// CreatedOn, StartedOn, TaskIndex, Priority, ScheduledStartTime,
// ScheduledEndTime, ScheduledTimeout, DisplayMask, and the FKActivityID of
// the work item's activity instance (a work item whose activity instance is
// gone is not listed). The process view of Load (entity "vWorkitemsProcess")
// adds ProcInstanceName, CreatorID, CreatorType, CreatorName of the process
// instance and the activity instance's DisplayName as ActivityName.
class ORVMYSQL_EXPORT IWorkitemsDP : public virtual IObject {
 public:
  // Inserts a work item with a new key. True.
  virtual bool Add(const FieldArray& fields) = 0;
  // Writes every position of the array to the row. True.
  virtual bool Update(int32_t workitem_id, const FieldArray& fields) = 0;
  // Deletes the one row. True.
  virtual bool Delete(int32_t workitem_id) = 0;
  // Sets or adds to the state word. Stamps, first rule only: StartedOn and
  // AcknowledgedOn with now when value holds 0x4000004 and current is not 0;
  // otherwise FinishedOn with now when current holds 0x8000000.
  virtual bool ChangeWorkitemState(int32_t workitem_id, int32_t current, int32_t value,
                                   bool add) = 0;
  virtual int32_t GetCurrentState(int32_t workitem_id) = 0;
  virtual std::shared_ptr<IListIterator> GetWorkItemByID(int32_t workitem_id) = 0;
  // The work items of a process instance (by tblWorkitems.FKProcInstanceID,
  // qualified because the joined activity instances have that column too).
  virtual std::shared_ptr<IListIterator> GetWorkItemsForAProcess(int32_t proc_instance_id) = 0;
  // The work items of an activity instance.
  virtual std::shared_ptr<IListIterator> GetWorkItemsForATask(int32_t activity_instance_id) = 0;
  // Work items selected by the query document: its entity "" or
  // "tblWorkitems" lists the rows above, "vWorkitemsProcess" the process view
  // (any other entity raises error 5). A resource's work list is a condition
  // on ResourceID.
  virtual std::shared_ptr<IListIterator> Load(const std::string& filter) = 0;
};

}  // namespace orvmysql
