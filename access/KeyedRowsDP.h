#pragma once

#include <memory>
#include <string>

#include "access/TableProvider.h"

namespace orvmysql {

// The operations that every provider of a keyed table with numeric keys owned
// by one entity offers under the same names (Add, Update, GetByID,
// GetForProcess, Load), carried out on the table that the concrete provider
// names. Interface declares them; the provider adds the rest.
template <class Interface>
class KeyedRowsDP : public TableProvider, public virtual Interface {
 public:
  int32_t Add(const FieldArray& fields) override { return AddRow(table_, fields); }
  // True when the row exists.
  bool Update(int32_t id, const FieldArray& fields) override {
    return UpdateRow(table_, id, fields) > 0;
  }
  std::shared_ptr<IListIterator> GetByID(int32_t id) override { return RowsByKey(table_, id); }
  std::shared_ptr<IListIterator> GetForProcess(int32_t owner_id) override {
    return RowsByOwner(table_, owner_id);
  }
  std::shared_ptr<IListIterator> Load(const std::string& filter) override {
    return RowsLoad(table_, filter);
  }

 protected:
  explicit KeyedRowsDP(const dp::KeyedTable& table) : table_(table) {}

  const dp::KeyedTable& table_;
};

}  // namespace orvmysql
