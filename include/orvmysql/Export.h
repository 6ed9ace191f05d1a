#pragma once

// Symbols of the public API are exported from the shared library; everything
// else stays hidden.
#if defined(ORVMYSQL_BUILDING)
#define ORVMYSQL_EXPORT __attribute__((visibility("default")))
#else
#define ORVMYSQL_EXPORT
#endif
