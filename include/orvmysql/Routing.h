#pragma once

// Engine interfaces of parallel routing: the splits where a process instance
// forks, the paths leaving each split, and the threads that carry the work
// along them. The engine records them while it routes a case and stamps their
// keys on the activity instances it creates (FKSplitInstanceID,
// FKPathInstanceID, FKThreadInstanceID).
//
// Obtain a provider from the data handler and cast it to its interface:
//   auto paths = std::dynamic_pointer_cast<IPathInstanceDP>(handler.GetDataSource(16));
//
// Common rules:
// - Add and Update take the row's values as a FieldArray read by fixed
//   position (the tables below); the key is never in the array. Every position
//   is read and converted before any statement runs: a short array raises
//   error 9, a value that is not a number in a numeric position raises 13,
//   Null in a text position raises 94, a text that is not valid UTF-8 (the
//   thread ID too) raises 5 naming its first bad byte (see Error.h), and
//   nothing is written (no key is used up either).
// - State is the engine's State word (open 0x4000000, closed 0x8000000 plus
//   the kind of closing, paused 0x20000000 on top of open). ChangeState sets it
//   to a value, or adds the value to it arithmetically in one UPDATE (a
//   negative value subtracts), the way the other instance providers change
//   theirs. It stamps no dates: these tables have none.
// - Update and ChangeState are true when the row exists; Delete removes that
//   one row and is always true; GetCurrentState gives 0 when there is no row;
//   a reading operation on a missing key returns an empty list.
// - Load appends the caller's tail (a WHERE and/or ORDER BY clause, after one
//   blank) to the provider's select list. The tail is raw SQL: it must be the
//   engine's own text, never an end user's.
// - Reading operations impose no order. Failures are raised as
//   orvmysql::Error; there are no transactions.

#include <cstdint>
#include <memory>
#include <string>

#include "orvmysql/List.h"
#include "orvmysql/Object.h"
#include "orvmysql/Variant.h"

namespace orvmysql {

// Rows of parallel routing with a numeric key from GetNextID that belong to a
// process instance: splits and paths.
class ORVMYSQL_EXPORT IRoutingRowsDP : public virtual IObject {
 public:
  // Inserts a row; returns its new key, or -1 when no row was inserted.
  virtual int32_t Add(const FieldArray& fields) = 0;
  // Writes every position to the row; true when the row exists.
  virtual bool Update(int32_t id, const FieldArray& fields) = 0;
  // Deletes the one row. Always true.
  virtual bool Delete(int32_t id) = 0;
  virtual std::shared_ptr<IListIterator> GetByID(int32_t id) = 0;
  // The rows of a process instance.
  virtual std::shared_ptr<IListIterator> GetForProcess(int32_t process_instance_id) = 0;
  // The row's State word; 0 when there is no row.
  virtual int32_t GetCurrentState(int32_t id) = 0;
  // Sets the State word to value, or adds value to it when add is true. True
  // when the row exists.
  virtual bool ChangeState(int32_t id, int32_t value, bool add) = 0;
  // Rows matching the caller's trusted SQL tail ("" gives all).
  virtual std::shared_ptr<IListIterator> Load(const std::string& filter) = 0;
};

// Splits, tblProcSplitInstance (data-source code 15, CSplitInstanceDP), keyed
// by SplitInstanceID (GetNextID with -15). A split is made on a path of an
// enclosing split (ParentID, FKPathInstanceID; 0 at the top level) by a
// thread of a process instance.
//
// Field array of Add and Update (6 positions):
//
// | Pos | Column             | Written as |
// |-----|--------------------|------------|
// | 0   | ParentID           | integer    |
// | 1   | FKThreadInstanceID | quoted 255 |
// | 2   | FKPathInstanceID   | integer    |
// | 3   | FKProcInstanceID   | integer    |
// | 4   | State              | integer    |
// | 5   | SplitType          | integer    |
//
// Select list: SplitInstanceID, ParentID, FKThreadInstanceID,
// FKPathInstanceID, FKProcInstanceID, State, SplitType.
class ORVMYSQL_EXPORT ISplitInstanceDP : public virtual IRoutingRowsDP {};

// Paths, tblProcPathInstance (data-source code 16, CPathInstanceDP), keyed by
// PathID (GetNextID with -16). Each path leaves one split.
//
// Field array of Add and Update (3 positions):
//
// | Pos | Column            | Written as |
// |-----|-------------------|------------|
// | 0   | FKSplitInstanceID | integer    |
// | 1   | FKProcInstanceID  | integer    |
// | 2   | State             | integer    |
//
// Select list: PathID, FKSplitInstanceID, FKProcInstanceID, State.
class ORVMYSQL_EXPORT IPathInstanceDP : public virtual IRoutingRowsDP {
 public:
  // The paths of a split.
  virtual std::shared_ptr<IListIterator> GetPathsForSplit(int32_t split_id) = 0;
  // How many paths of the split are still open: those whose State has the
  // open flag 0x4000000 (67108864) set, paused ones included. A closed path's
  // word (0x8000000 plus the kind of closing) has no open flag. The engine
  // asks this when it joins; 0 for an unknown split.
  virtual int32_t GetOpenPathCount(int32_t split_id) = 0;
};

// Threads, tblProcThreadInstance (data-source code 17, CThreadInstanceDP),
// keyed by ThreadID, a text the caller chooses. ThreadID is the primary key
// across all process instances, so it must be globally unique (a GUID, for
// example); adding an ID that exists raises the database's duplicate-key
// error and changes nothing. The ID is written and compared as a quoted text,
// cut to its first 255 characters, under the column's case-insensitive
// collation.
//
// Field array of Add and Update (2 positions; the ID is an argument):
//
// | Pos | Column           | Written as |
// |-----|------------------|------------|
// | 0   | FKProcInstanceID | integer    |
// | 1   | State            | integer    |
//
// Select list: ThreadID, FKProcInstanceID, State.
class ORVMYSQL_EXPORT IThreadInstanceDP : public virtual IObject {
 public:
  // Inserts the thread; true when a row was inserted.
  virtual bool Add(const std::string& thread_id, const FieldArray& fields) = 0;
  // Writes every position to the row; true when the row exists.
  virtual bool Update(const std::string& thread_id, const FieldArray& fields) = 0;
  // Deletes the one row. Always true.
  virtual bool Delete(const std::string& thread_id) = 0;
  virtual std::shared_ptr<IListIterator> GetByID(const std::string& thread_id) = 0;
  // The threads of a process instance.
  virtual std::shared_ptr<IListIterator> GetForProcess(int32_t process_instance_id) = 0;
  // The thread's State word; 0 when there is no row.
  virtual int32_t GetCurrentState(const std::string& thread_id) = 0;
  // Sets the State word to value, or adds value to it when add is true. True
  // when the row exists.
  virtual bool ChangeState(const std::string& thread_id, int32_t value, bool add) = 0;
  // Threads matching the caller's trusted SQL tail ("" gives all).
  virtual std::shared_ptr<IListIterator> Load(const std::string& filter) = 0;
};

}  // namespace orvmysql
