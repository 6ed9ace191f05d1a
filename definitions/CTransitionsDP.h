#pragma once

#include "definitions/GraphRowsDP.h"

namespace orvmysql {

// The transitions of a definition's graph (tblTransitions).
class CTransitionsDP : public GraphRowsDP, public ITransitionsDP {
 public:
  CTransitionsDP();
};

}  // namespace orvmysql
