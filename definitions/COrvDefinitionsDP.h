#pragma once

#include "access/TableProvider.h"
#include "orvmysql/Definitions.h"

namespace orvmysql {

// Process definitions (tblProcessDef) and the cascade that deletes a
// definition with everything that hangs on it.
class COrvDefinitionsDP : public TableProvider, public IOrvDefinitionsDP {
 public:
  // IOrvDefinitionsDP
  bool Delete(int32_t definition_id) override;
  bool IsOrvdefinitionInUse(int32_t definition_id) override;
  bool IsWorkflowPublished(int32_t definition_id) override;
  std::shared_ptr<IListIterator> Load(const std::string& filter) override;
  std::shared_ptr<IListIterator> GetProcessDefByID(int32_t definition_id) override;
  bool WorkflowDefinitionExist(const std::string& name, int32_t definition_id) override;
  bool Update(int32_t definition_id, const FieldArray& fields) override;
  bool Add(const FieldArray& fields) override;
};

}  // namespace orvmysql
