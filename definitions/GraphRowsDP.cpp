#include "definitions/GraphRowsDP.h"

namespace orvmysql {

// IGraphRowsDP

bool GraphRowsDP::Delete(int32_t id, int32_t definition_id) {
  DeleteRows(table_, id, definition_id);
  return true;
}

}  // namespace orvmysql
