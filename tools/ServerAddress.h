#pragma once

// Where the tools, tests and benchmarks find their MariaDB server, and the one
// statement they run outside any database (CREATE/DROP DATABASE).

#include <string>

#include "orvmysql/Connection.h"

namespace orvmysql::devkit {

struct ServerAddress {
  std::string server;  // host name, or the unix socket path
  std::string port;
  std::string user;
  std::string password;
  std::string socket;  // the unix socket of a private server, empty otherwise

  CDPConnector Connector(const std::string& database) const;
  // The server named by ORVMYSQL_SERVER, ORVMYSQL_PORT, ORVMYSQL_USER and
  // ORVMYSQL_PASSWORD (defaults: the given host, 3306, root, empty).
  static ServerAddress FromEnvironment(const std::string& default_server);
};

// Runs one statement on the server outside any database.
void AdminExecute(const ServerAddress& address, const std::string& sql);

}  // namespace orvmysql::devkit
