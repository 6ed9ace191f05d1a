#include "definitions/GraphRowsDP.h"

namespace orvmysql {

// IGraphRowsDP

int32_t GraphRowsDP::Add(const FieldArray& fields) {
  return AddRow(table_, fields);
}

bool GraphRowsDP::Update(int32_t id, const FieldArray& fields) {
  return UpdateRow(table_, id, fields) > 0;
}

bool GraphRowsDP::Delete(int32_t id, int32_t definition_id) {
  DeleteRows(table_, id, definition_id);
  return true;
}

std::shared_ptr<IListIterator> GraphRowsDP::GetByID(int32_t id) {
  return RowsByKey(table_, id);
}

std::shared_ptr<IListIterator> GraphRowsDP::GetForProcess(int32_t definition_id) {
  return RowsByOwner(table_, definition_id);
}

std::shared_ptr<IListIterator> GraphRowsDP::Load(const std::string& filter) {
  return RowsLoad(table_, filter);
}

}  // namespace orvmysql
