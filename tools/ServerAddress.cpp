#include "tools/ServerAddress.h"

#include <cstdlib>

namespace orvmysql::devkit {

namespace {

std::string Env(const char* name, const std::string& fallback) {
  const char* v = std::getenv(name);
  return v != nullptr && *v != '\0' ? std::string(v) : fallback;
}

}  // namespace

CDPConnector ServerAddress::Connector(const std::string& database) const {
  return CDPConnector(server, database, user, password, port);
}

ServerAddress ServerAddress::FromEnvironment(const std::string& default_server) {
  return {Env("ORVMYSQL_SERVER", default_server), Env("ORVMYSQL_PORT", "3306"),
          Env("ORVMYSQL_USER", "root"), Env("ORVMYSQL_PASSWORD", ""), ""};
}

void AdminExecute(const ServerAddress& address, const std::string& sql) {
  NewConnection(address.Connector(""))->ExecuteNonQuery(sql);
}

}  // namespace orvmysql::devkit
