#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "orvmysql/Object.h"
#include "orvmysql/Variant.h"

namespace orvmysql {

// One row of a list. The list reuses one item for every row, so a kept
// reference sees the next row's values after GetNext or Skip.
class ORVMYSQL_EXPORT IListItem : public virtual IObject {
 public:
  // The named column's value, NULL included. Column names match without regard
  // to case. Returns Null before the first row; raises error 5 for an unknown
  // column.
  virtual Variant GetValue(const std::string& name) = 0;
};

// A forward list of rows. Reading loop: call GetNext until it returns false;
// after each true, CurrentItem is the row just read.
class ORVMYSQL_EXPORT IListIterator : public virtual IObject {
 public:
  virtual int32_t Count() = 0;
  // The current row, or null before the first row and after the end.
  virtual std::shared_ptr<IListItem> CurrentItem() = 0;
  virtual bool GetNext() = 0;
  // Moves back to the first row.
  virtual void Reset() = 0;
  // Moves by n rows from the current one (clamped to the first and last row)
  // and loads that row; the next GetNext loads the same row again.
  virtual void Skip(int32_t n) = 0;
  // Always false.
  virtual bool Exists(const Variant& key) = 0;
  // Always null.
  virtual std::shared_ptr<IListItem> GetItem(const Variant& key) = 0;
};

}  // namespace orvmysql
