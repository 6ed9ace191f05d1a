// Fuzzes every routine that turns caller text into an SQL literal: the quoting
// routine (cut and uncut), the quoted field values, field-array formatting,
// the LIKE pattern (wildcard escape plus quote), the text conditions of the
// query renderer, and the date literals read from text.
//
// For any bytes, a routine either refuses the text (error 5, and only when the
// text is not well-formed UTF-8; a date routine, text that is no date) or its
// literal, lexed the way the server lexes a utf8mb4 statement, is exactly one
// string token, with backslash escapes on and with NO_BACKSLASH_ESCAPES alike,
// and with backslash escapes on it reads back as the caller's text (NULs
// removed; with the cut, a prefix of at most 255 escaped characters).
// Anything else aborts.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "access/General.h"
#include "access/SqlValues.h"
#include "access/TableProvider.h"
#include "orvmysql/Error.h"
#include "orvmysql/Query.h"
#include "query/Renderers.h"

namespace {

using namespace orvmysql;

// --- The server's lexical rules for a quoted string in utf8mb4 -------------
//
// Inside '...' the lexer reads one character at a time. A byte that starts a
// well-formed utf8mb4 character (by the server's own test, which lets
// surrogates pass) takes the whole character, so none of its bytes can end
// the string. Any other byte is a character of its own. With backslash
// escapes on, a backslash takes the next byte with it. A quote followed by a
// quote is one quote inside the string; any other quote ends the string.

bool Continuation(unsigned char c) {
  return (c & 0xC0) == 0x80;
}

// Length of the multi-byte character the server sees at p, or 0.
std::size_t ServerCharLength(const unsigned char* p, std::size_t available) {
  const unsigned char c = p[0];
  if (c < 0xC2) return 0;
  if (c < 0xE0) return available >= 2 && Continuation(p[1]) ? 2 : 0;
  if (c < 0xF0) {
    return available >= 3 && Continuation(p[1]) && Continuation(p[2]) && (c >= 0xE1 || p[1] >= 0xA0)
               ? 3
               : 0;
  }
  if (c < 0xF5) {
    return available >= 4 && Continuation(p[1]) && Continuation(p[2]) && Continuation(p[3]) &&
                   (c >= 0xF1 || p[1] >= 0x90) && (c <= 0xF3 || p[1] <= 0x8F)
               ? 4
               : 0;
  }
  return 0;
}

// The documented escape sequences; \% and \_ keep their backslash (they are
// meant for LIKE), any other escaped character stands for itself.
std::string Unescaped(unsigned char c) {
  switch (c) {
    case '0':
      return std::string(1, '\0');
    case 'b':
      return "\b";
    case 'n':
      return "\n";
    case 'r':
      return "\r";
    case 't':
      return "\t";
    case 'Z':
      return "\x1A";
    case '%':
      return "\\%";
    case '_':
      return "\\_";
    default:
      return std::string(1, static_cast<char>(c));
  }
}

struct Token {
  std::size_t end;    // one past the closing quote
  std::string value;  // the string the server reads
};

// Lexes the string that starts with the quote at sql[start].
std::optional<Token> LexString(std::string_view sql, std::size_t start, bool backslash_escapes) {
  const auto* p = reinterpret_cast<const unsigned char*>(sql.data());
  std::string value;
  std::size_t i = start + 1;
  while (i < sql.size()) {
    if (const std::size_t n = ServerCharLength(p + i, sql.size() - i)) {
      value.append(sql.substr(i, n));
      i += n;
    } else if (p[i] == '\\' && backslash_escapes) {
      if (i + 1 == sql.size()) return std::nullopt;
      value += Unescaped(p[i + 1]);
      i += 2;
    } else if (p[i] == '\'') {
      if (i + 1 < sql.size() && p[i + 1] == '\'') {
        value += '\'';
        i += 2;
      } else {
        return Token{i + 1, std::move(value)};
      }
    } else {
      value += sql[i];
      ++i;
    }
  }
  return std::nullopt;  // never closed
}

// The statement with each string literal replaced by "?", as a statement
// digest sees it; empty when a literal is never closed.
std::string Shape(std::string_view sql, bool backslash_escapes) {
  std::string shape;
  for (std::size_t i = 0; i < sql.size();) {
    if (sql[i] != '\'') {
      shape += sql[i++];
      continue;
    }
    const auto token = LexString(sql, i, backslash_escapes);
    if (!token) return {};
    shape += '?';
    i = token->end;
  }
  return shape;
}

// --- What the routines must give --------------------------------------------

// Well-formed UTF-8, decoded into code points (an independent reading of the
// rules the library applies).
bool WellFormed(std::string_view text) {
  for (std::size_t i = 0; i < text.size();) {
    const auto c = static_cast<unsigned char>(text[i]);
    const std::size_t n = c < 0x80         ? 1
                          : c >> 5 == 0x6  ? 2
                          : c >> 4 == 0xE  ? 3
                          : c >> 3 == 0x1E ? 4
                                           : 0;
    if (n == 0 || i + n > text.size()) return false;
    uint32_t cp = n == 1 ? c : c & (0x7F >> n);
    for (std::size_t k = 1; k < n; ++k) {
      const auto b = static_cast<unsigned char>(text[i + k]);
      if (!Continuation(b)) return false;
      cp = cp << 6 | (b & 0x3F);
    }
    static constexpr uint32_t kSmallest[] = {0, 0, 0x80, 0x800, 0x10000};
    if (cp < kSmallest[n] || cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF)) return false;
    i += n;
  }
  return true;
}

void Check(bool condition) {
  if (!condition) std::abort();
}

