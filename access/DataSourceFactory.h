#pragma once

#include <cstdint>
#include <memory>

#include "orvmysql/DataHandler.h"

namespace orvmysql {

// A new, uninitialised provider for a data-source code; null for a code that
// has no provider (1, 2, 3, 12 and everything outside 4..24).
std::shared_ptr<IDataSource> NewDataSource(int32_t code);

}  // namespace orvmysql
