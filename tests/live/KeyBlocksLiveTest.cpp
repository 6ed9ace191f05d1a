// Key blocks beside every other writer of the row: writer processes of their
// own (the orvmysql-keys tool), a forked child, and the end of the key range.

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <limits>
#include <map>
#include <string>
#include <vector>

#include "orvmysql/Keys.h"
#include "support/ErrorCapture.h"
#include "support/ForkedChild.h"
#include "support/LiveDb.h"
#include "support/ScopedEnv.h"

extern char** environ;

using namespace orvmysql;

namespace {

class KeyBlocksLive : public orvtest::LiveTest {
 protected:
  void FreshRow(int code, int last = 0) {
    Db().Exec(
        "REPLACE INTO tblKeyGen (EntityTypeCode, LastAllocatedKey, Seed, Increment, `Offset`)"
        " VALUES (" +
        std::to_string(code) + "," + std::to_string(last) + ",0,1,1)");
  }
};

// A writer process taking `count` keys of the entity type; block 0 means the
// older tools' protocol, 1 single keys.
struct Writer {
  explicit Writer(int block_setting) : block(block_setting) {}
  int block;
  pid_t pid = 0;
  std::filesystem::path output;
};

void Start(Writer& w, const std::string& database, int code, int count) {
  const auto& a = orvtest::Server();
  std::vector<std::string> args = {
      ORVMYSQL_KEYS_TOOL,   "take",    "--database",         database, "--code",
      std::to_string(code), "--count", std::to_string(count)};
  if (w.block == 0) args.push_back("--classic");
  std::vector<std::string> env = {"ORVMYSQL_SERVER=" + a.server, "ORVMYSQL_PORT=" + a.port,
                                  "ORVMYSQL_USER=" + a.user, "ORVMYSQL_PASSWORD=" + a.password,
                                  "ORVMYSQL_KEY_BLOCK=" + std::to_string(std::max(w.block, 1))};
  for (char** e = environ; *e != nullptr; ++e) {
    const std::string entry = *e;
    if (entry.rfind("ORVMYSQL_", 0) != 0) env.push_back(entry);
  }
  std::vector<char*> argv, envp;
  for (auto& s : args) argv.push_back(s.data());
  for (auto& s : env) envp.push_back(s.data());
  argv.push_back(nullptr);
  envp.push_back(nullptr);
  w.output = std::filesystem::temp_directory_path() /
             ("orvkeys_" + std::to_string(getpid()) + "_" + std::to_string(w.block));
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, 1, w.output.c_str(), O_WRONLY | O_CREAT | O_TRUNC,
                                   0600);
  ASSERT_EQ(posix_spawn(&w.pid, ORVMYSQL_KEYS_TOOL, &actions, nullptr, argv.data(), envp.data()),
            0);
  posix_spawn_file_actions_destroy(&actions);
}

TEST_F(KeyBlocksLive, FourProcessesWithAndWithoutBlocksNeverShareAKey) {
  constexpr int kCode = -910, kKeys = 10000;
  FreshRow(kCode);
  std::vector<Writer> writers = {Writer(100), Writer(7), Writer(1), Writer(0)};
  for (Writer& w : writers) Start(w, Db().Name(), kCode, kKeys);
  std::map<int, int> owner;  // key -> block setting of the writer that got it
  for (Writer& w : writers) {
    int status = 0;
    ASSERT_EQ(waitpid(w.pid, &status, 0), w.pid);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << "writer " << w.block;
    std::ifstream in(w.output);
    std::string line;
    int keys = 0;
    while (std::getline(in, line) && line.rfind("# ", 0) != 0) {
      ++keys;
      const auto [it, fresh] = owner.emplace(std::stoi(line), w.block);
      EXPECT_TRUE(fresh) << "key " << line << " went to writers " << it->second << " and "
                         << w.block;
    }
    EXPECT_EQ(keys, kKeys) << "writer " << w.block << ": " << line;
    std::filesystem::remove(w.output);
  }
  ASSERT_FALSE(owner.empty());
  EXPECT_LE(owner.rbegin()->first,
            std::stoi(Db().Scalar("SELECT LastAllocatedKey FROM tblKeyGen WHERE "
                                  "EntityTypeCode = " +
                                  std::to_string(kCode))));
}

// A forked child starts with no reserved keys: its keys come after the block
// its parent holds.
TEST_F(KeyBlocksLive, ForkedChildNeverHandsOutItsParentsBlock) {
  constexpr int kCode = -911;
  FreshRow(kCode);
  orvtest::ScopedEnv block("ORVMYSQL_KEY_BLOCK", "100");
  auto c = Db().NewConnection();
  ASSERT_EQ(GetNextID(*c, kCode), "1");
  const auto key = orvtest::TextFromChild([] { return GetNextID(*Db().NewConnection(), kCode); });
  ASSERT_TRUE(key.has_value());
  EXPECT_EQ(*key, "101");
  EXPECT_EQ(GetNextID(*c, kCode), "2");
}

// Near the end of the 32-bit range a block holds the keys that are left; the
// key after the last one is an overflow (6), as without blocks.
TEST_F(KeyBlocksLive, BlockStopsAtTheEndOfTheKeyRange) {
  constexpr int kCode = -912, kMax = std::numeric_limits<int32_t>::max();
  FreshRow(kCode, kMax - 3);
  orvtest::ScopedEnv block("ORVMYSQL_KEY_BLOCK", "100");
  auto c = Db().NewConnection();
  for (int64_t key = kMax - 2; key <= kMax; ++key)
    EXPECT_EQ(GetNextID(*c, kCode), std::to_string(key));
  EXPECT_EQ(orvtest::ErrorOf([&] { GetNextID(*c, kCode); }), kErrOverflow);
}

}  // namespace
