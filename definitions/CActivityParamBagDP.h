#pragma once

#include "access/DataSourceBase.h"

namespace orvmysql {

class CActivityParamBagDP : public DataSourceBase {};

}  // namespace orvmysql
