// Key allocation, existence tests and the schema installer.

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <set>
#include <thread>

#include "access/General.h"
#include "access/QueryHelper.h"
#include "support/ErrorCapture.h"
#include "support/LiveDb.h"
#include "tools/ClassicKeys.h"

using namespace orvmysql;

namespace {

// Passes statements through to a real connection, counts the key reads and
// lets a competing writer act just before each key update (given its number).
class Intercepting final : public IConnection {
 public:
  Intercepting(std::shared_ptr<IConnection> inner, std::function<void(int)> before_update)
      : inner_(std::move(inner)), before_update_(std::move(before_update)) {}
  std::string ConnectionString() const override { return inner_->ConnectionString(); }
  void StartSession() override { inner_->StartSession(); }
  void EndSession(const Variant& v) override { inner_->EndSession(v); }
  bool TestConnection() override { return false; }
  std::shared_ptr<IListIterator> Execute(const std::string& sql) override {
    ++selects;
    return inner_->Execute(sql);
  }
  int32_t ExecuteNonQuery(const std::string& sql) override {
    before_update_(++updates);
    return inner_->ExecuteNonQuery(sql);
  }
  std::string ExecuteScalar(const std::string& sql, const std::string& d) override {
    return inner_->ExecuteScalar(sql, d);
  }
  int selects = 0;
  int updates = 0;

 private:
  std::shared_ptr<IConnection> inner_;
  std::function<void(int)> before_update_;
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
  Intercepting c(Db().NewConnection(), [](int) {});
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

// A writer that moved the row on by a whole block is seen by reading the row
// again: the second attempt takes the key after the block.
TEST_F(KeyGenLive, LostAttemptReadsTheRowAgain) {
  SetRow(-902, 10, 0, 1, 1);
  auto other = Db().NewConnection();
  Intercepting c(Db().NewConnection(), [&](int update) {
    if (update == 1)
      other->ExecuteNonQuery(
          "UPDATE tblKeyGen SET LastAllocatedKey = 110 WHERE EntityTypeCode = -902");
  });
  EXPECT_EQ(GetNextID(c, -902), "111");
  EXPECT_EQ(c.updates, 2);
  EXPECT_EQ(c.selects, 2);
  EXPECT_EQ(Last(-902), "111");
}

TEST_F(KeyGenLive, SixLostAttemptsRaise8196) {
  SetRow(-903, 10, 0, 1, 1);
  auto other = Db().NewConnection();
  Intercepting c(Db().NewConnection(), [&](int) {
    other->ExecuteNonQuery(
        "UPDATE tblKeyGen SET LastAllocatedKey = LastAllocatedKey + 1 WHERE EntityTypeCode = -903");
  });
  EXPECT_EQ(orvtest::ErrorOf([&] { GetNextID(c, -903); }), static_cast<int32_t>(0x80042004u));
  EXPECT_EQ(c.updates, 6);
  EXPECT_EQ(Last(-903), "16");
}

// The key won by the sixth attempt is taken in the row and still not handed out.
TEST_F(KeyGenLive, WinOnTheSixthAttemptStillRaises8196) {
  SetRow(-905, 10, 0, 1, 1);
  auto other = Db().NewConnection();
  Intercepting c(Db().NewConnection(), [&](int update) {
    if (update < 6)
      other->ExecuteNonQuery(
          "UPDATE tblKeyGen SET LastAllocatedKey = LastAllocatedKey + 1 WHERE EntityTypeCode = "
          "-905");
  });
  EXPECT_EQ(orvtest::ErrorOf([&] { GetNextID(c, -905); }), static_cast<int32_t>(0x80042004u));
  EXPECT_EQ(Last(-905), "16");
  EXPECT_EQ(GetNextID(c, -905), "17");
}

// Threads of one process, each with a connection of its own, never race each
// other on the row: no key twice and no request lost (formerly 4 to 46% of the
// requests of 4 to 8 threads failed).
TEST_F(KeyGenLive, ThreadsOfOneProcessNeverFail) {
  SetRow(-904, 0, 0, 1, 1);
  constexpr int kThreads = 8, kKeys = 150;
  std::vector<std::vector<int>> got(kThreads);
  std::atomic<int> failures{0};
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([&, t] {
      auto c = Db().NewConnection();
      c->StartSession();
      for (int i = 0; i < kKeys; ++i) {
        try {
          got[t].push_back(std::stoi(GetNextID(*c, -904)));
        } catch (const Error&) {
          ++failures;
        }
      }
      c->EndSession();
    });
  }
  for (auto& th : threads) th.join();
  std::set<int> unique;
  for (const auto& keys : got) unique.insert(keys.begin(), keys.end());
  EXPECT_EQ(failures.load(), 0);
  EXPECT_EQ(unique.size(), static_cast<std::size_t>(kThreads * kKeys));
  EXPECT_EQ(Last(-904), std::to_string(kThreads * kKeys));
}

// Beside writers of other makes on the same row, as other processes would be:
// one that takes blocks of 100 with a single atomic statement, and one with
// the older tools' protocol. Nobody receives a key twice.
TEST_F(KeyGenLive, WritersOfOtherMakesShareTheRow) {
  SetRow(-906, 0, 0, 1, 1);
  std::vector<int> ours, classic;
  std::vector<std::pair<int, int>> blocks;
  std::atomic<bool> done{false};
  int our_failures = 0;
  std::thread block_writer([&] {
    auto c = Db().NewConnection();
    c->StartSession();
    while (!done) {
      c->ExecuteNonQuery(
          "UPDATE tblKeyGen SET LastAllocatedKey = LAST_INSERT_ID(LastAllocatedKey + 100) WHERE "
          "EntityTypeCode = -906");
      const int end = std::stoi(c->ExecuteScalar("SELECT LAST_INSERT_ID()", "0"));
      blocks.emplace_back(end - 99, end);
      std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    c->EndSession();
  });
  std::thread classic_writer([&] {
    auto c = Db().NewConnection();
    c->StartSession();
    while (!done) {
      if (auto key = devkit::ClassicNextKey(*c, -906)) classic.push_back(*key);
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    c->EndSession();
  });
  auto c = Db().NewConnection();
  c->StartSession();
  for (int i = 0; i < 400; ++i) {
    try {
      ours.push_back(std::stoi(GetNextID(*c, -906)));
    } catch (const Error&) {
      ++our_failures;
    }
  }
  c->EndSession();
  done = true;
  block_writer.join();
  classic_writer.join();

  std::set<int> unique(ours.begin(), ours.end());
  unique.insert(classic.begin(), classic.end());
  EXPECT_EQ(unique.size(), ours.size() + classic.size());
  for (auto [first, last] : blocks) {
    auto inside = unique.lower_bound(first);
    EXPECT_TRUE(inside == unique.end() || *inside > last) << *inside << " in " << first;
  }
  EXPECT_FALSE(blocks.empty());
  EXPECT_FALSE(classic.empty());
  // Reading the row again keeps up with the block writer; guessing one key per
  // competitor lost 8 to 10% of these requests (32 to 39 of 400), this 0 to 2%.
  EXPECT_LE(our_failures, 15) << classic.size() << " classic, " << blocks.size() << " blocks";
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
