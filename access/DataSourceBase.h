#pragma once

// Plumbing shared by every provider: the connection given by IDataSource::Init
// and statement helpers that record the calling line for the error trail.

#include <cstddef>
#include <memory>
#include <string>

#include "access/ErrorHandling.h"
#include "orvmysql/DataHandler.h"

namespace orvmysql {

class DataSourceBase : public virtual IDataSource {
 public:
  // IDataSource
  void Init(std::shared_ptr<IConnection> connection) override;

  // The connection given by Init (null before).
  const std::shared_ptr<IConnection>& Connection() const { return connection_; }

 protected:
  // The connection; raises error 91 when Init was never called.
  IConnection& Conn() const;

  // Statements larger than the server takes in one packet are refused before
  // they are sent (error kErrDatabase, native 1153), so that the session's
  // connection is not dropped by the server and nothing is written.
  std::shared_ptr<IListIterator> Rows(const std::string& sql, int line = __builtin_LINE());
  int32_t NonQuery(const std::string& sql, int line = __builtin_LINE());
  std::string Scalar(const std::string& sql, const std::string& default_value,
                     int line = __builtin_LINE());
  std::string NextID(int32_t entity_type_code, int line = __builtin_LINE());
  bool RowExists(const std::string& table, const std::string& condition,
                 int line = __builtin_LINE());
  void StartSession(int line = __builtin_LINE());
  // Raises the error above when a statement of this many bytes would be refused.
  void RequireFits(std::size_t statement_bytes, int line = __builtin_LINE());
  void EndSession(int line = __builtin_LINE());

 private:
  std::shared_ptr<IConnection> connection_;
};

}  // namespace orvmysql
