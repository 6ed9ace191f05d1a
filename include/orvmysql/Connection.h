#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "orvmysql/List.h"
#include "orvmysql/Object.h"
#include "orvmysql/Variant.h"

namespace orvmysql {

// The engine's connector object: the database settings handed to
// IOrvDataHandler::Init. An empty port means 3306. A server that is an absolute
// path names the server's unix socket instead of a host.
class ORVMYSQL_EXPORT IDPConnector : public virtual IObject {
 public:
  virtual std::string Server() const = 0;
  virtual std::string Database() const = 0;
  virtual std::string User() const = 0;
  virtual std::string Password() const = 0;
  virtual std::string Port() const = 0;
};

// A plain connector holding the five settings ("orvmysql.CDPConnector").
class ORVMYSQL_EXPORT CDPConnector : public IDPConnector {
 public:
  CDPConnector() = default;
  CDPConnector(std::string server, std::string database, std::string user, std::string password,
               std::string port = {});

  std::string Server() const override { return server_; }
  std::string Database() const override { return database_; }
  std::string User() const override { return user_; }
  std::string Password() const override { return password_; }
  std::string Port() const override { return port_; }

  void SetServer(std::string v) { server_ = std::move(v); }
  void SetDatabase(std::string v) { database_ = std::move(v); }
  void SetUser(std::string v) { user_ = std::move(v); }
  void SetPassword(std::string v) { password_ = std::move(v); }
  void SetPort(std::string v) { port_ = std::move(v); }

 private:
  std::string server_, database_, user_, password_, port_;
};

// The session's connection, the only path to the database. Sessions nest: the
// first StartSession takes a database connection and the matching last
// EndSession gives it up; a statement outside any session uses a connection
// for itself alone. Connections come from the process's pool of idle ones and
// go back to it, reset when statements left session state behind (README,
// "Pooled connections"); with the pool off they are opened and closed.
// Sessions run at READ COMMITTED. Every statement commits by itself, except in the
// operations documented as one transaction: they run between START
// TRANSACTION and COMMIT in a session level of their own, roll back before a
// failure is raised, run again as a whole after a deadlock (1213), and join a
// transaction the caller has opened on the connection instead of starting
// their own.
//
// Connects with the connector's values as they are (a password may hold ";")
// and the settings of the standard option files (TLS, time limits; see the
// README, "Connection options"). No call waits without limit: connects, sends
// and answers have time limits, 10, 60 and 300 s unless the files set others.
//
// A statement that fails because the connection was lost (2006, 2013) raises;
// the next statement, in the same session at the same depth, connects afresh.
// The library never sends a failed statement again, except one that ran alone
// in autocommit and hit a deadlock (1213) or lock-wait timeout (1205): the
// server rolled it back whole, so it is retried up to 3 times after a short
// random pause (StatementEvent::retries counts them).
//
// A connection is used from one thread at a time; a call made while another
// thread is inside one raises 61442 (0x8004F002) without touching the
// connection.
//
// Every connect reads back the session's character sets; a server that runs
// the session in anything but utf8mb4 (one that forces its own, such as gbk)
// is refused with 61441 naming the character set, before any statement of
// the caller runs.
class ORVMYSQL_EXPORT IConnection : public virtual IObject {
 public:
  // The connection string built by Init, password included; show
  // MaskedConnectionString instead wherever people or logs see it.
  virtual std::string ConnectionString() const = 0;
  virtual void StartSession() = 0;
  // The argument is accepted and not used. An unmatched EndSession does nothing.
  virtual void EndSession(const Variant& unused = Variant()) = 0;
  // Always false, without touching the database.
  virtual bool TestConnection() = 0;
  // Runs a statement and returns its rows, fully read, so that the list stays
  // readable after the connection is closed.
  virtual std::shared_ptr<IListIterator> Execute(const std::string& sql) = 0;
  // Runs a statement and returns the number of rows it matched.
  virtual int32_t ExecuteNonQuery(const std::string& sql) = 0;
  // The first column of the first row as text; the default when there is no
  // row or the value is NULL.
  virtual std::string ExecuteScalar(const std::string& sql, const std::string& default_value) = 0;
};

// Creates a connection ("orvmysql.CConnection") and builds its connection
// string from the connector, without connecting.
ORVMYSQL_EXPORT std::shared_ptr<IConnection> NewConnection(const IDPConnector& connector);

// The connection string with the password shown as "********", for messages
// and logs. For a connection of another make, the text after "PASSWORD=" up to
// the next ";" is masked.
ORVMYSQL_EXPORT std::string MaskedConnectionString(const IConnection& connection);

}  // namespace orvmysql
