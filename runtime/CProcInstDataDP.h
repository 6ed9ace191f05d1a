#pragma once

#include "access/TableProvider.h"
#include "orvmysql/InstanceData.h"

namespace orvmysql {

// Parameter values of process instances (tblProcInstanceData), read beside
// the declarations of the instance's definition.
class CProcInstDataDP : public TableProvider, public IProcInstanceParamsDP {
 public:
  // IProcInstanceParamsDP
  bool Add(const FieldArray& fields) override;
  bool Update(int32_t data_id, const FieldArray& fields) override;
  bool Delete(int32_t data_id, int32_t process_instance_id) override;
  bool ParameterExist(const std::string& name, int32_t process_instance_id) override;
  std::shared_ptr<IListIterator> GetParameterByID(int32_t data_id) override;
  std::shared_ptr<IListIterator> GetParameterForProcess(int32_t process_instance_id) override;
  std::shared_ptr<IListIterator> Load(const std::string& condition) override;
  std::shared_ptr<IListIterator> LoadProcessInstanceParams(int32_t definition_id,
                                                           int32_t process_instance_id) override;
};

}  // namespace orvmysql
