#pragma once

#include "access/TableProvider.h"
#include "orvmysql/Definitions.h"

namespace orvmysql {

// The parameter bag of an activity (tblActivityParamBag). Add and Update read
// two different field layouts (see IParameterValueDP).
class CActivityParamBagDP : public TableProvider, public IParameterValueDP {
 public:
  // IParameterValueDP
  std::shared_ptr<IListIterator> GetParameterForEntity(int32_t activity_id) override;
  std::shared_ptr<IListIterator> GetParameterByID(int32_t parameter_id) override;
  std::shared_ptr<IListIterator> Load(const std::string& condition) override;
  // The new ActivityParameterID (a 32-bit integer), or -1.
  Variant Add(const FieldArray& fields) override;
  bool Update(int32_t parameter_id, const FieldArray& fields) override;
  bool Delete(int32_t parameter_id, int32_t activity_id) override;
};

}  // namespace orvmysql
