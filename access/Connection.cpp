#include "access/Connection.h"

#include <mysql.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cstring>
#include <random>
#include <thread>

#include "access/ErrorHandling.h"
#include "access/OptionFiles.h"
#include "access/RSList.h"
#include "access/Recordset.h"
#include "access/StatementObservers.h"

namespace orvmysql {

namespace {

// The option bits of the connection string ("OPTION=18475") and the two of
// them that mean something here.
constexpr uint32_t kOptionBits = 18475;
constexpr uint32_t kOptionFoundRows = 2;    // an UPDATE counts the rows it matched
constexpr uint32_t kOptionCompress = 2048;  // compressed protocol, for remote servers only

std::string Trimmed(std::string_view text) {
  const auto first = text.find_first_not_of(' ');
  if (first == std::string_view::npos) return {};
  const auto last = text.find_last_not_of(' ');
  return std::string(text.substr(first, last - first + 1));
}

bool IsUnixSocket(const std::string& server) {
  return !server.empty() && server.front() == '/';
}

// Compression costs time over loopback and the unix socket and never helped
// there, so it is used only for servers on other hosts.
bool IsThisHost(const std::string& server) {
  if (server.empty() || IsUnixSocket(server) || server == "localhost" || server == "::1" ||
      server == "[::1]" || server.rfind("127.", 0) == 0) {
    return true;
  }
  char name[256] = {};
  return gethostname(name, sizeof name - 1) == 0 && server == name;
}

// Connector/C reads the option files itself when it connects, after the
// options set here, so a connect-timeout in the files wins over the default.
// The read and write time limits it takes only from code were read by the
// library and are set here.
void ApplyOptionFiles(MYSQL* db, const detail::OptionFileSettings& settings) {
  if (!settings.file.empty()) mysql_optionsv(db, MYSQL_READ_DEFAULT_FILE, settings.file.c_str());
  mysql_optionsv(db, MYSQL_READ_DEFAULT_GROUP, detail::kOptionGroup);
  mysql_optionsv(db, MYSQL_OPT_CONNECT_TIMEOUT, &detail::kDefaultConnectTimeout);
  if (settings.read_timeout != 0) {
    mysql_optionsv(db, MYSQL_OPT_READ_TIMEOUT, &settings.read_timeout);
  }
  if (settings.write_timeout != 0) {
    mysql_optionsv(db, MYSQL_OPT_WRITE_TIMEOUT, &settings.write_timeout);
  }
}

// A statement that ran alone: autocommit on and no transaction left open by
// an earlier statement. Its deadlock or lock-wait timeout rolled it back whole.
bool RunsAlone(const MYSQL* db) {
  return (db->server_status & SERVER_STATUS_AUTOCOMMIT) &&
         !(db->server_status & SERVER_STATUS_IN_TRANS);
}

bool IsLockConflict(unsigned native_error) {
  return native_error == 1213 || native_error == 1205;  // deadlock, lock-wait timeout
}

// Waits before a statement is sent again after a lock conflict: a random time
// between half and all of 10 ms x 2^(retry-1) (160 ms at most), so that the
// statements that collided do not meet again at once.
void LockBackOff(unsigned retry) {
  thread_local std::minstd_rand random(std::random_device{}());
  const int longest_us = 10000 << std::min(retry - 1, 4u);
  std::uniform_int_distribution<int> pick(longest_us / 2, longest_us);
  std::this_thread::sleep_for(std::chrono::microseconds(pick(random)));
}

Error DatabaseError(st_mysql* db) {
  Error error(kErrDatabase, "orvmysql", mysql_error(db));
  error.SetNative(mysql_errno(db), mysql_sqlstate(db));
  return error;
}

int ParseInt(const char* text, std::size_t length) {
  int value = 0;
  std::from_chars(text, text + length, value);
  return value;
}

// "yyyy-mm-dd", "yyyy-mm-dd hh:mm:ss[.ffffff]" or "hh:mm:ss"; zero dates are Null.
Variant DateValue(const char* text, std::size_t length, bool time_only) {
  try {
    if (time_only) {
      if (length < 8 || text[0] == '-') return Variant(std::string(text, length));
      return Date::FromParts(1899, 12, 30, ParseInt(text, 2), ParseInt(text + 3, 2),
                             ParseInt(text + 6, 2));
    }
    if (length < 10) return Variant(std::string(text, length));
    const int year = ParseInt(text, 4), month = ParseInt(text + 5, 2), day = ParseInt(text + 8, 2);
    if (year == 0 || month == 0 || day == 0) return Null;
    if (length < 19) return Date::FromParts(year, month, day);
    return Date::FromParts(year, month, day, ParseInt(text + 11, 2), ParseInt(text + 14, 2),
                           ParseInt(text + 17, 2));
  } catch (const Error&) {
    // Dates before year 100 have no Date form; keep the server's text.
    return Variant(std::string(text, length));
  }
}

Variant FieldValue(const MYSQL_FIELD& field, const char* text, unsigned long length) {
  if (text == nullptr) return Null;
  switch (field.type) {
    case MYSQL_TYPE_TINY:
    case MYSQL_TYPE_SHORT:
    case MYSQL_TYPE_LONG:
    case MYSQL_TYPE_INT24:
    case MYSQL_TYPE_LONGLONG:
    case MYSQL_TYPE_YEAR: {
      int64_t v = 0;
      auto [end, ec] = std::from_chars(text, text + length, v);
      if (ec == std::errc() && end == text + length) return Variant::FromInt64(v);
      double d = 0;
      std::from_chars(text, text + length, d);  // an unsigned value beyond 63 bits
      return d;
    }
    case MYSQL_TYPE_DECIMAL:
    case MYSQL_TYPE_NEWDECIMAL:
    case MYSQL_TYPE_FLOAT:
    case MYSQL_TYPE_DOUBLE: {
      double d = 0;
      std::from_chars(text, text + length, d);
      return d;
    }
    case MYSQL_TYPE_DATE:
    case MYSQL_TYPE_NEWDATE:
    case MYSQL_TYPE_DATETIME:
    case MYSQL_TYPE_TIMESTAMP:
      return DateValue(text, length, false);
    case MYSQL_TYPE_TIME:
      return DateValue(text, length, true);
    case MYSQL_TYPE_BIT: {
      int64_t v = 0;
      for (unsigned long i = 0; i < length && i < 8; ++i) {
        v = (v << 8) | static_cast<unsigned char>(text[i]);
      }
      return Variant::FromInt64(v);
    }
    default:
      return Variant(std::string(text, length));
  }
}

std::shared_ptr<const Recordset> ReadResult(MYSQL_RES* result) {
  const unsigned columns = mysql_num_fields(result);
  const MYSQL_FIELD* fields = mysql_fetch_fields(result);
  std::vector<std::string> names;
  names.reserve(columns);
  for (unsigned i = 0; i < columns; ++i) names.emplace_back(fields[i].name, fields[i].name_length);
  std::vector<Variant> cells;
  cells.reserve(static_cast<std::size_t>(mysql_num_rows(result)) * columns);
  while (MYSQL_ROW row = mysql_fetch_row(result)) {
    const unsigned long* lengths = mysql_fetch_lengths(result);
    for (unsigned i = 0; i < columns; ++i)
      cells.push_back(FieldValue(fields[i], row[i], lengths[i]));
  }
  return std::make_shared<const Recordset>(std::move(names), std::move(cells));
}

struct ResultCloser {
  void operator()(MYSQL_RES* result) const noexcept { mysql_free_result(result); }
};

// Texts are escaped for utf8mb4. A server may run a session in a character
// set other than the one the client asked for (skip-character-set-client-
// handshake, or an init_connect that changes it), and the client library
// cannot tell; in some multi-byte sets (gbk, big5, sjis, cp932) a backslash
// can be the second byte of a character, so an escaped text could end its
// literal. The session's own settings are therefore read back once per
// connect, and any other set refuses the connection. The same round trip
// reads the session's max_allowed_packet, which is returned.
std::size_t RequireUtf8mb4Session(st_mysql* db) {
  static constexpr std::string_view kQuery =
      "SELECT @@character_set_client, @@character_set_connection, @@character_set_results, "
      "@@max_allowed_packet";
  if (mysql_real_query(db, kQuery.data(), kQuery.size()) != 0) throw DatabaseError(db);
  std::unique_ptr<MYSQL_RES, ResultCloser> result(mysql_store_result(db));
  if (!result) throw DatabaseError(db);
  const MYSQL_ROW row = mysql_fetch_row(result.get());
  if (row == nullptr || mysql_num_fields(result.get()) != 4) throw DatabaseError(db);
  static constexpr const char* kNames[] = {"character_set_client", "character_set_connection",
                                           "character_set_results"};
  for (unsigned i = 0; i < 3; ++i) {
    // Results without conversion (NULL) arrive as stored, in utf8mb4.
    if (row[i] == nullptr ? i == 2 : std::strcmp(row[i], "utf8mb4") == 0) continue;
    throw Error(kErrDatabase, "orvmysql",
                std::string("the server runs this session in the character set '") +
                    (row[i] != nullptr ? row[i] : "NULL") + "' (" + kNames[i] +
                    ") instead of utf8mb4; texts escaped for utf8mb4 are not safe in it (see the "
                    "server's skip-character-set-client-handshake and init_connect)");
  }
  std::size_t max_packet = 0;
  if (row[3] != nullptr) std::from_chars(row[3], row[3] + std::strlen(row[3]), max_packet);
  return max_packet;
}

}  // namespace

ConnectionSettings ReadConnector(const IDPConnector& connector) {
  return detail::Guard({"CConnection:ConnectionString Ln "}, [&] {
    ConnectionSettings s{connector.Server(), connector.Database(), connector.User(),
                         connector.Password(), connector.Port()};
    if (s.port.empty()) s.port = "3306";
    return s;
  });
}

std::string BuildConnectionString(const ConnectionSettings& s, std::string_view password) {
  return "Driver=MySQL ODBC 5.1 Driver;DATABASE=" + s.database + ";SERVER=" + s.server +
         ";UID=" + s.user + ";" + "PASSWORD=" + std::string(password) + ";PORT=" + s.port +
         ";OPTION=18475;";
}

std::string BuildConnectionString(const IDPConnector& connector) {
  const ConnectionSettings s = ReadConnector(connector);
  return BuildConnectionString(s, s.password);
}

bool IsConnectionLost(unsigned native_error) {
  switch (native_error) {
    case 2006:  // server has gone away
    case 2013:  // lost connection during query (also a read or write time limit)
    case 2055:  // lost connection, with the system error
    case 1053:  // server shutdown in progress
    case 1927:  // connection was killed
    case 4031:  // disconnected by the server for inactivity
      return true;
    default:
      return false;
  }
}

namespace detail {

void RaiseConnectionInUse() {
  RaiseError(kMsgConnectionInUse, "CConnection");
}

}  // namespace detail

std::string MaskedConnectionString(const IConnection& connection) {
  if (const auto* ours = dynamic_cast<const CConnection*>(&connection)) {
    return ours->MaskedConnectionString();
  }
  std::string text = connection.ConnectionString();
  constexpr std::string_view kKey = "PASSWORD=";
  const auto start = text.find(kKey);
  if (start != std::string::npos) {
    const auto value = start + kKey.size();
    const auto end = text.find(';', value);
    text.replace(value, (end == std::string::npos ? text.size() : end) - value, kMaskedPassword);
  }
  return text;
}

void CConnection::Closer::operator()(st_mysql* db) const noexcept {
  mysql_close(db);
}

CConnection::CConnection() = default;

CConnection::~CConnection() {
  if (depth_ == 0) Release();  // a connection still in a session is closed
}

void CConnection::Init(const IDPConnector& connector) {
  settings_ = ReadConnector(connector);
  connection_string_ = BuildConnectionString(settings_, settings_.password);
  masked_connection_string_ = BuildConnectionString(settings_, kMaskedPassword);
}

void CConnection::ReadSettings() {
  if (option_files_) return;
  // The library reads its own settings once per connection object (reading
  // them costs about half a connect's CPU time); Connector/C reads its
  // settings on every connect.
  detail::OptionFileSettings files = detail::ReadOptionFiles();
  pool_ = detail::ReadPoolSettings(files);
  const ConnectionSettings& s = settings_;
  pool_key_.clear();
  for (const std::string* part : std::initializer_list<const std::string*>{
           &s.server, &s.database, &s.user, &s.password, &s.port, &files.client_settings}) {
    pool_key_ += *part;
    pool_key_ += '\0';
  }
  option_files_ = std::move(files);
}

bool CConnection::TakePooled() {
  try {
    ReadSettings();
  } catch (const Error&) {
    return false;  // the connect that follows reports it
  }
  if (!pool_.enabled) return false;
  db_.reset(detail::ConnectionPool::Instance().Take(pool_key_));
  return db_ != nullptr;
}

void CConnection::Release() noexcept {
  if (db_ && pool_.enabled) {
    bool clean = !session_state_;
    if (!clean && detail::ResetSession(db_.get(), settings_.database)) {
      try {
        SetUpSession();
        clean = true;
      } catch (...) {
      }
    }
    if (clean) detail::ConnectionPool::Instance().Give(pool_key_, db_.release(), pool_);
  }
  session_state_ = false;
  db_.reset();
}

void CConnection::SetUpSession() {
  max_packet_ = RequireUtf8mb4Session(db_.get());
  // Texts are escaped with backslashes; a server whose mode turns backslash
  // escapes off would misread them, so the mode is reset for this session.
  if (db_->server_status & SERVER_STATUS_NO_BACKSLASH_ESCAPES) {
    if (mysql_query(db_.get(),
                    "SET SESSION sql_mode = REPLACE(@@sql_mode, 'NO_BACKSLASH_ESCAPES', '')")) {
      throw DatabaseError(db_.get());
    }
  }
  // Every statement commits by itself. The server reports its mode in the
  // handshake, so the extra round trip is made only when it is off.
  if (!(db_->server_status & SERVER_STATUS_AUTOCOMMIT) && mysql_autocommit(db_.get(), 1)) {
    throw DatabaseError(db_.get());
  }
  // READ COMMITTED: a DELETE or UPDATE locks the rows it changes, not the
  // gaps between index entries, so the tree operations (one transaction each)
  // and the log clearing do not deadlock with other cases' inserts. Measured
  // with the case's-life workload: at 2 and 4 threads every run ended in 1213
  // on an activity-instance INSERT at REPEATABLE READ, none at READ COMMITTED.
  if (mysql_query(db_.get(), "SET SESSION TRANSACTION ISOLATION LEVEL READ COMMITTED")) {
    throw DatabaseError(db_.get());
  }
  // A pooled connection must tell whether statements left session state; a
  // server that cannot is not pooled.
  constexpr unsigned kUnknownVariable = 1193;
  if (pool_.enabled && mysql_query(db_.get(), detail::kTrackSessionState)) {
    if (mysql_errno(db_.get()) != kUnknownVariable) throw DatabaseError(db_.get());
    pool_.enabled = false;
  }
}

void CConnection::OpenConn() {
  if (depth_ >= 1 && db_) return;
  detail::Guard({"CConnection:OpenConn Ln "}, [&] {
    if (TakePooled()) return;
    db_.reset(mysql_init(nullptr));
    if (!db_) ThrowRuntimeError(kErrOutOfMemory);
    const ConnectionSettings& s = settings_;
    try {
      unsigned port = 0;
      const std::string port_text = Trimmed(s.port);
      auto [end, ec] = std::from_chars(port_text.data(), port_text.data() + port_text.size(), port);
      if (ec != std::errc() || end != port_text.data() + port_text.size() || port > 65535) {
        throw Error(kErrDatabase, "orvmysql", "Invalid port '" + s.port + "'");
      }
      mysql_optionsv(db_.get(), MYSQL_SET_CHARSET_NAME, "utf8mb4");
      ReadSettings();
      ApplyOptionFiles(db_.get(), *option_files_);
      const bool local = IsThisHost(s.server);
      unsigned long flags = 0;
      if (kOptionBits & kOptionFoundRows) flags |= CLIENT_FOUND_ROWS;
      if ((kOptionBits & kOptionCompress) && !local) flags |= CLIENT_COMPRESS;
      const bool socket = IsUnixSocket(s.server);
      if (!mysql_real_connect(db_.get(), socket ? "localhost" : s.server.c_str(), s.user.c_str(),
                              s.password.c_str(), s.database.empty() ? nullptr : s.database.c_str(),
                              port, socket ? s.server.c_str() : nullptr, flags)) {
        throw DatabaseError(db_.get());
      }
      SetUpSession();
    } catch (...) {
      // A failed connect is reported as 61441 with the client's reason and the
      // connection string, its password masked: this text reaches logs and
      // people, and ConnectionString() still gives the whole string.
      Error caught = detail::CurrentError();
      const std::string reason = caught.NativeError() != 0 ? caught.Description() : std::string();
      db_.reset();
      std::string message = detail::BuiltInMessage(kMsgConnectFailed);
      const std::string detail_text =
          "ErrNo:" + std::to_string(caught.Number()) + "\r\n" +
          " Details:" + (reason.empty() ? caught.Description() : reason);
      message.replace(message.find("%0"), 2, detail_text);
      Error failed(kErrConnectFailed, caught.Source(),
                   message + "\r\n" + masked_connection_string_);
      failed.SetNative(caught.NativeError(), caught.SqlState());
      throw failed;
    }
  });
}

// Outside a session the connection goes back to the pool (or is closed).
void CConnection::Close() {
  detail::Guard({"CDB:Close Ln "}, [&] {
    if (db_ && detail::LeftSessionState(db_.get())) session_state_ = true;
    if (db_ && depth_ == 0) Release();
  });
}

void CConnection::CloseAfterFailure() noexcept {
  if (!db_) return;
  if (IsConnectionLost(mysql_errno(db_.get()))) {
    // Never pooled again; a session's next statement connects afresh at the
    // same depth.
    db_.reset();
    session_state_ = false;
    max_packet_ = 0;  // the server may have restarted with another limit
    return;
  }
  session_state_ = true;  // a failed statement may have left anything behind
  if (depth_ == 0) Release();
}

bool CConnection::InTransaction() const {
  return db_ && (db_->server_status & SERVER_STATUS_IN_TRANS) != 0;
}

void CConnection::StartSession() {
  detail::InUseGuard in_use(in_use_);
  if (depth_ == 0) {
    max_packet_ = 0;  // a new session reads the server's limit afresh
    OpenConn();
  }
  if (depth_ == INT32_MAX) ThrowRuntimeError(kErrOverflow);
  ++depth_;
}

void CConnection::EndSession(const Variant& /*unused*/) {
  detail::InUseGuard in_use(in_use_);
  if (depth_ >= 2) {
    --depth_;
  } else if (depth_ == 1) {
    depth_ = 0;
    Close();
  }
}

void CConnection::Send(const std::string& sql) {
  const bool alone = RunsAlone(db_.get());
  for (unsigned retry = 1;; ++retry) {
    if (mysql_real_query(db_.get(), sql.data(), sql.size()) == 0) return;
    if (!alone || retry > option_files_->lock_retries || !IsLockConflict(mysql_errno(db_.get()))) {
      throw DatabaseError(db_.get());
    }
    LockBackOff(retry);
    ++retries_;
  }
}

std::shared_ptr<const Recordset> CConnection::Run(const std::string& sql, int32_t* affected) {
  Send(sql);
  std::unique_ptr<MYSQL_RES, ResultCloser> result(mysql_store_result(db_.get()));
  if (!result) {
    if (mysql_field_count(db_.get()) != 0) throw DatabaseError(db_.get());
    if (affected != nullptr) {
      const my_ulonglong n = mysql_affected_rows(db_.get());
      *affected = n > static_cast<my_ulonglong>(INT32_MAX) ? INT32_MAX : static_cast<int32_t>(n);
    }
    return std::make_shared<const Recordset>();
  }
  if (affected != nullptr) *affected = -1;
  return ReadResult(result.get());
}

template <class Call>
auto CConnection::Observed(const std::string& sql, Call&& call) {
  if (pool_.enabled && !session_state_ && detail::MayLeaveSessionState(sql)) session_state_ = true;
  int64_t rows = -1;
  retries_ = 0;
  const auto process = detail::ProcessStatementObserver();
  if (!observer_ && !process) return call(rows);
  const auto start = std::chrono::steady_clock::now();
  StatementEvent event{sql};
  try {
    auto result = call(rows);
    event.duration = std::chrono::steady_clock::now() - start;
    event.rows = rows;
    event.retries = retries_;
    detail::ReportStatement(observer_.get(), process.get(), event);
    return result;
  } catch (const Error& e) {
    event.duration = std::chrono::steady_clock::now() - start;
    event.error = &e;
    event.retries = retries_;
    detail::ReportStatement(observer_.get(), process.get(), event);
    throw;
  }
}

// IConnection statements: a failure closes a connection opened only for this
// statement, or a session's connection that is lost, and reports the
// statement's text in front of the description.

std::shared_ptr<IListIterator> CConnection::Execute(const std::string& sql) {
  detail::InUseGuard in_use(in_use_);
  return Observed(sql, [&](int64_t& rows) {
    return detail::Guard(
        {"CConnection:Execute Function Ln ", false, &sql},
        [&] {
          detail::MarkLine(__LINE__);
          OpenConn();
          detail::MarkLine(__LINE__);
          auto recordset = Run(sql, nullptr);
          Close();
          rows = static_cast<int64_t>(recordset->RowCount());
          auto list = std::make_shared<CRSList>();
          list->Init(std::move(recordset));
          return std::shared_ptr<IListIterator>(std::move(list));
        },
        [&] { CloseAfterFailure(); });
  });
}

int32_t CConnection::ExecuteNonQuery(const std::string& sql) {
  detail::InUseGuard in_use(in_use_);
  return Observed(sql, [&](int64_t& rows) {
    return detail::Guard(
        {"CDB:ExecuteNonQuery Ln ", false, &sql},
        [&] {
          detail::MarkLine(__LINE__);
          OpenConn();
          int32_t affected = 0;
          detail::MarkLine(__LINE__);
          Run(sql, &affected);
          Close();
          rows = affected;
          return affected;
        },
        [&] { CloseAfterFailure(); });
  });
}

std::string CConnection::ExecuteScalar(const std::string& sql, const std::string& default_value) {
  detail::InUseGuard in_use(in_use_);
  return Observed(sql, [&](int64_t& rows) {
    return detail::Guard(
        {"CDB:ExecuteScalar Ln ", false, &sql},
        [&] {
          detail::MarkLine(__LINE__);
          OpenConn();
          detail::MarkLine(__LINE__);
          Send(sql);
          std::unique_ptr<MYSQL_RES, ResultCloser> result(mysql_store_result(db_.get()));
          if (!result && mysql_field_count(db_.get()) != 0) throw DatabaseError(db_.get());
          std::string value = default_value;
          rows = 0;
          if (result) {
            rows = static_cast<int64_t>(mysql_num_rows(result.get()));
            MYSQL_ROW row = mysql_fetch_row(result.get());
            if (row != nullptr && mysql_num_fields(result.get()) > 0 && row[0] != nullptr) {
              value.assign(row[0], mysql_fetch_lengths(result.get())[0]);
            }
          }
          result.reset();
          Close();
          return value;
        },
        [&] { CloseAfterFailure(); });
  });
}

void CConnection::RequireFits(std::size_t statement_bytes) {
  detail::InUseGuard in_use(in_use_);
  if (max_packet_ == 0) {
    const std::string packet = ExecuteScalar("SELECT @@max_allowed_packet", "0");
    std::from_chars(packet.data(), packet.data() + packet.size(), max_packet_);
  }
  // A statement travels as one command byte and its text, and the server
  // takes only packets shorter than max_allowed_packet.
  const std::size_t largest = max_packet_ > 2 ? max_packet_ - 2 : SIZE_MAX;
  if (statement_bytes <= largest) return;
  Error error(kErrDatabase, "orvmysql",
              "Statement of " + std::to_string(statement_bytes) +
                  " bytes not sent: the server takes at most " + std::to_string(largest) +
                  " bytes in one statement (max_allowed_packet " + std::to_string(max_packet_) +
                  ")");
  error.SetNative(1153, "08S01");
  throw error;
}

std::shared_ptr<IConnection> NewConnection(const IDPConnector& connector) {
  auto connection = std::make_shared<CConnection>();
  connection->Init(connector);
  return connection;
}

}  // namespace orvmysql
