#pragma once

#include "access/DataSourceBase.h"

namespace orvmysql {

class CSwitchesDP : public DataSourceBase {};

}  // namespace orvmysql
