#pragma once

#include "access/TableProvider.h"
#include "orvmysql/Definitions.h"

namespace orvmysql {

// The operations of the graph providers (transitions and switches), carried
// out on the keyed table that the concrete provider names.
class GraphRowsDP : public TableProvider, public virtual IGraphRowsDP {
 public:
  // IGraphRowsDP
  int32_t Add(const FieldArray& fields) override;
  bool Update(int32_t id, const FieldArray& fields) override;
  bool Delete(int32_t id, int32_t definition_id) override;
  std::shared_ptr<IListIterator> GetByID(int32_t id) override;
  std::shared_ptr<IListIterator> GetForProcess(int32_t definition_id) override;
  std::shared_ptr<IListIterator> Load(const std::string& filter) override;

 protected:
  explicit GraphRowsDP(const dp::KeyedTable& table) : table_(table) {}

 private:
  const dp::KeyedTable& table_;
};

}  // namespace orvmysql
