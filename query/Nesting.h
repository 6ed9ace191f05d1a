#pragma once

// The depth limit of condition trees built in code.

#include "orvmysql/Query.h"

namespace orvmysql::detail {

// Raises 5 when expressions below root are nested deeper than
// kMaxExpressionDepth (root is level 1). Walks the tree without recursion.
void RequireNestingWithinLimit(const CConditionExpression& root);

}  // namespace orvmysql::detail
