#include "access/DataSourceBase.h"

#include "access/Connection.h"
#include "access/General.h"
#include "access/QueryHelper.h"

namespace orvmysql {

// IDataSource

void DataSourceBase::Init(std::shared_ptr<IConnection> connection) {
  connection_ = std::move(connection);
}

IConnection& DataSourceBase::Conn() const {
  if (!connection_) ThrowRuntimeError(kErrObjectNotSet);
  return *connection_;
}

namespace {

// Every server takes statements of this size (its max_allowed_packet is at
// least 1024), so they need no look-up of the limit.
constexpr std::size_t kAlwaysFits = 1022;

}  // namespace

void DataSourceBase::RequireFits(std::size_t statement_bytes, int line) {
  if (statement_bytes <= kAlwaysFits) return;
  // Only our own connection can tell the server's limit; any other connection
  // leaves the decision to the server.
  auto* own = dynamic_cast<CConnection*>(&Conn());
  if (own == nullptr) return;
  detail::MarkLine(line);
  own->RequireFits(statement_bytes);
}

std::shared_ptr<IListIterator> DataSourceBase::Rows(const std::string& sql, int line) {
  RequireFits(sql.size(), line);
  detail::MarkLine(line);
  return Conn().Execute(sql);
}

int32_t DataSourceBase::NonQuery(const std::string& sql, int line) {
  RequireFits(sql.size(), line);
  detail::MarkLine(line);
  return Conn().ExecuteNonQuery(sql);
}

std::string DataSourceBase::Scalar(const std::string& sql, const std::string& default_value,
                                   int line) {
  RequireFits(sql.size(), line);
  detail::MarkLine(line);
  return Conn().ExecuteScalar(sql, default_value);
}

std::string DataSourceBase::NextID(int32_t entity_type_code, int line) {
  detail::MarkLine(line);
  return GetNextID(Conn(), entity_type_code);
}

bool DataSourceBase::RowExists(const std::string& table, const std::string& condition, int line) {
  detail::MarkLine(line);
  return Exists(connection_.get(), table, condition);
}

void DataSourceBase::StartSession(int line) {
  detail::MarkLine(line);
  Conn().StartSession();
}

void DataSourceBase::EndSession(int line) {
  detail::MarkLine(line);
  Conn().EndSession(true);
}

}  // namespace orvmysql
