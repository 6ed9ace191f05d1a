#pragma once

#include "access/TableProvider.h"
#include "orvmysql/Runtime.h"

namespace orvmysql {

// Activity instances (tblActivityInstance).
class CActivityInstanceDP : public TableProvider, public IActivityInstanceDP {
 public:
  // IActivityInstanceDP
  bool Add(const FieldArray& fields) override;
  bool Update(int32_t activity_instance_id, const FieldArray& fields) override;
  bool Delete(int32_t activity_instance_id) override;
  int32_t GetCurrentState(int32_t activity_instance_id) override;
  std::shared_ptr<IListIterator> GetTaskByID(int32_t activity_instance_id) override;
  std::shared_ptr<IListIterator> Load(const std::string& filter) override;
  bool ChangeAIState(int32_t activity_instance_id, int32_t current, int32_t value, bool add,
                     const std::string& note) override;
};

}  // namespace orvmysql
