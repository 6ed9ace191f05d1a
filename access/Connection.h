#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "orvmysql/Connection.h"

struct st_mysql;

namespace orvmysql {

class Recordset;

// The settings read back from a connection string.
struct ConnectionSettings {
  std::string server, database, user, password, port;
  uint32_t option = 0;
};

// Builds "Driver=MySQL ODBC 5.1
// Driver;DATABASE=...;SERVER=...;UID=...;PASSWORD=...;PORT=...;OPTION=18475;" (values are not
// quoted; an empty port becomes 3306).
std::string BuildConnectionString(const IDPConnector& connector);
// Reads the settings back; keys match without regard to case.
ConnectionSettings ParseConnectionString(const std::string& text);

class CConnection final : public IConnection {
 public:
  CConnection();
  ~CConnection() override;

  // Builds and keeps the connection string; opens nothing.
  void Init(const IDPConnector& connector);

  // IConnection
  std::string ConnectionString() const override { return connection_string_; }
  void StartSession() override;
  void EndSession(const Variant& unused = Variant()) override;
  bool TestConnection() override { return false; }
  std::shared_ptr<IListIterator> Execute(const std::string& sql) override;
  int32_t ExecuteNonQuery(const std::string& sql) override;
  std::string ExecuteScalar(const std::string& sql, const std::string& default_value) override;

  // Raises error kErrDatabase (native 1153, SQLSTATE 08S01) naming the
  // server's limit when a statement of this many bytes is larger than the
  // server takes in one packet, before it is sent. The limit
  // (max_allowed_packet) is read from the server once and kept until the next
  // session opens a connection.
  void RequireFits(std::size_t statement_bytes);

  int32_t SessionDepth() const { return depth_; }
  // True while a database connection is held.
  bool IsOpen() const { return db_ != nullptr; }

 private:
  struct Closer {
    void operator()(st_mysql* db) const noexcept;
  };

  void OpenConn();
  void Close();
  void CloseQuietly() noexcept;
  // Runs a statement on the open connection; the result, if any, fully read.
  std::shared_ptr<const Recordset> Run(const std::string& sql, int32_t* affected);

  std::unique_ptr<st_mysql, Closer> db_;
  std::string connection_string_;
  int32_t depth_ = 0;
  std::size_t max_packet_ = 0;  // the server's max_allowed_packet, 0 until read
};

}  // namespace orvmysql
