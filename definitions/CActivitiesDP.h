#pragma once

#include "access/DataSourceBase.h"

namespace orvmysql {

class CActivitiesDP : public DataSourceBase {};

}  // namespace orvmysql
