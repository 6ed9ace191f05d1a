#pragma once

#include "definitions/GraphRowsDP.h"

namespace orvmysql {

// The switchs of a definition's graph (tblSwitches).
class CSwitchesDP : public GraphRowsDP, public ISwitchesDP {
 public:
  CSwitchesDP();
};

}  // namespace orvmysql
