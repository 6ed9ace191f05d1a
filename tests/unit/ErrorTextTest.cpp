// The one-line text of an error (what()), as a log or a person reads it.

#include <gtest/gtest.h>

#include <string>

#include "orvmysql/Error.h"

using namespace orvmysql;

namespace {

Error StatementFailure(unsigned native, std::string statement = "SELEC nothing") {
  Error e(kErrDatabase, "orvmysql", statement + "\r\nYou have an error in your SQL syntax");
  e.SetNative(native, "42000");
  e.AppendLocation("CConnection:Execute Function Ln 170");
  e.AppendLocation("COrvDefinitionsDP: IOrvDefinitionsDP_Load Function (12)");
  return e;
}

TEST(ErrorText, OneLineWithBothNumbersTheNativeCodeAndTheInnermostLocation) {
  const Error e = StatementFailure(1064);
  EXPECT_EQ(
      std::string(e.what()),
      "orvmysql error -2147467259 (0x80004005): SELEC nothing | You have an error in your "
      "SQL syntax [server error 1064, SQLSTATE 42000] at CConnection:Execute Function Ln 170");
  // The parts the engine reads stay as they were.
  EXPECT_EQ(e.Description(), "SELEC nothing\r\nYou have an error in your SQL syntax");

  Error connect(kErrConnectFailed, "orvmysql",
                "Failed to connect to data provider. (Reason: ErrNo:-2147467259\r\n Details:Can't "
                "connect)\r\nDriver=MySQL ODBC 5.1 Driver;PASSWORD=********;");
  connect.SetNative(2003, "HY000");
  EXPECT_EQ(std::string(connect.what()),
            "orvmysql error -2147160063 (0x8004F001): Failed to connect to data provider. (Reason: "
            "ErrNo:-2147467259 | Details:Can't connect) | Driver=MySQL ODBC 5.1 "
            "Driver;PASSWORD=********; [client error 2003, SQLSTATE HY000]");

  Error collection(kErrSubscript, "orvmysql",
                   "Subscript out of range => \r\nCConditions:Item Ln 7");
  EXPECT_EQ(std::string(collection.what()),
            "orvmysql error 9 (0x9): Subscript out of range => CConditions:Item Ln 7");
}

TEST(ErrorText, AMissingTableHintsAtTheSchemaTool) {
  const std::string missing = StatementFailure(1146).what();
  EXPECT_NE(missing.find("\"orvmysql-schema create\""), std::string::npos) << missing;
  EXPECT_NE(missing.find("\"orvmysql-schema upgrade\""), std::string::npos) << missing;
  EXPECT_EQ(std::string(StatementFailure(1064).what()).find("orvmysql-schema"), std::string::npos);
}

TEST(ErrorText, LongStatementsAreShortenedOnACharacterBoundary) {
  std::string statement = "INSERT INTO tblNotes VALUES (N'";  // odd length
  for (int i = 0; i < 500; ++i) statement += "\xC3\xBC";      // two bytes each
  const Error e = StatementFailure(1064, statement);
  const std::string text = e.what();
  EXPECT_LT(text.size(), 500u);
  const std::size_t cut = text.find("... | You have an error");
  ASSERT_NE(cut, std::string::npos) << text;
  EXPECT_NE(static_cast<unsigned char>(text[cut - 1]), 0xC3u);  // no half character
  EXPECT_EQ(e.Description().size(), statement.size() + 38);
}

}  // namespace
