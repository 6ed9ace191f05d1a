// The pool's settings and the statements after which a pooled connection is
// reset before it is used again.

#include "access/ConnectionPool.h"

#include <gtest/gtest.h>

#include "support/ErrorCapture.h"
#include "support/ScopedEnv.h"

using orvmysql::detail::MayLeaveSessionState;
using orvmysql::detail::OptionFileSettings;
using orvmysql::detail::ReadPoolSettings;

namespace {

TEST(PooledStatements, PlainReadsAndWritesLeaveNoState) {
  EXPECT_FALSE(MayLeaveSessionState("SELECT ID FROM tblWorkitems WHERE ID = 5"));
  EXPECT_FALSE(MayLeaveSessionState(" INSERT INTO tblWorkitems (ID) VALUES (1)"));
  EXPECT_FALSE(MayLeaveSessionState("\n update tblKeyGen SET Seed = 2"));
  EXPECT_FALSE(MayLeaveSessionState("DELETE FROM tblMessage WHERE ID IN (1, 2)"));
  EXPECT_FALSE(MayLeaveSessionState("(SELECT 1) UNION (SELECT 2)"));
  EXPECT_FALSE(MayLeaveSessionState("SELECT @@max_allowed_packet"));
  EXPECT_FALSE(MayLeaveSessionState(""));
}

TEST(PooledStatements, AnythingElseMayLeaveState) {
  EXPECT_TRUE(MayLeaveSessionState("SET @x = 1"));
  EXPECT_TRUE(MayLeaveSessionState("SELECT @x := 1"));
  EXPECT_TRUE(MayLeaveSessionState("SELECT COUNT(*) INTO @n FROM tblMessage"));
  EXPECT_TRUE(MayLeaveSessionState("SELECT 1 FROM t WHERE @@sql_mode = '' OR @v"));
  EXPECT_TRUE(MayLeaveSessionState("select get_lock('x', 0)"));
  EXPECT_TRUE(MayLeaveSessionState("LOCK TABLES tblKeyGen WRITE"));
  EXPECT_TRUE(MayLeaveSessionState("CREATE TEMPORARY TABLE t (a INT)"));
  EXPECT_TRUE(MayLeaveSessionState("START TRANSACTION"));
  EXPECT_TRUE(MayLeaveSessionState("USE other"));
  EXPECT_TRUE(MayLeaveSessionState("CALL proc()"));
  EXPECT_TRUE(MayLeaveSessionState("SELECTED"));
  // An "@" inside a text value is a false alarm: a reset too many.
  EXPECT_TRUE(MayLeaveSessionState("INSERT INTO tblRecipient (Name) VALUES ('a@b.example')"));
}

TEST(PoolSettings, EnvironmentOverridesTheOptionFiles) {
  orvtest::ScopedEnv on("ORVMYSQL_POOL", nullptr);
  orvtest::ScopedEnv size("ORVMYSQL_POOL_SIZE", nullptr);
  orvtest::ScopedEnv idle("ORVMYSQL_POOL_IDLE_TIMEOUT", nullptr);
  OptionFileSettings files;
  auto s = ReadPoolSettings(files);
  EXPECT_TRUE(s.enabled);
  EXPECT_EQ(s.max_idle, 8u);
  EXPECT_EQ(s.idle_timeout, 60u);

  files.pool = "Off";
  files.pool_size = "3";
  files.pool_idle_timeout = "10";
  s = ReadPoolSettings(files);
  EXPECT_FALSE(s.enabled);
  EXPECT_EQ(s.max_idle, 3u);
  EXPECT_EQ(s.idle_timeout, 10u);

  orvtest::ScopedEnv on_again("ORVMYSQL_POOL", "yes");
  orvtest::ScopedEnv bigger("ORVMYSQL_POOL_SIZE", "20");
  s = ReadPoolSettings(files);
  EXPECT_TRUE(s.enabled);
  EXPECT_EQ(s.max_idle, 20u);
  EXPECT_EQ(s.idle_timeout, 10u);

  orvtest::ScopedEnv none("ORVMYSQL_POOL_SIZE", "0");
  EXPECT_FALSE(ReadPoolSettings(files).enabled);
}

TEST(PoolSettings, MalformedValuesRaiseFiveNamingThem) {
  OptionFileSettings files;
  files.pool_size = "many";
  const auto e = orvtest::Raised([&] { ReadPoolSettings(files); });
  EXPECT_EQ(e.Number(), orvmysql::kErrInvalidCall);
  EXPECT_NE(e.Description().find("[orvmysql] pool-size must be a whole number"), std::string::npos)
      << e.Description();
  files.pool_size.clear();
  files.pool_idle_timeout = "100000";  // beyond a day
  EXPECT_EQ(orvtest::ErrorOf([&] { ReadPoolSettings(files); }), orvmysql::kErrInvalidCall);
  files.pool_idle_timeout.clear();
  files.pool = "maybe";
  EXPECT_EQ(orvtest::ErrorOf([&] { ReadPoolSettings(files); }), orvmysql::kErrInvalidCall);
}

}  // namespace
