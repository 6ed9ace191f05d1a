#pragma once

// Runtime providers whose operations are not built yet. Each is created and
// initialised like the others and implements IDataSource only.

#include "access/DataSourceBase.h"

namespace orvmysql {

class CAIPropertyDataDP : public DataSourceBase {};
class CActivityInstanceDataDP : public DataSourceBase {};
class CWorkitemsDP : public DataSourceBase {};
class CProcInstanceDP : public DataSourceBase {};
class COrvEngineDP : public DataSourceBase {};
class CActivityInstanceDP : public DataSourceBase {};
class CPIReleventDataDP : public DataSourceBase {};
class CProcInstDataDP : public DataSourceBase {};

}  // namespace orvmysql
