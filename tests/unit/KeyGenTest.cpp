// Key blocks without a database: statements per block and the setting.

#include <gtest/gtest.h>

#include "orvmysql/Keys.h"
#include "support/ErrorCapture.h"
#include "support/RecordingConnection.h"
#include "support/ScopedEnv.h"

using namespace orvmysql;

namespace {

// The recording connection's rows start at LastAllocatedKey 41, Increment 1.
// Each test uses an entity type of its own: reserves last as long as the process.

TEST(KeyBlocks, OneCompareAndSetPerBlockThenKeysFromMemory) {
  orvtest::ScopedEnv block("ORVMYSQL_KEY_BLOCK", " 10 ");
  orvtest::RecordingConnection c;
  EXPECT_EQ(GetNextID(c, -701), "42");
  ASSERT_EQ(c.statements.size(), 2u);
  EXPECT_EQ(c.statements[1],
            " UPDATE tblKeyGen SET LastAllocatedKey = 51 WHERE EntityTypeCode = -701 AND "
            "LastAllocatedKey = 41");
  for (int key = 43; key <= 51; ++key) EXPECT_EQ(GetNextID(c, -701), std::to_string(key));
  EXPECT_EQ(c.statements.size(), 2u);
  GetNextID(c, -701);  // the block is used up: the row is read again
  EXPECT_EQ(c.statements.size(), 4u);
}

TEST(KeyBlocks, OffMeansTheClassicStatementsEvenWithKeysLeft) {
  orvtest::RecordingConnection c;
  {
    orvtest::ScopedEnv block("ORVMYSQL_KEY_BLOCK", "100");
    EXPECT_EQ(GetNextID(c, -702), "42");  // 43 to 141 stay reserved
  }
  int32_t key = 142;
  for (const char* off : {static_cast<const char*>(nullptr), "", "1"}) {
    orvtest::ScopedEnv block("ORVMYSQL_KEY_BLOCK", off);
    c.statements.clear();
    EXPECT_EQ(GetNextID(c, -702), std::to_string(key));
    ASSERT_EQ(c.statements.size(), 2u);
    EXPECT_EQ(c.statements[1],
              " UPDATE tblKeyGen SET LastAllocatedKey = " + std::to_string(key) +
                  " WHERE EntityTypeCode = -702 AND LastAllocatedKey = " + std::to_string(key - 1));
    ++key;
  }
}

TEST(KeyBlocks, BadSettingRaises5BeforeAnyStatement) {
  for (const char* bad : {"abc", "0", "-5", "100001", "10x", "2.5"}) {
    orvtest::ScopedEnv block("ORVMYSQL_KEY_BLOCK", bad);
    orvtest::RecordingConnection c;
    const Error e = orvtest::Raised([&] { GetNextID(c, -703); });
    EXPECT_EQ(e.Number(), kErrInvalidCall) << bad;
    EXPECT_NE(
        e.Description().find(std::string("ORVMYSQL_KEY_BLOCK must be a whole number from 1 to "
                                         "100000, not '") +
                             bad + "'"),
        std::string::npos)
        << e.Description();
    EXPECT_NE(e.Source().find("GetNextID Ln "), std::string::npos);
    EXPECT_TRUE(c.statements.empty());
  }
}

}  // namespace
