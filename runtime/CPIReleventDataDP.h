#pragma once

#include "access/TableProvider.h"
#include "orvmysql/Definitions.h"
#include "orvmysql/InstanceData.h"

namespace orvmysql {

// Case-relevant data (tblPIReleventData): parameter values recorded against
// the activity instances of a process instance, read with the name of their
// activity. The field array is described in orvmysql/InstanceData.h.
class CPIReleventDataDP : public TableProvider, public IParameterValueDP {
 public:
  // IParameterValueDP
  std::shared_ptr<IListIterator> GetParameterForEntity(int32_t process_instance_id) override;
  std::shared_ptr<IListIterator> GetParameterByID(int32_t data_id) override;
  std::shared_ptr<IListIterator> Load(const std::string& condition) override;
  // Always true (a Boolean).
  Variant Add(const FieldArray& fields) override;
  bool Update(int32_t data_id, const FieldArray& fields) override;
  bool Delete(int32_t data_id, int32_t entity_id) override;
};

}  // namespace orvmysql
