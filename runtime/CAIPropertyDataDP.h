#pragma once

#include "orvmysql/InstanceData.h"
#include "runtime/BagValuesDP.h"

namespace orvmysql {

// Property values of activity instances (tblAIPropertyData), read beside the
// property bag of the activity instance's activity.
class CAIPropertyDataDP : public BagValuesDP, public ITaskPropertyDP {
 public:
  // ITaskPropertyDP
  int32_t Add(const FieldArray& fields) override;
  bool Update(int32_t property_id, const FieldArray& fields) override;
  bool Delete(int32_t property_id, int32_t activity_instance_id) override;
  bool PropertyExist(const std::string& name, int32_t activity_instance_id) override;
  std::shared_ptr<IListIterator> GetPropertyByID(int32_t property_id) override;
  std::shared_ptr<IListIterator> GetPropertiesForInstance(int32_t activity_instance_id) override;
  std::shared_ptr<IListIterator> Load(const std::string& condition) override;
  std::shared_ptr<IListIterator> LoadInstanceProperties(int32_t activity_id,
                                                        int32_t activity_instance_id) override;
};

}  // namespace orvmysql
