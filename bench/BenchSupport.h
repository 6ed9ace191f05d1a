#pragma once

// Shared by the benchmarks that need a database: one server per benchmark run
// (private unless ORVMYSQL_SERVER names one) and one database with the schema.

#include <memory>
#include <string>

#include "orvmysql/DataHandler.h"
#include "tools/DevServer.h"

namespace orvbench {

const orvmysql::devkit::ServerAddress& Server();
// The name of the benchmark database (created on first use, with the schema).
const std::string& Database();
// A data handler initialised for the benchmark database.
std::shared_ptr<orvmysql::CMYSqlDP> NewHandler();
// The server's count of statements run ("Questions") for this client
// connection's session; read through the given connection.
long long StatementCount(orvmysql::IConnection& connection);

}  // namespace orvbench
