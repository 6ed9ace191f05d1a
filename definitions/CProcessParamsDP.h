#pragma once

#include "access/DataSourceBase.h"

namespace orvmysql {

class CProcessParamsDP : public DataSourceBase {};

}  // namespace orvmysql
