#include "access/DataSourceBase.h"

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

std::shared_ptr<IListIterator> DataSourceBase::Rows(const std::string& sql, int line) {
  detail::MarkLine(line);
  return Conn().Execute(sql);
}

int32_t DataSourceBase::NonQuery(const std::string& sql, int line) {
  detail::MarkLine(line);
  return Conn().ExecuteNonQuery(sql);
}

std::string DataSourceBase::Scalar(const std::string& sql, const std::string& default_value,
                                   int line) {
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
