#pragma once

#include "definitions/DefinitionProvider.h"
#include "orvmysql/Definitions.h"

namespace orvmysql {

// The transitions of a definition's graph (tblTransitions).
class CTransitionsDP : public DefinitionProvider, public ITransitionsDP {
 public:
  // ITransitionsDP
  int32_t Add(const FieldArray& fields) override;
  bool Update(int32_t transition_id, const FieldArray& fields) override;
  bool Delete(int32_t transition_id, int32_t definition_id) override;
  std::shared_ptr<IListIterator> GetByID(int32_t transition_id) override;
  std::shared_ptr<IListIterator> GetForProcess(int32_t definition_id) override;
  std::shared_ptr<IListIterator> Load(const std::string& filter) override;
};

}  // namespace orvmysql
