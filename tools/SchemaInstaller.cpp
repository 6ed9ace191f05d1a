#include <cctype>
#include <sstream>
#include <string>
#include <vector>

#include "orvmysql/Error.h"
#include "tools/DevServer.h"

namespace orvmysql::devkit {

extern const char* const kSchemaSql;

namespace {

void RequirePlainName(const std::string& database) {
  bool ok = !database.empty() && database.size() <= 64;
  for (char c : database) ok = ok && (std::isalnum(static_cast<unsigned char>(c)) || c == '_');
  if (!ok) {
    ThrowRuntimeError(kErrInvalidCall,
                      "database name '" + database + "' (letters, digits and _ only)");
  }
}

}  // namespace

std::vector<std::string> SchemaStatements() {
  std::vector<std::string> statements;
  std::istringstream in(kSchemaSql);
  std::string line, current;
  while (std::getline(in, line)) {
    const auto first = line.find_first_not_of(" \t\r");
    if (first == std::string::npos || line.compare(first, 2, "--") == 0) continue;
    const auto last = line.find_last_not_of(" \t\r");
    if (line[last] == ';') {
      current += line.substr(0, last);
      statements.push_back(current);
      current.clear();
    } else {
      current += line;
      current += '\n';
    }
  }
  return statements;
}

CDPConnector ServerAddress::Connector(const std::string& database) const {
  return CDPConnector(server, database, user, password, port);
}

void AdminExecute(const ServerAddress& address, const std::string& sql) {
  NewConnection(address.Connector(""))->ExecuteNonQuery(sql);
}

void InstallSchema(const ServerAddress& address, const std::string& database) {
  RequirePlainName(database);
  AdminExecute(address, "CREATE DATABASE IF NOT EXISTS `" + database +
                            "` CHARACTER SET utf8mb4 COLLATE utf8mb4_unicode_ci");
  auto connection = NewConnection(address.Connector(database));
  connection->StartSession();
  try {
    for (const std::string& statement : SchemaStatements()) connection->ExecuteNonQuery(statement);
  } catch (...) {
    connection->EndSession();
    throw;
  }
  connection->EndSession();
}

}  // namespace orvmysql::devkit
