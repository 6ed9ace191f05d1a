// SQL literal formatting: quoting, cuts, LIKE escapes, dates and field values.

#include <gtest/gtest.h>

#include <set>
#include <string>

#include "access/General.h"
#include "access/SqlValues.h"
#include "access/TableProvider.h"
#include "orvmysql/Error.h"
#include "support/ErrorCapture.h"

using namespace orvmysql;

namespace {

std::size_t Utf8Chars(const std::string& s) {
  std::size_t n = 0;
  for (unsigned char c : s) n += (c & 0xC0) != 0x80;
  return n;
}

}  // namespace

TEST(GetQuotedString, EscapesQuotesBackslashesAndNuls) {
  EXPECT_EQ(GetQuotedString("O'Brien", true), "O''Brien");
  EXPECT_EQ(GetQuotedString("C:\\dir", true), "C:\\\\dir");
  EXPECT_EQ(GetQuotedString("   ", true), "");
  EXPECT_EQ(GetQuotedString("", false), "");
  EXPECT_EQ(GetQuotedString(std::string("a\0b", 3), true), "ab");
  EXPECT_EQ(GetQuotedString("ends'", true), "ends''");
  EXPECT_EQ(GetQuotedString("ends\\", true), "ends\\\\");
  EXPECT_EQ(GetQuotedString("  keep blanks  ", true), "  keep blanks  ");
}

TEST(GetQuotedString, CutsAt255CharactersWithoutSplittingAnEscape) {
  // The 255th character of the escaped text is the first half of a doubled quote.
  const std::string split_quote = std::string(254, 'a') + "'" + std::string(45, 'b');
  EXPECT_EQ(GetQuotedString(split_quote, true), std::string(254, 'a'));
  EXPECT_EQ(GetQuotedString(split_quote, false).size(), 301u);

  const std::string split_backslash = std::string(254, 'a') + "\\" + "tail";
  EXPECT_EQ(GetQuotedString(split_backslash, true), std::string(254, 'a'));

  // A run of quotes that the cut would leave odd stays even.
  const std::string quotes = std::string(200, 'a') + std::string(40, '\'');
  const std::string cut = GetQuotedString(quotes, true);
  EXPECT_EQ(cut.size(), 254u);
  EXPECT_EQ((cut.size() - 200) % 2, 0u);

  EXPECT_EQ(GetQuotedString(std::string(300, 'x'), true), std::string(255, 'x'));
  // A pair that fills the 255th character exactly is kept.
  EXPECT_EQ(GetQuotedString(std::string(253, 'a') + "' OR 1=1", true),
            std::string(253, 'a') + "''");
}

TEST(GetQuotedString, CountsUtf8CharactersAndNeverSplitsThem) {
  std::string umlauts;
  for (int i = 0; i < 300; ++i) umlauts += "\xC3\xBC";  // ü, two bytes each
  const std::string cut = GetQuotedString(umlauts, true);
  EXPECT_EQ(Utf8Chars(cut), 255u);
  EXPECT_EQ(cut.size(), 510u);

  std::string emoji = std::string(254, 'a') + "\xF0\x9F\x98\x80" + "\xF0\x9F\x98\x80";
  EXPECT_EQ(GetQuotedString(emoji, true), std::string(254, 'a') + "\xF0\x9F\x98\x80");
}

