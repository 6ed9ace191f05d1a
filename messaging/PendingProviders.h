#pragma once

// Messaging providers whose operations are not built yet. Each is created and
// initialised like the others and implements IDataSource only.

#include "access/DataSourceBase.h"

namespace orvmysql {

class CMessageDP : public DataSourceBase {};
class CAttachmentDP : public DataSourceBase {};

}  // namespace orvmysql
