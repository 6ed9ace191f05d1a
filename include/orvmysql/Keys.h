#pragma once

#include <cstdint>
#include <string>

#include "orvmysql/Connection.h"
#include "orvmysql/Export.h"

namespace orvmysql {

// A new key for the entity type code (a negated data-source code, for example
// -10 for work items) from tblKeyGen, as decimal text. Safe against other
// writers through an optimistic compare-and-set; raises 8196 ("Error while
// generating primary key.") when the code has no row or six attempts lose.
ORVMYSQL_EXPORT std::string GetNextID(IConnection& connection, int32_t entity_type_code);

}  // namespace orvmysql
