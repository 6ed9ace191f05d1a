#pragma once

#include "access/TableProvider.h"
#include "orvmysql/Definitions.h"

namespace orvmysql {

// Parameter declarations of a process definition (tblProcessParams).
class CProcessParamsDP : public TableProvider, public IProcessParamsDP {
 public:
  // IProcessParamsDP
  std::shared_ptr<IListIterator> GetParameterByID(int32_t parameter_id) override;
  std::shared_ptr<IListIterator> GetParameterForProcess(int32_t definition_id) override;
  std::shared_ptr<IListIterator> Load(const std::string& condition) override;
  bool ParameterExist(const std::string& name, int32_t definition_id) override;
  bool Update(int32_t parameter_id, const FieldArray& fields) override;
  int32_t Add(const FieldArray& fields) override;
  bool Delete(int32_t parameter_id) override;
};

}  // namespace orvmysql
