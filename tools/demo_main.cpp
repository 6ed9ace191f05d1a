// orvmysql-demo: starts (or connects to) a server, creates a fresh database
// with the schema and drives the library through its public API, printing
// each step.

#include <unistd.h>

#include <iostream>

#include "orvmysql/orvmysql.h"
#include "tools/Demo.h"
#include "tools/DevServer.h"

int main() {
  using namespace orvmysql;
  std::ostream& out = std::cout;
  try {
    auto server =
        devkit::DevServer::Acquire([&](const std::string& line) { out << "  " << line << "\n"; });
    const std::string database = "orvmysql_demo_" + std::to_string(getpid());
    devkit::InstallSchema(server->Address(), database);
    out << "  created database " << database << " with the schema\n\n";

    // The engine creates the handler by name and hands it its settings.
    auto handler = CreateObjectAs<CMYSqlDP>("orvmysql.CMYSqlDP");
    handler->Init(server->Address().Connector(database));

    orvdemo::DemoFoundation(*handler, out);
    orvdemo::DemoDefinitions(*handler, out);
    orvdemo::DemoQueries(*handler, out);
    orvdemo::DemoLanguages(*handler, out);
    orvdemo::DemoMessaging(*handler, out);
    orvdemo::DemoRuntime(*handler, out);
    orvdemo::DemoInstanceData(*handler, out);
    orvdemo::DemoEngine(*handler, out);

    devkit::AdminExecute(server->Address(), "DROP DATABASE `" + database + "`");
    out << "\nDropped database " << database << ". Done.\n";
    return 0;
  } catch (const Error& e) {
    std::cerr << "demo failed: error " << e.Number() << "\n"
              << e.Description() << "\n"
              << e.Source() << "\n";
  } catch (const std::exception& e) {
    std::cerr << "demo failed: " << e.what() << "\n";
  }
  return 1;
}
