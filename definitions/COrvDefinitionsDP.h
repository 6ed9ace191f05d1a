#pragma once

#include "access/DataSourceBase.h"

namespace orvmysql {

class COrvDefinitionsDP : public DataSourceBase {};

}  // namespace orvmysql
