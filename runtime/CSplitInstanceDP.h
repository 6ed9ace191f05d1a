#pragma once

#include "runtime/RoutingRowsDP.h"

namespace orvmysql {

// The splits of parallel routing (tblProcSplitInstance).
class CSplitInstanceDP : public RoutingRowsDP, public ISplitInstanceDP {
 public:
  CSplitInstanceDP();
};

}  // namespace orvmysql
