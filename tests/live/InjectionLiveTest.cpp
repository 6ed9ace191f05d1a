// Replays an injection corpus through every text position of every provider
// (the groups registered with InjectionPositions.h) against private servers
// that record statement digests (performance_schema), and compares the
// digests of each run with those of a plain text in the same position: no
// payload may change the shape of a statement. Text that is not UTF-8 must be
// refused before the library connects, so that no statement runs and no key
// is used up. The same replay runs with NO_BACKSLASH_ESCAPES as the server's
// global mode, and against a server that forces GBK on its clients, where
// every connect must be refused before any statement of the caller runs.

#include <gtest/gtest.h>
#include <mysql.h>

#include <chrono>
#include <iostream>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "live/InjectionPositions.h"
#include "orvmysql/Error.h"
#include "support/ScopedEnv.h"
#include "tools/DevServer.h"

namespace orvtest {
namespace {

using orvmysql::devkit::DevServer;
using orvmysql::devkit::ServerAddress;

struct Payload {
  std::string name;
  std::string text;
  bool utf8;  // well-formed UTF-8; anything else must be refused
};

std::vector<Payload> Corpus() {
  using namespace std::string_literals;
  const std::string a254(254, 'a');
  std::string accents;
  for (int i = 0; i < 254; ++i) accents += "\xC3\xA9";
  return {
      {"apostrophe", "O'Brien", true},
      {"lone apostrophe", "'", true},
      {"doubled apostrophes", "''", true},
      {"backslash", "\\", true},
      {"backslash apostrophe", "\\'", true},
      {"apostrophe backslash", "'\\", true},
      {"or always true", "' OR 1=1 -- ", true},
      {"or quoted", "' OR '1'='1", true},
      {"escaped apostrophe or", "\\' OR 1=1 -- ", true},
      {"stacked statement", "'; DROP TABLE tblProcessDef; -- ", true},
      {"comment opener", "'/* ", true},
      {"comment closer", "*/ OR 1=1 /*", true},
      {"hash comment", "'#", true},
      {"versioned comment", "'/*!50000 OR 1=1*/ -- ", true},
      {"NUL before apostrophe", "a\0' OR 1=1 -- "s, true},
      {"NUL only", "\0"s, true},
      {"NUL backslash", "\0\\"s, true},
      {"double quotes", "\" OR \"\"=\"", true},
      {"backticks", "`tblKeyGen`", true},
      {"LIKE wildcards", "%_[]\\%", true},
      {"line breaks", "a\r\n' -- \n", true},
      {"control characters", "\x1A\b\t'", true},
      {"accent before apostrophe", "\xC3\xA9' OR 1=1 -- ", true},
      {"CJK around apostrophe", "\xE6\x97\xA5\xE6\x9C\xAC'\xE8\xAA\x9E\\", true},
      {"emoji before backslash", "\xF0\x9F\x98\x80\\' OR 1=1 -- ", true},
      {"fullwidth apostrophe", "\xEF\xBC\x87 OR 1=1 -- ", true},
      {"modifier apostrophe", "\xCA\xBC OR 1=1", true},
      {"character GBK writes as BF 5C", "\xE7\xB8\x97' OR 1=1 -- ", true},
      {"no-break space", "\xC2\xA0'", true},
      {"highest code point", "\xF4\x8F\xBF\xBF'", true},
      {"cut at an apostrophe", a254 + "' OR 1=1 -- ", true},
      {"pair fills the cut", std::string(253, 'a') + "' OR 1=1 -- ", true},
      {"cut at a backslash", a254 + "\\' OR 1=1 -- ", true},
      {"cut after multi-byte", accents + "\\' OR 1=1 -- ", true},
      {"300 apostrophes", std::string(300, '\''), true},
      {"301 backslashes", std::string(301, '\\'), true},
      {"blanks around", "  '  ", true},
      {"C3 before apostrophe", "\xC3' OR 1=1 -- ", false},
      {"C3 before backslash", "\xC3\\' OR 1=1 -- ", false},
      {"C3 version oracle", "\xC3' OR (SELECT @@version) LIKE '1%' -- ", false},
      {"C3 stores into another column", "\xC3\\', Layout = CONCAT(USER(), @@datadir) -- ", false},
      {"cut-short 3 bytes", "\xE2\x82' OR 1=1 -- ", false},
      {"cut-short 4 bytes", "\xF0\x9F\x98' OR '1'='1", false},
      {"GBK pair BF 5C", "\xBF\\' OR 1=1 -- ", false},
      {"GBK lead BF", "\xBF' OR 1=1 -- ", false},
      {"stray continuation", "\x80'", false},
      {"overlong apostrophe", "\xC0\xA7 OR 1=1 -- ", false},
      {"overlong 3-byte apostrophe", "\xE0\x80\xA7", false},
      {"surrogate", "\xED\xA0\x80'", false},
      {"beyond U+10FFFF", "\xF4\x90\x80\x80'", false},
      {"FF before apostrophe", "\xFF' OR 1=1 -- ", false},
      {"C3 beyond the cut", std::string(300, 'a') + "\xC3'", false},
      {"C3 at the end", "abc\xC3", false},
  };
}

// Options that make the server keep every statement with its digest.
const std::vector<std::string> kDigestOptions = {
    "--performance-schema=ON",
    "--performance-schema-consumer-events-statements-current=ON",
    "--performance-schema-consumer-events-statements-history-long=ON",
    "--performance-schema-events-statements-history-long-size=1000",
    "--max-digest-length=4096",
    "--performance-schema-max-digest-length=4096",
};

constexpr std::string_view kCharsetCheck = "SELECT @@character_set_client";

// A client of its own (Connector/C directly, so that it also works where the
// library refuses the server) that reads what the other clients ran.
class StatementLog {
 public:
  explicit StatementLog(const ServerAddress& server) : db_(mysql_init(nullptr)) {
    if (!mysql_real_connect(db_, "localhost", server.user.c_str(), server.password.c_str(), nullptr,
                            0, server.socket.c_str(), 0)) {
      throw std::runtime_error(mysql_error(db_));
    }
    thread_ =
        Run("SELECT THREAD_ID FROM performance_schema.threads WHERE PROCESSLIST_ID = "
            "CONNECTION_ID()")[0];
  }
  ~StatementLog() { mysql_close(db_); }
  StatementLog(const StatementLog&) = delete;
  StatementLog& operator=(const StatementLog&) = delete;

