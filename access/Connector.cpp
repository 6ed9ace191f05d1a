#include "orvmysql/Connection.h"

namespace orvmysql {

CDPConnector::CDPConnector(std::string server, std::string database, std::string user,
                           std::string password, std::string port)
    : server_(std::move(server)),
      database_(std::move(database)),
      user_(std::move(user)),
      password_(std::move(password)),
      port_(std::move(port)) {}

}  // namespace orvmysql
