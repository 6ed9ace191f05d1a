#pragma once

// Runtime providers whose operations are not built yet. Each is created and
// initialised like the others and implements IDataSource only.

#include "access/DataSourceBase.h"

namespace orvmysql {

class COrvEngineDP : public DataSourceBase {};

}  // namespace orvmysql
