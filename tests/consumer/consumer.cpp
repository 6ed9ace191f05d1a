// A program built outside the tree against an installed orvmysql: it stores a
// process definition and reads it back.
//
//   consumer DATABASE [--drop]
//
// The server comes from ORVMYSQL_SERVER, ORVMYSQL_PORT, ORVMYSQL_USER and
// ORVMYSQL_PASSWORD; the database must hold the schema. --drop drops the
// database at the end.

#include <orvmysql/orvmysql.h>
#include <unistd.h>

#include <cstdlib>
#include <iostream>
#include <string>

namespace {

std::string Env(const char* name, const char* fallback) {
  const char* v = std::getenv(name);
  return v != nullptr && *v != '\0' ? v : fallback;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) {
    std::cerr << "usage: consumer DATABASE [--drop]\n";
    return 2;
  }
  const std::string database = argv[1];
  const std::string name = "consumer " + std::to_string(getpid());
  try {
    auto handler = orvmysql::CreateObjectAs<orvmysql::CMYSqlDP>("orvmysql.CMYSqlDP");
    handler->Init(orvmysql::CDPConnector(Env("ORVMYSQL_SERVER", "localhost"), database,
                                         Env("ORVMYSQL_USER", "root"), Env("ORVMYSQL_PASSWORD", ""),
                                         Env("ORVMYSQL_PORT", "3306")));
    handler->StartSession();
    auto definitions = std::dynamic_pointer_cast<orvmysql::IOrvDefinitionsDP>(
        handler->GetDataSource(orvmysql::kDsDefinitions));
    orvmysql::FieldArray fields(24);
    fields[0] = name;
    fields[7] = "consumer";
    for (int i : {2, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20, 21}) fields[i] = 0;
    definitions->Add(fields);
    auto rows = definitions->Load("WHERE ProcDefName = '" + name + "'");
    const bool found =
        rows->GetNext() && rows->CurrentItem()->GetValue("ProcDefName").ToText() == name;
    if (argc > 2 && std::string(argv[2]) == "--drop") {
      handler->Connection()->ExecuteNonQuery("DROP DATABASE `" + database + "`");
    }
    handler->EndSession();
    if (!found) {
      std::cerr << "consumer: the stored definition was not read back\n";
      return 1;
    }
    std::cout << "consumer: stored and read back \"" << name << "\" (library " << handler->Type()
              << ")\n";
    return 0;
  } catch (const std::exception& e) {
    std::cerr << "consumer failed: " << e.what() << "\n";
    return 1;
  }
}
