#pragma once

#include <cstdint>
#include <string>

#include "orvmysql/Connection.h"
#include "orvmysql/Export.h"

namespace orvmysql {

// A new key for the entity type code (a negated data-source code, for example
// -10 for work items) from tblKeyGen, as decimal text. Safe against every other
// writer of the row, in any process, through an optimistic compare-and-set;
// threads of one process take keys for one row one at a time, and a lost
// attempt reads the row again after a short random pause. Raises 8196 ("Error
// while generating primary key.") when the code has no row or six attempts
// lose (or only the sixth wins). With ORVMYSQL_KEY_BLOCK=N (1 to 100000) one
// compare-and-set reserves N keys that later calls hand out from memory; keys
// still reserved when the process ends are skipped. Call it in autocommit.
ORVMYSQL_EXPORT std::string GetNextID(IConnection& connection, int32_t entity_type_code);

}  // namespace orvmysql