// Runs a routine; it may refuse only text that is not UTF-8, and only with
// error 5. True when it returned.
template <class F>
bool Refusable(std::string_view text, F&& f) {
  try {
    f();
    return true;
  } catch (const Error& e) {
    Check(e.Number() == kErrInvalidCall && !WellFormed(text));
    return false;
  }
}

std::size_t Characters(std::string_view text) {
  std::size_t n = 0;
  for (char c : text) n += !Continuation(static_cast<unsigned char>(c));
  return n;
}

std::string WithoutNuls(std::string_view text) {
  std::string out;
  for (char c : text) {
    if (c != '\0') out += c;
  }
  return out;
}

bool Blank(std::string_view text) {
  return text.find_first_not_of(' ') == std::string_view::npos;
}

// The quoted literal (apostrophes included) is one string token in either
// mode; returns what it reads as with backslash escapes on.
std::string OneToken(std::string_view literal) {
  Check(!literal.empty() && literal.front() == '\'');
  for (bool escapes : {true, false}) {
    const auto token = LexString(literal, 0, escapes);
    Check(token && token->end == literal.size());
  }
  return LexString(literal, 0, true)->value;
}

// The value read back is the caller's text without NULs, or, with the cut, a
// prefix of it whose escaped form (body) has at most 255 characters and that
// stops short only where the next character or escape pair would not fit.
void ReadsBack(std::string_view text, const std::string& value, std::string_view body, bool cut) {
  const std::string expected = Blank(text) ? std::string() : WithoutNuls(text);
  if (!cut) {
    Check(value == expected);
    return;
  }
  Check(expected.compare(0, value.size(), value) == 0);
  Check(Characters(body) <= 255);
  if (value.size() < expected.size()) Check(Characters(body) >= 254);
}

void QuotingRoutine(std::string_view text) {
  for (bool cut : {true, false}) {
    std::string body;
    if (!Refusable(text, [&] { body = GetQuotedString(text, cut); })) continue;
    Check(WellFormed(text));
    ReadsBack(text, OneToken("'" + body + "'"), body, cut);
  }
}

void FieldValues(std::string_view text) {
  const Variant value{std::string(text)};
  for (bool cut : {true, false}) {
    std::string literal;
    if (Refusable(text, [&] { literal = sql::Text(value, cut); })) {
      ReadsBack(text, OneToken(literal), std::string_view(literal).substr(1, literal.size() - 2),
                cut);
    }
    if (Refusable(text, [&] { literal = sql::TextOrNull(value, cut); }) && literal != "NULL") {
      OneToken(literal);
    }
  }
  static constexpr dp::As kLayout[] = {dp::As::Text, dp::As::TextOrNull, dp::As::LongTextOrNull};
  std::vector<std::string> formatted;
  if (Refusable(text, [&] { formatted = dp::FormatFields({value, value, value}, kLayout); })) {
    for (const std::string& literal : formatted) {
      if (literal != "NULL") OneToken(literal);
    }
  }
}

// The LIKE pattern reads back as the text once its LIKE escapes are undone.
void LikePattern(std::string_view text) {
  std::string body;
  if (!Refusable(text, [&] { body = dp::LiteralPattern(text); })) return;
  const std::string pattern = OneToken("'" + body + "'");
  std::string value;
  for (std::size_t i = 0; i < pattern.size(); ++i) {
    if (pattern[i] == '\\' && i + 1 < pattern.size()) ++i;
    value += pattern[i];
  }
  const std::string expected = Blank(text) ? std::string() : WithoutNuls(text);
  Check(expected.compare(0, value.size(), value) == 0);
}

// A text condition has the shape of the same condition on a plain value.
void TextConditions(std::string_view text) {
  std::string probe;
  if (!Refusable(text, [&] { probe = GetQuotedString(text, false); })) return;
  // An empty value renders differently by design; compare like with like.
  const Variant reference{probe.empty() ? std::string() : std::string("x")};
  for (int32_t op : {dcoEqualto, dconotequalto, dcoBeginsWith, dcoEndsWith, dcoContains,
                     dcoDoesNotBeginWith, dcoDoesNotEndWith, dcoDoesNotContain}) {
    for (bool long_text : {true, false}) {
      const CCondition condition("Name", static_cast<ConditionOperatorEnum>(op),
                                 Variant(std::string(text)));
      const CCondition plain("Name", static_cast<ConditionOperatorEnum>(op), reference);
      const std::string sql = detail::GetStringCondition(condition, "t.`Name`", long_text);
      const std::string expected = detail::GetStringCondition(plain, "t.`Name`", long_text);
      for (bool escapes : {true, false}) {
        const std::string shape = Shape(sql, escapes);
        Check(!shape.empty() && shape == Shape(expected, escapes));
      }
    }
  }
}

// Dates read from text are written from their parts; whatever the text, the
// literal is NULL or blanks around one string token.
void DateLiterals(std::string_view text) {
  const Variant value{std::string(text)};
  for (auto* routine :
       {&ConvertDateIntoSQLFormat, &ConvertTimeIntoSQLFormat, &ConvertDateTimeIntoSQLFormat}) {
    std::string literal;
    try {
      literal = routine(value);
    } catch (const Error& e) {
      // Not a date (13), out of range (6, 5): refused before any SQL.
      Check(e.Number() != kErrInternal && e.Number() != kErrOutOfMemory);
      continue;
    }
    if (literal == "NULL") continue;
    const std::size_t first = literal.find_first_not_of(' ');
    const std::size_t last = literal.find_last_not_of(' ');
    Check(first != std::string::npos);
    OneToken(std::string_view(literal).substr(first, last - first + 1));
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  QuotingRoutine(text);
  FieldValues(text);
  LikePattern(text);
  TextConditions(text);
  DateLiterals(text);
  return 0;
}
