#pragma once

#include "access/TableProvider.h"
#include "orvmysql/Runtime.h"

namespace orvmysql {

// Process instances (tblProcessInstance) and their trees.
class CProcInstanceDP : public TableProvider, public IProcInstanceDP {
 public:
  // IProcInstanceDP
  bool Add(const FieldArray& fields) override;
  bool Delete(int32_t proc_instance_id) override;
  int32_t GetCurrentState(int32_t proc_instance_id) override;
  std::shared_ptr<IListIterator> GetProcessByID(int32_t proc_instance_id) override;
  std::shared_ptr<IListIterator> Load(const std::string& filter) override;
  bool Update(int32_t proc_instance_id, const FieldArray& fields) override;
  bool ChangeWIState(int32_t proc_instance_id, int32_t current, int32_t value, bool add) override;

 private:
  // The TreeID literal of a new instance under the parent.
  std::string TreeLiteral(int32_t parent_id);
};

}  // namespace orvmysql
