#pragma once

// A MariaDB server for tests, benchmarks and the demo: either a private one,
// started from the server binaries on a temporary data directory (unix socket
// plus a loopback port) and removed when done, or an existing one named by the
// environment:
//   ORVMYSQL_SERVER    host name, or the absolute path of a unix socket
//   ORVMYSQL_PORT      TCP port (default 3306)
//   ORVMYSQL_USER      user (default root)
//   ORVMYSQL_PASSWORD  password (default empty)
// The user must be allowed to create and drop databases.

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "orvmysql/Connection.h"

namespace orvmysql::devkit {

struct ServerAddress {
  std::string server;  // host name, or the unix socket path
  std::string port;
  std::string user;
  std::string password;
  std::string socket;  // the unix socket of a private server, empty otherwise

  CDPConnector Connector(const std::string& database) const;
};

class DevServer {
 public:
  // Starts a private server unless ORVMYSQL_SERVER is set. The log function,
  // when given, receives one line per step.
  static std::unique_ptr<DevServer> Acquire(std::function<void(const std::string&)> log = {});
  ~DevServer();  // stops a private server and removes its data directory

  const ServerAddress& Address() const { return address_; }
  bool IsPrivate() const { return pid_ > 0; }

 private:
  DevServer() = default;
  void StartPrivate(const std::function<void(const std::string&)>& log);
  void Stop() noexcept;

  ServerAddress address_;
  std::string root_dir_;
  int pid_ = 0;
};

// Runs one statement on the server outside any database (for CREATE/DROP DATABASE).
void AdminExecute(const ServerAddress& address, const std::string& sql);

// Creates the database when needed and every table and key row of the schema
// in it. Running it again changes nothing and loses nothing.
void InstallSchema(const ServerAddress& address, const std::string& database);
// The DDL statements, one per element, in order.
std::vector<std::string> SchemaStatements();

}  // namespace orvmysql::devkit
