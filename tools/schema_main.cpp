// orvmysql-schema: creates the tables and key rows in a database (and the
// database when it is missing). Safe to run again: nothing existing changes.

#include <cstdlib>
#include <iostream>
#include <string>

#include "orvmysql/Error.h"
#include "tools/DevServer.h"

namespace {

void Usage() {
  std::cerr << "usage: orvmysql-schema --database NAME [--server HOST|SOCKET] [--port N]\n"
               "                       [--user U] [--password P]\n"
               "       orvmysql-schema --print\n"
               "Settings not given come from ORVMYSQL_SERVER, ORVMYSQL_PORT, ORVMYSQL_USER\n"
               "and ORVMYSQL_PASSWORD (defaults: localhost, 3306, root, empty).\n";
}

std::string Env(const char* name, const char* fallback) {
  const char* v = std::getenv(name);
  return v != nullptr && *v != '\0' ? v : fallback;
}

}  // namespace

int main(int argc, char** argv) {
  using orvmysql::devkit::ServerAddress;
  ServerAddress address{Env("ORVMYSQL_SERVER", "localhost"), Env("ORVMYSQL_PORT", "3306"),
                        Env("ORVMYSQL_USER", "root"), Env("ORVMYSQL_PASSWORD", ""), ""};
  std::string database;
  for (int i = 1; i < argc; ++i) {
    const std::string arg = argv[i];
    auto value = [&]() -> std::string {
      if (i + 1 >= argc) {
        Usage();
        std::exit(2);
      }
      return argv[++i];
    };
    if (arg == "--print") {
      for (const auto& statement : orvmysql::devkit::SchemaStatements()) {
        std::cout << statement << ";\n\n";
      }
      return 0;
    } else if (arg == "--database") {
      database = value();
    } else if (arg == "--server") {
      address.server = value();
    } else if (arg == "--port") {
      address.port = value();
    } else if (arg == "--user") {
      address.user = value();
    } else if (arg == "--password") {
      address.password = value();
    } else {
      Usage();
      return 2;
    }
  }
  if (database.empty()) {
    Usage();
    return 2;
  }
  try {
    orvmysql::devkit::InstallSchema(address, database);
    std::cout << "schema installed in database " << database << " ("
              << orvmysql::devkit::SchemaStatements().size() << " statements)\n";
    return 0;
  } catch (const orvmysql::Error& e) {
    std::cerr << "orvmysql-schema: error " << e.Number() << "\n"
              << e.Description() << "\nsource: " << e.Source() << "\n";
  } catch (const std::exception& e) {
    std::cerr << "orvmysql-schema: " << e.what() << "\n";
  }
  return 1;
}
