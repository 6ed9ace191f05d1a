#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "access/ConnectionPool.h"
#include "access/InUse.h"
#include "access/OptionFiles.h"
#include "orvmysql/Connection.h"
#include "orvmysql/Observer.h"

struct st_mysql;

namespace orvmysql {

class Recordset;

// The connector's five values, as the connector gave them; an empty port
// becomes "3306".
struct ConnectionSettings {
  std::string server, database, user, password, port;
};

// Shown in place of the password wherever the connection string is reported.
inline constexpr std::string_view kMaskedPassword = "********";

// Reads the connector's values.
ConnectionSettings ReadConnector(const IDPConnector& connector);
// The connection string with the given password text: "Driver=MySQL ODBC 5.1
// Driver;DATABASE=" + database + ";SERVER=" + server + ";UID=" + user +
// ";PASSWORD=" + password + ";PORT=" + port + ";OPTION=18475;", values unquoted.
std::string BuildConnectionString(const ConnectionSettings& settings, std::string_view password);
// The connection string of the connector, password included.
std::string BuildConnectionString(const IDPConnector& connector);

// True for the client and server errors after which a connection is gone (the
// server went away, the connection was lost during a statement or timed out,
// was killed, or the server shut down): the connection must be closed and a
// new one opened before the next statement. The failed statement itself is
// never sent again: when the loss came after it was sent, whether it ran is
// unknown.
bool IsConnectionLost(unsigned native_error);

class CConnection final : public IConnection {
 public:
  CConnection();
  ~CConnection() override;

  // Keeps the connector's values and builds the connection string; opens nothing.
  void Init(const IDPConnector& connector);

  // Every call below raises 61442 when another thread is inside a call on
  // this connection (see access/InUse.h).

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
  // (max_allowed_packet) is read with every connect, in the round trip that
  // checks the session's character sets, and kept until the next connect.
  void RequireFits(std::size_t statement_bytes);

  int32_t SessionDepth() const { return depth_; }
  // True while a database connection is held.
  bool IsOpen() const { return db_ != nullptr; }
  // True while the server reports a transaction open on the held connection.
  bool InTransaction() const;
  // The connection string with the password masked.
  const std::string& MaskedConnectionString() const { return masked_connection_string_; }
  // Reports every statement to the observer (besides the process's); null for none.
  void SetStatementObserver(std::shared_ptr<const StatementObserver> observer) {
    observer_ = std::move(observer);
  }

 private:
  struct Closer {
    void operator()(st_mysql* db) const noexcept;
  };

  void OpenConn();
  void Close();
  // Reads the option files and the pool settings, once per object.
  void ReadSettings();
  // The library's settings of a new session (SQL mode, autocommit, state
  // tracking when pooled), after a connect and after a reset.
  void SetUpSession();
  // Takes an idle pooled connection; false when pooling is off or none is idle.
  bool TakePooled();
  // Gives the connection back to the pool, reset if statements left session
  // state behind, or closes it.
  void Release() noexcept;
  // After a failed statement: closes a connection opened for the statement
  // alone, and a session's connection when it is lost, so that the session's
  // next statement connects afresh at the same depth.
  void CloseAfterFailure() noexcept;
  // Sends a statement on the open connection. One that ran alone in
  // autocommit and hit a deadlock or lock-wait timeout was rolled back
  // entirely, so it is sent again, up to lock_retries times, after a random
  // pause; inside a transaction the error goes to the caller at once.
  void Send(const std::string& sql);
  // Runs a statement on the open connection; the result, if any, fully read.
  std::shared_ptr<const Recordset> Run(const std::string& sql, int32_t* affected);
  // Runs the call (which sets the row count) and reports it to the observers.
  template <class Call>
  auto Observed(const std::string& sql, Call&& call);

  std::unique_ptr<st_mysql, Closer> db_;
  ConnectionSettings settings_;
  std::string connection_string_;
  std::string masked_connection_string_;
  int32_t depth_ = 0;
  std::size_t max_packet_ = 0;  // the server's max_allowed_packet, 0 until read
  std::optional<detail::OptionFileSettings> option_files_;
  detail::PoolSettings pool_;
  std::string pool_key_;        // every setting the connection is made with
  bool session_state_ = false;  // statements on db_ left session state behind
  std::shared_ptr<const StatementObserver> observer_;
  int32_t retries_ = 0;  // of the statement under way, for its observers
  detail::InUseMark in_use_;
};

}  // namespace orvmysql
