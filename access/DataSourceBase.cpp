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

std::shared_ptr<IListIterator> DataSourceBase::Rows(const std::string& sql,
                                                    const std::source_location& where) {
  detail::MarkLine(where);
  return Conn().Execute(sql);
}

int32_t DataSourceBase::NonQuery(const std::string& sql, const std::source_location& where) {
  detail::MarkLine(where);
  return Conn().ExecuteNonQuery(sql);
}

std::string DataSourceBase::Scalar(const std::string& sql, const std::string& default_value,
                                   const std::source_location& where) {
  detail::MarkLine(where);
  return Conn().ExecuteScalar(sql, default_value);
}

std::string DataSourceBase::NextID(int32_t entity_type_code, const std::source_location& where) {
  detail::MarkLine(where);
  return GetNextID(Conn(), entity_type_code);
}

bool DataSourceBase::RowExists(const std::string& table, const std::string& condition,
                               const std::source_location& where) {
  detail::MarkLine(where);
  return Exists(Conn(), table, condition);
}

void DataSourceBase::StartSession(const std::source_location& where) {
  detail::MarkLine(where);
  Conn().StartSession();
}

void DataSourceBase::EndSession(const std::source_location& where) {
  detail::MarkLine(where);
  Conn().EndSession(true);
}

}  // namespace orvmysql
