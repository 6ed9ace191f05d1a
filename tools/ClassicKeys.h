#pragma once

// The key protocol of the older tools that share tblKeyGen with this library,
// kept as a competing writer for the tests and the key soak: one SELECT of the
// row, then up to six compare-and-set UPDATEs, each guessing that every
// competitor took exactly one key, and never reading the row again.

#include <cstdint>
#include <optional>

#include "orvmysql/Connection.h"

namespace orvmysql::devkit {

// The key taken, or nothing when the row is missing, six updates matched no
// row, or only the sixth did (that key is then used up without being handed out).
std::optional<int32_t> ClassicNextKey(IConnection& connection, int32_t entity_type_code);

}  // namespace orvmysql::devkit
