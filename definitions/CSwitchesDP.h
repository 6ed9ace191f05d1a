#pragma once

#include "definitions/DefinitionProvider.h"
#include "orvmysql/Definitions.h"

namespace orvmysql {

// The switchs of a definition's graph (tblSwitches).
class CSwitchesDP : public DefinitionProvider, public ISwitchesDP {
 public:
  // ISwitchesDP
  int32_t Add(const FieldArray& fields) override;
  bool Update(int32_t switch_id, const FieldArray& fields) override;
  bool Delete(int32_t switch_id, int32_t definition_id) override;
  std::shared_ptr<IListIterator> GetByID(int32_t switch_id) override;
  std::shared_ptr<IListIterator> GetForProcess(int32_t definition_id) override;
  std::shared_ptr<IListIterator> Load(const std::string& filter) override;
};

}  // namespace orvmysql
