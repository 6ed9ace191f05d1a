#pragma once

#include "access/KeyedRowsDP.h"
#include "orvmysql/Routing.h"

namespace orvmysql {

// The operations of the routing providers with numeric keys (splits and
// paths), carried out on the keyed table that the concrete provider names.
class RoutingRowsDP : public KeyedRowsDP<IRoutingRowsDP> {
 public:
  // IRoutingRowsDP
  bool Delete(int32_t id) override;
  int32_t GetCurrentState(int32_t id) override;
  bool ChangeState(int32_t id, int32_t value, bool add) override;

 protected:
  using KeyedRowsDP::KeyedRowsDP;
};

}  // namespace orvmysql
