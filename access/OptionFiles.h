#pragma once

// The option files of a connection. Connector/C reads them itself, on every
// connect, for the settings it knows (TLS, connect time limit, character set,
// protocol, ...): the groups [client], [client-server], [client-mariadb] and
// [orvmysql] of /etc/my.cnf, /etc/mysql/my.cnf, $MARIADB_HOME/my.cnf (else
// $MYSQL_HOME/my.cnf), ~/.my.cnf and the files these include; or, when
// ORVMYSQL_OPTION_FILE names a file, that file alone. The read and write time
// limits it takes only from code, so they are read here, from [orvmysql], once
// per connection object, with the library's own lock-retries.

#include <string>

namespace orvmysql::detail {

// The library's own group; Connector/C reads it besides the client groups.
inline constexpr const char* kOptionGroup = "orvmysql";

// Time limits when the files set none, in seconds. A connect gets 10 s on
// every kind of host: a hung server accepts on its socket or port and then
// never greets. The longest statements the library sends are the cascades
// over whole process trees and the log clearing of every closed process, one
// DELETE per table: 300 s covers a lock wait at the server's default limit
// (innodb_lock_wait_timeout, 50 s) plus such a DELETE over several million
// rows (about 3.4 us a row measured here for a keyed UPDATE). Sending waits
// only while the server reads nothing; 60 s sends the largest statement
// (max_allowed_packet) even at a few hundred kB/s.
inline constexpr unsigned kDefaultConnectTimeout = 10;
inline constexpr unsigned kDefaultReadTimeout = 300;
inline constexpr unsigned kDefaultWriteTimeout = 60;
// Times a statement that ran alone in autocommit is sent again after a
// deadlock or lock-wait timeout.
inline constexpr unsigned kDefaultLockRetries = 3;

struct OptionFileSettings {
  std::string file;  // the one file to read; empty for the standard files
  unsigned read_timeout = kDefaultReadTimeout;    // seconds; 0 for none
  unsigned write_timeout = kDefaultWriteTimeout;  // seconds; 0 for none
  unsigned lock_retries = kDefaultLockRetries;    // 0 sends every statement once
  // Every setting of the groups read for a connection, in the order read:
  // connections are pooled by these (see access/ConnectionPool.h).
  std::string client_settings;
  // The connection pool's keys as written (see access/ConnectionPool.h); empty
  // when not set.
  std::string pool, pool_size, pool_idle_timeout;
};

// Reads ORVMYSQL_OPTION_FILE and the settings of [orvmysql] (keys
// read-timeout, write-timeout and lock-retries, or with underscores) and its
// pool keys (pool, pool-size, pool-idle-timeout). A file named by the
// variable that cannot be read, or a value that is not a whole number, raises
// error 5 naming the file and what is wrong.
OptionFileSettings ReadOptionFiles();

}  // namespace orvmysql::detail
