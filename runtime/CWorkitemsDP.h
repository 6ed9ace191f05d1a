#pragma once

#include "access/TableProvider.h"
#include "orvmysql/Runtime.h"

namespace orvmysql {

// Work items (tblWorkitems), read with the activity of their activity instance.
class CWorkitemsDP : public TableProvider, public IWorkitemsDP {
 public:
  // IWorkitemsDP
  bool Add(const FieldArray& fields) override;
  bool Update(int32_t workitem_id, const FieldArray& fields) override;
  bool Delete(int32_t workitem_id) override;
  bool ChangeWorkitemState(int32_t workitem_id, int32_t current, int32_t value, bool add) override;
  int32_t GetCurrentState(int32_t workitem_id) override;
  std::shared_ptr<IListIterator> GetWorkItemByID(int32_t workitem_id) override;
  std::shared_ptr<IListIterator> GetWorkItemsForAProcess(int32_t proc_instance_id) override;
  std::shared_ptr<IListIterator> GetWorkItemsForATask(int32_t activity_instance_id) override;
  std::shared_ptr<IListIterator> Load(const std::string& filter) override;
};

}  // namespace orvmysql
