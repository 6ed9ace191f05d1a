#pragma once

// The option files of a connection. Connector/C reads them itself, on every
// connect, for the settings it knows (TLS, connect time limit, character set,
// protocol, ...): the groups [client], [client-server], [client-mariadb] and
// [orvmysql] of /etc/my.cnf, /etc/mysql/my.cnf, $MARIADB_HOME/my.cnf (else
// $MYSQL_HOME/my.cnf), ~/.my.cnf and the files these include; or, when
// ORVMYSQL_OPTION_FILE names a file, that file alone. The read and write time
// limits it takes only from code, so they are read here, from [orvmysql], once
// per connection object.

#include <string>

namespace orvmysql::detail {

// The library's own group; Connector/C reads it besides the client groups.
inline constexpr const char* kOptionGroup = "orvmysql";

struct OptionFileSettings {
  std::string file;            // the one file to read; empty for the standard files
  unsigned read_timeout = 0;   // seconds; 0 leaves Connector/C's default (none)
  unsigned write_timeout = 0;  // seconds; 0 leaves Connector/C's default (none)
  // Every setting of the groups read for a connection, in the order read:
  // connections are pooled by these (see access/ConnectionPool.h).
  std::string client_settings;
  // The connection pool's keys as written (see access/ConnectionPool.h); empty
  // when not set.
  std::string pool, pool_size, pool_idle_timeout;
};

// Reads ORVMYSQL_OPTION_FILE and the time limits of [orvmysql] (keys
// read-timeout and write-timeout, or with underscores) and its pool keys
// (pool, pool-size, pool-idle-timeout). A file named by the
// variable that cannot be read, or a time limit that is not a whole number of
// seconds, raises error 5 naming the file and what is wrong.
OptionFileSettings ReadOptionFiles();

}  // namespace orvmysql::detail
