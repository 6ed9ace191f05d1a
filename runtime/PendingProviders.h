#pragma once

// Runtime providers whose operations are not built yet. Each is created and
// initialised like the others and implements IDataSource only.

#include "access/DataSourceBase.h"

namespace orvmysql {

class CAIPropertyDataDP : public DataSourceBase {};
class CActivityInstanceDataDP : public DataSourceBase {};
class COrvEngineDP : public DataSourceBase {};
class CPIReleventDataDP : public DataSourceBase {};
class CProcInstDataDP : public DataSourceBase {};

}  // namespace orvmysql