  // Runs a statement; the first column of every row it returns.
  std::vector<std::string> Run(const std::string& sql) {
    if (mysql_real_query(db_, sql.data(), sql.size()) != 0) {
      throw std::runtime_error(sql + ": " + mysql_error(db_));
    }
    std::vector<std::string> values;
    if (MYSQL_RES* result = mysql_store_result(db_)) {
      while (MYSQL_ROW row = mysql_fetch_row(result)) values.emplace_back(row[0] ? row[0] : "NULL");
      mysql_free_result(result);
    }
    return values;
  }

  // Starts a new stretch of the log: what other clients run from now on.
  void Mark() {
    Settle();
    mark_ = Run("SELECT IFNULL(MAX(TIMER_START), 0) FROM "
                "performance_schema.events_statements_history_long")
                .front();
  }

  // Digest, error number and normalised text of each statement other clients
  // ran since the mark, in order. A digest folds a run of literals into one
  // ("?, ..."), so a text that only added literals to a VALUES list would keep
  // it; such a statement fails on its column count, and the error number tells.
  std::vector<std::string> Shapes() {
    Settle();
    return Others("CONCAT_WS(' ', DIGEST, MYSQL_ERRNO, DIGEST_TEXT)");
  }

  // The texts of the statements other clients ran since the mark.
  std::vector<std::string> Texts() {
    Settle();
    return Others("SQL_TEXT");
  }

  // Connections accepted so far and the key counters of the database.
  std::string Snapshot(const std::string& database) {
    return Run("SELECT VARIABLE_VALUE FROM information_schema.GLOBAL_STATUS WHERE VARIABLE_NAME "
               "= 'CONNECTIONS'")
               .front() +
           "/" +
           Run("SELECT GROUP_CONCAT(LastAllocatedKey ORDER BY EntityTypeCode) FROM `" + database +
               "`.tblKeyGen")
               .front();
  }

