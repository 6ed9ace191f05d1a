// orvmysql-schema: creates, checks and upgrades the schema of the workflow
// store in a MariaDB or MySQL database.

#include <getopt.h>

#include <iostream>
#include <string>
#include <vector>

#include "access/Version.h"
#include "tools/SchemaInstaller.h"

namespace {

constexpr const char* kUsage = R"(Usage: orvmysql-schema [OPTION]... COMMAND
Creates, checks and upgrades the tables of the workflow store in a database.

Commands:
  create   create the database when it is missing, the tables and key rows
           that are missing, and apply the migrations not yet applied; says
           what changed. Existing tables and rows are kept as they are.
  check    compare the database with the schema of this version (tables,
           columns, indexes, key rows, applied migrations) and print every
           difference. The expected schema is built in a scratch database on
           the same server and dropped again.
  upgrade  apply the migrations not yet recorded in tblSchemaVersion, in order.
  print    print the SQL: the baseline, then each migration.

Options:
  -d, --database=NAME          the database (letters, digits and _)
  -s, --server=HOST|SOCKET     host name, or the absolute path of a unix socket
  -P, --port=N                 TCP port
  -u, --user=USER              user
  -p, --password=PASSWORD      password (other users can see a command line:
                               prefer ORVMYSQL_PASSWORD)
      --scratch-database=NAME  the scratch database of check
                               (default: orvmysql_check_ and the process id)
  -h, --help                   print this help and exit
  -V, --version                print the version and exit

Settings not given come from ORVMYSQL_SERVER, ORVMYSQL_PORT, ORVMYSQL_USER and
ORVMYSQL_PASSWORD (defaults: localhost, 3306, root, empty).

Exit status: 0 done (check: no difference), 1 check found differences,
2 wrong usage, 3 the command failed.
)";

constexpr int kExitDrift = 1;
constexpr int kExitUsage = 2;
constexpr int kExitFailed = 3;

int UsageError(const std::string& message) {
  std::cerr << "orvmysql-schema: " << message << "\n"
            << "Try 'orvmysql-schema --help' for more information.\n";
  return kExitUsage;
}

// The text with every occurrence of the password replaced, so that no message
// this tool prints shows it.
std::string Masked(std::string text, const std::string& password) {
  if (password.empty()) return text;
  for (auto at = text.find(password); at != std::string::npos; at = text.find(password, at + 8)) {
    text.replace(at, password.size(), "********");
  }
  return text;
}

std::string Joined(const std::vector<std::string>& items) {
  std::string text;
  for (const auto& item : items) text += (text.empty() ? "" : ", ") + item;
  return text;
}

void Print() {
  const auto& source = orvmysql::devkit::SchemaSource::BuiltIn();
  std::cout << source.baseline;
  for (const auto& m : source.migrations) std::cout << "\n-- migration " << m.name << "\n" << m.sql;
}

int Create(orvmysql::devkit::SchemaInstaller& installer, const std::string& database) {
  const auto result = installer.Create();
  if (!result.Changed()) {
    std::cout << "database " << database << " is up to date; nothing changed\n";
    return 0;
  }
  if (result.database_created) std::cout << "created database " << database << "\n";
  if (result.tables_created.size() == 1) {
    std::cout << "created table " << result.tables_created.front() << "\n";
  } else if (!result.tables_created.empty()) {
    std::cout << "created " << result.tables_created.size()
              << " tables: " << Joined(result.tables_created) << "\n";
  }
  if (result.rows_added > 0) {
    std::cout << "added " << result.rows_added
              << (result.rows_added == 1 ? " key row\n" : " key rows\n");
  }
  if (!result.migrations_applied.empty()) {
    std::cout << "applied migrations: " << Joined(result.migrations_applied) << "\n";
  }
  return 0;
}

int Check(orvmysql::devkit::SchemaInstaller& installer, const std::string& database,
          const std::string& scratch) {
  const auto differences = installer.Check(scratch);
  for (const auto& line : differences) std::cout << line << "\n";
  if (differences.empty()) {
    std::cout << "database " << database << " matches the schema of orvmysql "
              << ORVMYSQL_VERSION_STRING << "\n";
    return 0;
  }
  std::cout << "database " << database << ": " << differences.size()
            << (differences.size() == 1 ? " difference" : " differences")
            << " from the schema of orvmysql " << ORVMYSQL_VERSION_STRING << "\n"
            << "('upgrade' applies missing migrations, 'create' adds missing tables and key rows;\n"
            << " other differences need a database administrator)\n";
  return kExitDrift;
}

int Upgrade(orvmysql::devkit::SchemaInstaller& installer, const std::string& database) {
  const auto applied = installer.Upgrade();
  if (applied.empty()) {
    std::cout << "database " << database << " is up to date; no migration to apply\n";
  } else {
    std::cout << "applied migrations: " << Joined(applied) << "\n";
  }
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  auto address = orvmysql::devkit::ServerAddress::FromEnvironment("localhost");
  std::string database, scratch;
  enum { kScratch = 256 };
  const option options[] = {{"database", required_argument, nullptr, 'd'},
                            {"server", required_argument, nullptr, 's'},
                            {"port", required_argument, nullptr, 'P'},
                            {"user", required_argument, nullptr, 'u'},
                            {"password", required_argument, nullptr, 'p'},
                            {"scratch-database", required_argument, nullptr, kScratch},
                            {"help", no_argument, nullptr, 'h'},
                            {"version", no_argument, nullptr, 'V'},
                            {nullptr, 0, nullptr, 0}};
  for (int c; (c = getopt_long(argc, argv, "d:s:P:u:p:hV", options, nullptr)) != -1;) {
    switch (c) {
      case 'd':
        database = optarg;
        break;
      case 's':
        address.server = optarg;
        break;
      case 'P':
        address.port = optarg;
        break;
      case 'u':
        address.user = optarg;
        break;
      case 'p':
        address.password = optarg;
        break;
      case kScratch:
        scratch = optarg;
        break;
      case 'h':
        std::cout << kUsage;
        return 0;
      case 'V':
        std::cout << "orvmysql-schema (orvmysql) " << ORVMYSQL_VERSION_STRING << "\n";
        return 0;
      default:  // getopt_long has named the option already
        return UsageError("invalid command line");
    }
  }
  if (optind >= argc) return UsageError("missing command (create, check, upgrade or print)");
  const std::string command = argv[optind];
  if (optind + 1 < argc)
    return UsageError("unexpected argument '" + std::string(argv[optind + 1]) + "'");
  if (command == "print") {
    Print();
    return 0;
  }
  if (command != "create" && command != "check" && command != "upgrade") {
    return UsageError("unknown command '" + command + "'");
  }
  if (database.empty()) return UsageError(command + " needs --database");
  try {
    orvmysql::devkit::SchemaInstaller installer(address, database);
    if (command == "create") return Create(installer, database);
    if (command == "check") return Check(installer, database, scratch);
    return Upgrade(installer, database);
  } catch (const std::exception& e) {
    std::cerr << "orvmysql-schema: " << command << " failed: " << Masked(e.what(), address.password)
              << "\n";
  }
  return kExitFailed;
}
