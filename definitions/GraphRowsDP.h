#pragma once

#include "access/KeyedRowsDP.h"
#include "orvmysql/Definitions.h"

namespace orvmysql {

// The operations of the graph providers (transitions and switches), carried
// out on the keyed table that the concrete provider names.
class GraphRowsDP : public KeyedRowsDP<IGraphRowsDP> {
 public:
  // IGraphRowsDP
  bool Delete(int32_t id, int32_t definition_id) override;

 protected:
  using KeyedRowsDP::KeyedRowsDP;
};

}  // namespace orvmysql
