#include "orvmysql/DataHandler.h"

#include "access/Connection.h"
#include "access/DataSourceFactory.h"
#include "access/ErrorHandling.h"

namespace orvmysql {

namespace {

IConnection& Required(const std::shared_ptr<IConnection>& connection) {
  if (!connection) ThrowRuntimeError(kErrObjectNotSet);
  return *connection;
}

// Session operations report under these texts; EndSession shares StartSession's.
constexpr detail::Handler kSessionHandler{"CMSAccessDP:IOrvDataHandler_StartSession Ln ", true};

}  // namespace

// IDataProvider

std::string CMYSqlDP::Type() const {
  return "MYSQL";
}

// IOrvDataHandler

void CMYSqlDP::Init(const IDPConnector& connector) {
  auto connection = std::make_shared<CConnection>();
  connection->Init(connector);
  connection->SetStatementObserver(observer_);
  connection_ = std::move(connection);
}

void CMYSqlDP::StartSession() {
  detail::Guard(kSessionHandler, [&] { Required(connection_).StartSession(); });
}

void CMYSqlDP::EndSession(const Variant& unused) {
  detail::Guard(kSessionHandler, [&] { Required(connection_).EndSession(unused); });
}

std::shared_ptr<IDataSource> CMYSqlDP::GetDataSource(int32_t code) {
  return detail::Guard({"CMSAccessDP:IOrvDataHandler_GetDataSource Ln "}, [&] {
    std::shared_ptr<IDataSource> source = NewDataSource(code);
    // An unknown code creates nothing, and initialising nothing is error 91.
    if (!source) ThrowRuntimeError(kErrObjectNotSet);
    source->Init(connection_);
    return source;
  });
}

// Observation

void CMYSqlDP::SetStatementObserver(StatementObserver observer) {
  observer_ = observer ? std::make_shared<const StatementObserver>(std::move(observer)) : nullptr;
  if (auto connection = std::dynamic_pointer_cast<CConnection>(connection_)) {
    connection->SetStatementObserver(observer_);
  }
}

}  // namespace orvmysql
