#pragma once

#include "orvmysql/InstanceData.h"
#include "runtime/BagValuesDP.h"

namespace orvmysql {

// Parameter values of tasks (tblActivityInstanceData), read beside the
// parameter bag of the activity instance's activity.
class CActivityInstanceDataDP : public BagValuesDP, public ITaskParamsDP {
 public:
  // ITaskParamsDP
  int32_t Add(const FieldArray& fields) override;
  bool Update(int32_t parameter_id, const FieldArray& fields) override;
  bool Delete(int32_t parameter_id, int32_t activity_instance_id) override;
  bool ParameterExist(const std::string& name, int32_t activity_instance_id,
                      int32_t task_index) override;
  std::shared_ptr<IListIterator> GetParameterByID(int32_t parameter_id) override;
  std::shared_ptr<IListIterator> GetParameterForTask(int32_t activity_instance_id,
                                                     int32_t task_index) override;
  std::shared_ptr<IListIterator> Load(const std::string& condition) override;
  std::shared_ptr<IListIterator> LoadTaskParams(int32_t activity_id, int32_t activity_instance_id,
                                                int32_t task_index) override;
};

}  // namespace orvmysql