TEST(GetQuotedString, RefusesTextThatIsNotUtf8NamingTheFirstBadByte) {
  struct Case {
    std::string text;
    std::string detail;  // what the description must end with
  };
  const Case cases[] = {
      {"ab\xC3' OR 1=1", "byte 3: 0xC3 is followed by 0x27, which is not a continuation byte"},
      {"\xC3\\", "byte 1: 0xC3 is followed by 0x5C, which is not a continuation byte"},
      {"x\xBF\x5C", "byte 2: 0xBF is a continuation byte without a lead byte"},
      {"\xC0\xA7", "byte 1: 0xC0 starts an overlong encoding"},
      {"\xE0\x80\xA7", "byte 1: 0xE0 0x80 is an overlong encoding"},
      {"\xF0\x80\x80\xA7", "byte 1: 0xF0 0x80 is an overlong encoding"},
      {"\xED\xA0\x80", "byte 1: 0xED 0xA0 encodes a surrogate (U+D800 to U+DFFF)"},
      {"\xF4\x90\x80\x80", "byte 1: 0xF4 0x90 encodes a code point beyond U+10FFFF"},
      {"\xF5\x80\x80\x80", "byte 1: 0xF5 starts a code point beyond U+10FFFF"},
      {"ok \xFF", "byte 4: 0xFF never occurs in UTF-8"},
      {"euro \xE2\x82", "byte 6: 0xE2 starts a sequence that the text cuts short"},
      // Beyond the cut nothing is written, yet the text is refused all the same.
      {std::string(300, 'a') + "\xC3", "byte 301: 0xC3 starts a sequence that the text cuts short"},
  };
  for (const Case& c : cases) {
    const Error e = orvtest::Raised([&] { GetQuotedString(c.text, true); });
    EXPECT_EQ(e.Number(), kErrInvalidCall) << c.detail;
    EXPECT_EQ(e.Description(),
              "Invalid procedure call or argument: text is not valid UTF-8 at " + c.detail);
    EXPECT_NE(e.Source().find(" => \r\nGetQuotedString method ("), std::string::npos);
  }
  // The LIKE pattern names the byte of the caller's text, before its wildcards are escaped.
  EXPECT_EQ(orvtest::Raised([] { dp::LiteralPattern("50%_\xC3'"); }).Description(),
            "Invalid procedure call or argument: text is not valid UTF-8 at byte 5: 0xC3 is "
            "followed by 0x27, which is not a continuation byte");

  // The edges of the valid ranges pass unchanged.
  for (const std::string text : {"\xC2\x80", "\xDF\xBF", "\xE0\xA0\x80", "\xED\x9F\xBF",
                                 "\xEE\x80\x80", "\xF0\x90\x80\x80", "\xF4\x8F\xBF\xBF"}) {
    EXPECT_EQ(GetQuotedString(text, true), text);
  }
}

TEST(EscapeLikeString, EscapesWildcardsBackslashFirst) {
  EXPECT_EQ(EscapeLikeString("50%_a\\b"), "50\\%\\_a\\\\b");
  EXPECT_EQ(EscapeLikeString("abc"), "abc");
  EXPECT_EQ(EscapeLikeString("[x]"), "\\[x\\]");
}

TEST(LiteralPattern, CutNeverLeavesALoneLikeEscape) {
  // "%" becomes \% in the pattern and \\% in the literal: three characters.
  EXPECT_EQ(dp::LiteralPattern(std::string(252, 'a') + "%"), std::string(252, 'a') + "\\\\%");
  EXPECT_EQ(dp::LiteralPattern(std::string(253, 'a') + "%"), std::string(253, 'a'));
  // An escaped backslash that fits whole stays.
  EXPECT_EQ(dp::LiteralPattern(std::string(251, 'a') + "\\%"),
            std::string(251, 'a') + "\\\\\\\\");
}

TEST(DateLiterals, FixedPatternsAndNullForNoDate) {
  const Variant day = Date::FromParts(2024, 3, 5);
  const Variant moment = Date::FromParts(2024, 3, 5, 14, 5, 9);
  EXPECT_EQ(ConvertDateIntoSQLFormat(day), " '2024-03-05' ");
  EXPECT_EQ(ConvertDateIntoSQLFormat(moment), " '2024-03-05' ");
  EXPECT_EQ(ConvertTimeIntoSQLFormat(moment), "'1899-12-30 14:05:09'");
  EXPECT_EQ(ConvertDateTimeIntoSQLFormat(moment), " '2024-03-05 14:05:09' ");
  EXPECT_EQ(ConvertDateTimeIntoSQLFormat(Date()), " '1899-12-30 00:00:00' ");
  EXPECT_EQ(ConvertDateTimeIntoSQLFormat(Variant()), "NULL");
  EXPECT_EQ(ConvertDateIntoSQLFormat(Null), "NULL");
  EXPECT_EQ(ConvertDateTimeIntoSQLFormat("2024-12-31 23:59:59"), " '2024-12-31 23:59:59' ");
}

