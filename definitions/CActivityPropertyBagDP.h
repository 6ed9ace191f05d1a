#pragma once

#include "access/TableProvider.h"
#include "orvmysql/Definitions.h"

namespace orvmysql {

// The property bag of an activity (tblActivityPropertyBag).
class CActivityPropertyBagDP : public TableProvider, public IPropertyValueDP {
 public:
  // IPropertyValueDP
  std::shared_ptr<IListIterator> GetPropertiesForEntity(int32_t activity_id) override;
  std::shared_ptr<IListIterator> GetPropertyByID(int32_t property_id) override;
  std::shared_ptr<IListIterator> Load(const std::string& condition) override;
  int32_t Add(const FieldArray& fields) override;
  bool Update(int32_t property_id, const FieldArray& fields) override;
  bool Delete(int32_t property_id, int32_t activity_id) override;
};

}  // namespace orvmysql
