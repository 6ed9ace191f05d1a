#pragma once

#include "access/DataSourceBase.h"

namespace orvmysql {

class CTransitionsDP : public DataSourceBase {};

}  // namespace orvmysql