TEST(DateLiterals, BadDateReportsUnderTheRoutinesName) {
  try {
    ConvertDateTimeIntoSQLFormat("not a date");
    FAIL();
  } catch (const Error& e) {
    EXPECT_EQ(e.Number(), kErrTypeMismatch);
    EXPECT_NE(e.Source().find(" => \r\nConvertTimeIntoSQLFormat method ("), std::string::npos);
    EXPECT_EQ(e.Source().back(), ')');
  }
}

TEST(GetGUID, ThirtyTwoUpperHexDigitsAndUnique) {
  std::set<std::string> seen;
  for (int i = 0; i < 100; ++i) {
    const std::string g = GetGUID();
    ASSERT_EQ(g.size(), 32u);
    EXPECT_EQ(g.find_first_not_of("0123456789ABCDEF"), std::string::npos) << g;
    seen.insert(g);
  }
  EXPECT_EQ(seen.size(), 100u);
}

TEST(SqlValues, NumbersAreConvertedBeforeTheyAreWritten) {
  EXPECT_EQ(sql::Long(Variant("42")), "42");
  EXPECT_EQ(sql::Long(Variant(2.5)), "2");
  EXPECT_EQ(orvtest::ErrorOf([] { sql::Long(Variant("1; DROP TABLE x")); }), kErrTypeMismatch);
  EXPECT_EQ(orvtest::ErrorOf([] { sql::Long(Variant(3e10)); }), kErrOverflow);
  EXPECT_EQ(sql::Double(Variant(2)), "2.0");
  EXPECT_EQ(sql::Double(Variant("0.25")), "0.25");
  EXPECT_EQ(sql::Double(Variant(-1e300)), "-1e+300");
  // Plain digits below 1e15, however large; the shortest text that reads back.
  EXPECT_EQ(sql::Double(Variant(100000)), "100000.0");
  EXPECT_EQ(sql::Double(Variant(-1e6)), "-1000000.0");
  EXPECT_EQ(sql::Double(Variant(1e9)), "1000000000.0");
  EXPECT_EQ(sql::Double(Variant(123456789.125)), "123456789.125");
  EXPECT_EQ(sql::Double(Variant(999999999999999.0)), "999999999999999.0");
  EXPECT_EQ(sql::Double(Variant(0.1 + 0.2)), "0.30000000000000004");
  EXPECT_EQ(sql::Double(Variant(0.0001)), "0.0001");
  EXPECT_EQ(sql::Double(Variant(1e15)), "1e+15");
  EXPECT_EQ(sql::Double(Variant(1.5e-5)), "1.5e-05");
  EXPECT_EQ(Variant(100000.0).ToText(), "100000");
  EXPECT_EQ(Variant(-2.5e20).ToText(), "-2.5e+20");
  EXPECT_EQ(orvtest::ErrorOf([] { sql::Double(Variant("1,5")); }), kErrTypeMismatch);
}

TEST(SqlValues, TextsAreQuotedAndEmptyTextsMayBeNull) {
  EXPECT_EQ(sql::Text(Variant("O'Hara")), "'O''Hara'");
  EXPECT_EQ(sql::Text(Variant("")), "''");
  EXPECT_EQ(sql::TextOrNull(Variant("")), "NULL");
  EXPECT_EQ(sql::TextOrNull(Null), "NULL");
  EXPECT_EQ(sql::TextOrNull(Variant(7)), "'7'");
  EXPECT_EQ(orvtest::ErrorOf([] { sql::Text(Null); }), kErrInvalidUseOfNull);
  EXPECT_EQ(sql::Text(Variant(std::string(300, 'x')), false).size(), 302u);
  EXPECT_EQ(sql::Boolean(Variant("True")), "1");
  EXPECT_EQ(sql::Boolean(Variant(0)), "0");
}

TEST(SqlValues, MissingPositionRaisesSubscriptError) {
  const FieldArray fields{Variant(1), Variant(2)};
  EXPECT_EQ(sql::At(fields, 1).ToLong(), 2);
  EXPECT_EQ(orvtest::ErrorOf([&] { sql::At(fields, 2); }), kErrSubscript);
  EXPECT_EQ(orvtest::ErrorOf([&] { sql::RequireSize(fields, 3); }), kErrSubscript);
}
