// Key allocation, existence tests and the schema installer.

#include <gtest/gtest.h>

#include <set>
#include <thread>

#include "access/General.h"
#include "access/QueryHelper.h"
#include "support/LiveDb.h"

using namespace orvmysql;

namespace {

// Passes statements through to a real connection and lets a competing writer
// act just before each key update.
class Intercepting final : public IConnection {
 public:
  Intercepting(std::shared_ptr<IConnection> inner, std::function<void()> before_update)
      : inner_(std::move(inner)), before_update_(std::move(before_update)) {}
  std::string ConnectionString() const override { return inner_->ConnectionString(); }
  void StartSession() override { inner_->StartSession(); }
  void EndSession(const Variant& v) override { inner_->EndSession(v); }
  bool TestConnection() override { return false; }
  std::shared_ptr<IListIterator> Execute(const std::string& sql) override {
    return inner_->Execute(sql);
  }
  int32_t ExecuteNonQuery(const std::string& sql) override {
    ++updates;
    before_update_();
    return inner_->ExecuteNonQuery(sql);
  }
  std::string ExecuteScalar(const std::string& sql, const std::string& d) override {
    return inner_->ExecuteScalar(sql, d);
  }
  int updates = 0;

 private:
  std::shared_ptr<IConnection> inner_;
  std::function<void()> before_update_;
};

class KeyGenLive : public orvtest::LiveTest {
 protected:
  void SetRow(int code, int last, int seed, int increment, int offset) {
    Db().Exec(
        "REPLACE INTO tblKeyGen (EntityTypeCode, LastAllocatedKey, Seed, Increment, `Offset`)"
        " VALUES (" +
        std::to_string(code) + "," + std::to_string(last) + "," + std::to_string(seed) + "," +
        std::to_string(increment) + "," + std::to_string(offset) + ")");
  }
  std::string Last(int code) {
    return Db().Scalar("SELECT LastAllocatedKey FROM tblKeyGen WHERE EntityTypeCode = " +
                       std::to_string(code));
  }
};

TEST_F(KeyGenLive, FreshRowStartsAtSeedPlusOffset) {
  SetRow(-900, 1000, 1000, 1, 1);
  auto c = Db().NewConnection();
  EXPECT_EQ(GetNextID(*c, -900), "1001");
  EXPECT_EQ(GetNextID(*c, -900), "1002");
  SetRow(-901, 0, 500, 10, 5);
  EXPECT_EQ(GetNextID(*c, -901), "505");
  EXPECT_EQ(GetNextID(*c, -901), "515");
}

TEST_F(KeyGenLive, MissingRowRaises8196WithoutUpdating) {
  Intercepting c(Db().NewConnection(), [] {});
  try {
    GetNextID(c, -999);
    FAIL();
  } catch (const Error& e) {
    EXPECT_EQ(static_cast<uint32_t>(e.Number()), 0x80042004u);
    EXPECT_EQ(e.Description(), "Error while generating primary key.");
    EXPECT_NE(e.Source().find("] => \r\nGetNextID Ln "), std::string::npos) << e.Source();
  }
  EXPECT_EQ(c.updates, 0);
}

TEST_F(KeyGenLive, CompetingWriterMakesItTakeTheNextKey) {
  SetRow(-902, 10, 0, 1, 1);
  auto other = Db().NewConnection();
  bool raced = false;
  Intercepting c(Db().NewConnection(), [&] {
    if (!raced)
      other->ExecuteNonQuery(
          "UPDATE tblKeyGen SET LastAllocatedKey = 11 WHERE EntityTypeCode = -902");
    raced = true;
  });
  EXPECT_EQ(GetNextID(c, -902), "12");
  EXPECT_EQ(c.updates, 2);
  EXPECT_EQ(Last(-902), "12");
}

TEST_F(KeyGenLive, SixLostAttemptsRaise8196) {
  SetRow(-903, 10, 0, 1, 1);
  auto other = Db().NewConnection();
  Intercepting c(Db().NewConnection(), [&] {
    other->ExecuteNonQuery(
        "UPDATE tblKeyGen SET LastAllocatedKey = LastAllocatedKey + 1 WHERE EntityTypeCode = -903");
  });
  try {
    GetNextID(c, -903);
    FAIL();
  } catch (const Error& e) {
    EXPECT_EQ(static_cast<uint32_t>(e.Number()), 0x80042004u);
  }
  EXPECT_EQ(c.updates, 6);
}

TEST_F(KeyGenLive, ConcurrentWritersNeverShareAKey) {
  SetRow(-904, 0, 0, 1, 1);
  constexpr int kThreads = 4, kKeys = 150;
  std::vector<std::vector<std::string>> got(kThreads);
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([&, t] {
      auto c = Db().NewConnection();
      c->StartSession();
      for (int i = 0; i < kKeys; ++i) {
        try {
          got[t].push_back(GetNextID(*c, -904));
        } catch (const Error&) {
          // Losing six times in a row under heavy contention is allowed; the key is not handed out.
        }
      }
      c->EndSession();
    });
  }
  for (auto& th : threads) th.join();
  std::set<std::string> unique;
  std::size_t total = 0;
  for (const auto& keys : got) {
    total += keys.size();
    unique.insert(keys.begin(), keys.end());
  }
  EXPECT_EQ(unique.size(), total);
  EXPECT_GT(total, static_cast<std::size_t>(kThreads * kKeys / 2));
}

TEST_F(KeyGenLive, ExistsAnswersForTheCondition) {
  auto c = Db().NewConnection();
  EXPECT_TRUE(Exists(c.get(), "tblKeyGen", "EntityTypeCode = -10"));
  EXPECT_FALSE(Exists(c.get(), "tblKeyGen", "EntityTypeCode = 12345"));
  EXPECT_FALSE(Exists(c.get(), "tblWorkitems", "1=1"));
}

TEST_F(KeyGenLive, SchemaInstallRunsTwiceAndKeepsCounters) {
  auto c = Db().NewConnection();
  const std::string before = GetNextID(*c, -11);
  devkit::InstallSchema(orvtest::Server(), Db().Name());
  EXPECT_EQ(Last(-11), before);
  EXPECT_EQ(Db().Count("tblKeyGen", "EntityTypeCode IN (-4, -7, -10, -25)"), 4);
}

TEST_F(KeyGenLive, LongBodiesAndMaximalTextsFitTheirColumns) {
  auto c = Db().NewConnection();
  const std::string body(100000, 'b');
  const std::string name(300, 'n');
  c->ExecuteNonQuery(
      "INSERT INTO tblAttachments (AttachmentID, FKMessageID, AttachmentNumber, FileName, Body) "
      "VALUES (1, 1, 1, '" +
      GetQuotedString(name, true) + "', '" + GetQuotedString(body, false) + "')");
  EXPECT_EQ(Db().Scalar("SELECT LENGTH(Body) FROM tblAttachments WHERE AttachmentID = 1"),
            "100000");
  EXPECT_EQ(Db().Scalar("SELECT CHAR_LENGTH(FileName) FROM tblAttachments WHERE AttachmentID = 1"),
            "255");
}

}  // namespace