 private:
  // A statement's event is recorded just after its reply is sent, but before
  // its connection reads the next command. Once the other clients (the
  // library outside a session) have disconnected, their events are all in.
  void Settle() {
    for (int attempt = 0; attempt < 500; ++attempt) {
      if (Run("SELECT COUNT(*) FROM performance_schema.threads WHERE TYPE = 'FOREGROUND' "
              "AND THREAD_ID <> " +
              thread_)
              .front() == "0") {
        return;
      }
      std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    throw std::runtime_error("the library left a connection open");
  }

  // The value of each statement (commands such as Quit have no text) that
  // other clients ran since the mark, in order.
  std::vector<std::string> Others(const std::string& value) {
    return Run("SELECT " + value +
               " FROM performance_schema.events_statements_history_long WHERE THREAD_ID <> " +
               thread_ + " AND SQL_TEXT IS NOT NULL AND TIMER_START > " + mark_ +
               " ORDER BY TIMER_START, EVENT_ID");
  }

  MYSQL* db_;
  std::string thread_;
  std::string mark_ = "0";
};

std::shared_ptr<orvmysql::CMYSqlDP> HandlerOn(const ServerAddress& server,
                                              const std::string& database) {
  auto handler = std::make_shared<orvmysql::CMYSqlDP>();
  handler->Init(server.Connector(database));
  return handler;
}

struct Tally {
  int tried = 0;
  int changed = 0;
  int refused = 0;
};

// Text that is not UTF-8, and a NUL in a text that travels inside a document
// (which cannot carry it), are refused (5) before the library connects.
bool MustBeRefused(const InjectionPosition& position, const Payload& payload) {
  return !payload.utf8 || (position.document && payload.text.find('\0') != std::string::npos);
}

// Runs the position with the text; the error number it raised, 0 for none.
int32_t Outcome(const InjectionPosition& position, const InjectionTargets& targets,
                const std::string& text, std::string* description = nullptr) {
  try {
    position.run(targets, text);
    return 0;
  } catch (const orvmysql::Error& e) {
    if (description != nullptr) *description = e.Description();
    return e.Number();
  }
}

// The statements of the position with an ordinary text, which must run.
std::vector<std::string> Baseline(StatementLog& log, const InjectionPosition& position,
                                  const InjectionTargets& targets, const std::string& text) {
  log.Mark();
  std::string error;
  EXPECT_EQ(Outcome(position, targets, text, &error), 0) << position.name << error;
  std::vector<std::string> shapes = log.Shapes();
  EXPECT_FALSE(shapes.empty()) << position.name;
  return shapes;
}

// Every payload in every position; statements must keep the shape a plain
// text gives them, and text that is not UTF-8 must not reach the server.
Tally Replay(StatementLog& log, const InjectionTargets& targets, const std::string& database) {
  Tally tally;
  const std::vector<Payload> corpus = Corpus();
  for (const InjectionPosition& position : InjectionPositions()) {
    const std::vector<std::string> baseline = Baseline(log, position, targets, "plain text");
    std::vector<std::string> empty_baseline;
    for (const Payload& payload : corpus) {
      ++tally.tried;
      const bool refuse = MustBeRefused(position, payload);
      const std::string before = refuse ? log.Snapshot(database) : std::string();
      log.Mark();
      std::string error;
      const int32_t number = Outcome(position, targets, payload.text, &error);
      if (refuse && number == orvmysql::kErrInvalidCall) {
        ++tally.refused;
        EXPECT_EQ(log.Snapshot(database), before)
            << position.name << " / " << payload.name << ": connected or used up a key";
        continue;
      }
      EXPECT_EQ(number, refuse ? orvmysql::kErrInvalidCall : 0)
          << position.name << " / " << payload.name << ": " << error;
      const std::vector<std::string> shapes = log.Shapes();
      // A document ends a text at a NUL, and an empty value is rendered as
      // such by design, so a text with a NUL may take the shape of an empty one.
      if (shapes != baseline && payload.text.find('\0') != std::string::npos) {
        if (empty_baseline.empty()) empty_baseline = Baseline(log, position, targets, "");
        if (shapes == empty_baseline) continue;
      }
      if (shapes != baseline) {
        ++tally.changed;
        ADD_FAILURE() << position.name << " / " << payload.name << " changed the statements:\n"
                      << ::testing::PrintToString(shapes) << "\ninstead of\n"
                      << ::testing::PrintToString(baseline);
      }
    }
  }
  return tally;
}

void Report(const std::string& mode, const Tally& tally) {
  std::cerr << "[injection] " << mode << ": " << Corpus().size() << " payloads x "
            << InjectionPositions().size() << " positions = " << tally.tried << " runs, "
            << tally.changed << " changed a statement's shape, " << tally.refused
            << " refused before connecting\n";
  ::testing::Test::RecordProperty(mode + "_runs", tally.tried);
  ::testing::Test::RecordProperty(mode + "_changed", tally.changed);
}

// The replay reads each run's statements once the library's connections have
// gone; pooled connections would stay, so the pool is off here.
TEST(InjectionLive, NoPayloadChangesAStatementInDefaultAndNoBackslashEscapesModes) {
  const orvtest::ScopedEnv no_pool("ORVMYSQL_POOL", "off");
  const auto server = DevServer::AcquirePrivate(kDigestOptions);
  const std::string database = "injection";
  orvmysql::devkit::InstallSchema(server->Address(), database);
  StatementLog log(server->Address());
  const InjectionTargets targets = PrepareInjectionTargets(HandlerOn(server->Address(), database));

  const Tally plain = Replay(log, targets, database);
  Report("default", plain);
  EXPECT_EQ(plain.changed, 0);

  // New sessions start without backslash escapes; the library turns them back on.
  log.Run("SET GLOBAL sql_mode = CONCAT(@@GLOBAL.sql_mode, ',NO_BACKSLASH_ESCAPES')");
  const Tally no_backslash = Replay(log, targets, database);
  Report("no_backslash_escapes", no_backslash);
  EXPECT_EQ(no_backslash.changed, 0);
}

TEST(InjectionLive, ServerForcingGbkIsRefusedBeforeAnyStatementOfTheCaller) {
  const orvtest::ScopedEnv no_pool("ORVMYSQL_POOL", "off");
  std::vector<std::string> options = kDigestOptions;
  options.push_back("--character-set-server=gbk");
  options.push_back("--collation-server=gbk_chinese_ci");
  options.push_back("--skip-character-set-client-handshake");
  const auto server = DevServer::AcquirePrivate(options);
  StatementLog log(server->Address());
  log.Run("CREATE DATABASE injection");
  InjectionTargets targets;
  targets.handler = HandlerOn(server->Address(), "injection");

  // The refusal names the character set.
  std::string description;
  log.Mark();
  EXPECT_EQ(Outcome(InjectionPositions().front(), targets, "plain text", &description),
            orvmysql::kErrConnectFailed);
  EXPECT_NE(description.find("character set 'gbk' (character_set_client)"), std::string::npos)
      << description;

  Tally tally;
  for (const InjectionPosition& position : InjectionPositions()) {
    log.Mark();
    for (const Payload& payload : Corpus()) {
      ++tally.tried;
      const bool refused = MustBeRefused(position, payload);
      const int32_t number = Outcome(position, targets, payload.text);
      EXPECT_EQ(number, refused ? orvmysql::kErrInvalidCall : orvmysql::kErrConnectFailed)
          << position.name << " / " << payload.name;
      tally.refused += refused;
    }
    // The check ran, and nothing else did.
    const std::vector<std::string> texts = log.Texts();
    EXPECT_FALSE(texts.empty()) << position.name;
    for (const std::string& text : texts) {
      if (text.rfind(kCharsetCheck, 0) != 0) {
        ++tally.changed;
        ADD_FAILURE() << position.name << ": a statement ran on the GBK server: " << text;
      }
    }
  }
  Report("gbk", tally);
}

}  // namespace
}  // namespace orvtest
