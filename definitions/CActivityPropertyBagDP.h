#pragma once

#include "access/DataSourceBase.h"

namespace orvmysql {

class CActivityPropertyBagDP : public DataSourceBase {};

}  // namespace orvmysql
