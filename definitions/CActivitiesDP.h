#pragma once

#include "access/TableProvider.h"
#include "orvmysql/Definitions.h"

namespace orvmysql {

// Activities of a definition (tblActivities); deleting one also deletes its
// property and parameter bags.
class CActivitiesDP : public TableProvider, public IActivitiesDP {
 public:
  // IActivitiesDP
  bool Delete(int32_t definition_id, const std::string& activity_id) override;
  std::shared_ptr<IListIterator> GetActivitiesForProcess(int32_t definition_id) override;
  std::shared_ptr<IListIterator> GetActivityByID(int32_t activity_id) override;
  std::shared_ptr<IListIterator> Load(const std::string& filter) override;
  bool ActivityExist(const std::string& name, int32_t definition_id, int32_t activity_id) override;
  bool Add(const FieldArray& fields) override;
  bool Update(int32_t definition_id, const std::string& activity_identifier,
              const FieldArray& fields) override;
};

}  // namespace orvmysql
