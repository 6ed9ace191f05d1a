#pragma once

#include "runtime/RoutingRowsDP.h"

namespace orvmysql {

// The paths leaving the splits of parallel routing (tblProcPathInstance).
class CPathInstanceDP : public RoutingRowsDP, public IPathInstanceDP {
 public:
  CPathInstanceDP();

  // IPathInstanceDP
  std::shared_ptr<IListIterator> GetPathsForSplit(int32_t split_id) override;
  int32_t GetOpenPathCount(int32_t split_id) override;
};

}  // namespace orvmysql
