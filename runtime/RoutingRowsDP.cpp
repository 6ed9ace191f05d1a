#include "runtime/RoutingRowsDP.h"

namespace orvmysql {

// IRoutingRowsDP

bool RoutingRowsDP::Delete(int32_t id) {
  DeleteRows(table_, id, 0);
  return true;
}

int32_t RoutingRowsDP::GetCurrentState(int32_t id) {
  return CurrentState(table_, id);
}

bool RoutingRowsDP::ChangeState(int32_t id, int32_t value, bool add) {
  return ChangeStateWord(table_, id, value, add);
}

}  // namespace orvmysql
