#include "access/General.h"

#include <uuid/uuid.h>

#include <array>
#include <cstdio>
#include <cstring>
#include <limits>
#include <utility>

#include "access/ErrorHandling.h"

namespace orvmysql {

namespace {

bool IsBlank(std::string_view text) {
  return text.find_first_not_of(' ') == std::string_view::npos;
}

// Bytes copied into a literal as they stand: ASCII other than NUL, the quote
// and the backslash.
constexpr auto kCopied = [] {
  std::array<bool, 256> copied{};
  for (int c = 1; c < 0x80; ++c) copied[c] = c != '\'' && c != '\\';
  return copied;
}();

bool IsContinuation(unsigned char c) {
  return (c & 0xC0) == 0x80;
}

// The range the second byte of a sequence must fall in, which excludes
// overlong forms, surrogates and code points beyond U+10FFFF.
std::pair<unsigned char, unsigned char> SecondByteRange(unsigned char lead) {
  switch (lead) {
    case 0xE0:
      return {0xA0, 0xBF};
    case 0xED:
      return {0x80, 0x9F};
    case 0xF0:
      return {0x90, 0xBF};
    case 0xF4:
      return {0x80, 0x8F};
    default:
      return {0x80, 0xBF};
  }
}

// Bytes of the sequence a lead byte starts; 0 for a byte that starts none.
std::size_t ExpectedLength(unsigned char lead) {
  if (lead >= 0xC2 && lead <= 0xDF) return 2;
  if (lead >= 0xE0 && lead <= 0xEF) return 3;
  if (lead >= 0xF0 && lead <= 0xF4) return 4;
  return 0;
}

// Length of the well-formed UTF-8 sequence of 2 to 4 bytes at p, or 0 when
// the bytes there are not one.
std::size_t Utf8SequenceLength(const unsigned char* p, std::size_t available) {
  const std::size_t length = ExpectedLength(p[0]);
  if (length == 0 || length > available) return 0;
  const auto [low, high] = SecondByteRange(p[0]);
  if (p[1] < low || p[1] > high) return 0;
  for (std::size_t k = 2; k < length; ++k) {
    if (!IsContinuation(p[k])) return 0;
  }
  return length;
}

std::string Hex(unsigned char c) {
  static constexpr char kDigits[] = "0123456789ABCDEF";
  return {'0', 'x', kDigits[c >> 4], kDigits[c & 0x0F]};
}

// Raises 5 naming the byte at text[i] (counted from 1, after offset bytes of
// the caller's text) and why no character starts there.
[[noreturn]] void RaiseInvalidUtf8(std::string_view text, std::size_t i, std::size_t offset = 0) {
  const auto* p = reinterpret_cast<const unsigned char*>(text.data()) + i;
  const std::size_t available = text.size() - i;
  const std::string lead = Hex(p[0]);
  const std::size_t length = ExpectedLength(p[0]);
  std::string why;
  if (IsContinuation(p[0])) {
    why = lead + " is a continuation byte without a lead byte";
  } else if (p[0] == 0xC0 || p[0] == 0xC1) {
    why = lead + " starts an overlong encoding";
  } else if (length == 0) {
    why = lead + (p[0] <= 0xF7 ? " starts a code point beyond U+10FFFF" : " never occurs in UTF-8");
  } else {
    const auto [low, high] = SecondByteRange(p[0]);
    std::size_t k = 1;
    while (k < length && k < available && IsContinuation(p[k])) ++k;
    if (k < length && k < available) {
      why = lead + " is followed by " + Hex(p[k]) + ", which is not a continuation byte";
    } else if (k < length) {
      why = lead + " starts a sequence that the text cuts short";
    } else if (p[1] < low) {
      why = lead + " " + Hex(p[1]) + " is an overlong encoding";
    } else if (p[0] == 0xED) {
      why = lead + " " + Hex(p[1]) + " encodes a surrogate (U+D800 to U+DFFF)";
    } else {
      why = lead + " " + Hex(p[1]) + " encodes a code point beyond U+10FFFF";
    }
  }
  ThrowRuntimeError(kErrInvalidCall, "text is not valid UTF-8 at byte " +
                                         std::to_string(offset + i + 1) + ": " + why);
}

std::string TwoDigits(int v) {
  char buf[3] = {static_cast<char>('0' + v / 10 % 10), static_cast<char>('0' + v % 10), 0};
  return buf;
}

std::string FormatDate(const DateParts& p) {
  char buf[16];
  std::snprintf(buf, sizeof buf, "%04d-%02d-%02d", p.year, p.month, p.day);
  return buf;
}

std::string FormatTime(const DateParts& p) {
  return TwoDigits(p.hour) + ":" + TwoDigits(p.minute) + ":" + TwoDigits(p.second);
}

bool NoDate(const Variant& v) {
  return v.IsEmpty() || v.IsNull();
}

}  // namespace

std::string GetGUID() {
  return detail::Guard({"GetGUID method ("}, [] {
    uuid_t id;
    uuid_generate(id);
    static constexpr char kHex[] = "0123456789ABCDEF";
    std::string text;
    text.reserve(32);
    for (unsigned char byte : id) {
      text += kHex[byte >> 4];
      text += kHex[byte & 0x0F];
    }
    return text;
  });
}

std::string GetQuotedString(std::string_view text, bool limit255) {
  return detail::Guard({"GetQuotedString method ("}, [&] {
    std::string out;
    if (IsBlank(text)) return out;
    const auto* bytes = reinterpret_cast<const unsigned char*>(text.data());
    const std::size_t size = text.size();
    const std::size_t limit = limit255 ? 255 : std::numeric_limits<std::size_t>::max();
    out.reserve(std::min(size, limit) + 8);
    std::size_t chars = 0;  // characters of the escaped text so far
    std::size_t i = 0;
    while (i < size && chars < limit) {
      // A run of bytes that are copied as they stand, one character each,
      // up to the cut.
      const std::size_t stop = i + std::min(size - i, limit - chars);
      std::size_t run = i;
      while (run < stop && kCopied[bytes[run]]) ++run;
      if (run > i) {
        out.append(text.data() + i, run - i);
        chars += run - i;
        i = run;
        continue;
      }
      const unsigned char c = bytes[i];
      if (c == 0) {
        ++i;
        continue;
      }
      // An escape pair is two characters of the literal; a cut that would
      // split it drops the whole pair, so the literal always stays closed.
      const bool pair = c == '\'' || c == '\\';
      const std::size_t length = pair ? 1 : Utf8SequenceLength(bytes + i, size - i);
      if (length == 0) RaiseInvalidUtf8(text, i);
      if (chars + (pair ? 2 : 1) > limit) break;
      if (pair) out += static_cast<char>(c);
      out.append(text.data() + i, length);
      chars += pair ? 2 : 1;
      i += length;
    }
    // Text beyond the cut is not written, but a text that is not UTF-8 is
    // refused wherever its fault stands.
    RequireUtf8(text.substr(i), i);
    return out;
  });
}

void RequireUtf8(std::string_view text, std::size_t offset) {
  const auto* bytes = reinterpret_cast<const unsigned char*>(text.data());
  for (std::size_t i = 0; i < text.size();) {
    // ASCII eight bytes at a time.
    uint64_t word;
    if (i + sizeof word <= text.size() &&
        (std::memcpy(&word, bytes + i, sizeof word), (word & 0x8080808080808080u) == 0)) {
      i += sizeof word;
      continue;
    }
    if (bytes[i] < 0x80) {
      ++i;
      continue;
    }
    const std::size_t length = Utf8SequenceLength(bytes + i, text.size() - i);
    if (length == 0) RaiseInvalidUtf8(text, i, offset);
    i += length;
  }
}

std::string ConvertDateIntoSQLFormat(const Variant& date) {
  return detail::Guard({"ConvertDateIntoSQLFormat method ("}, [&]() -> std::string {
    if (NoDate(date)) return "NULL";
    return " '" + FormatDate(date.ToDate().Parts()) + "' ";
  });
}

std::string ConvertTimeIntoSQLFormat(const Variant& time) {
  return detail::Guard({"ConvertTimeIntoSQLFormat method ("}, [&]() -> std::string {
    if (NoDate(time)) return "NULL";
    return "'1899-12-30 " + FormatTime(time.ToDate().Parts()) + "'";
  });
}

std::string ConvertDateTimeIntoSQLFormat(const Variant& date_time) {
  // Reports under the time routine's name, as the engine's error trails expect.
  return detail::Guard({"ConvertTimeIntoSQLFormat method ("}, [&]() -> std::string {
    if (NoDate(date_time)) return "NULL";
    const DateParts p = date_time.ToDate().Parts();
    return " '" + FormatDate(p) + " " + FormatTime(p) + "' ";
  });
}

std::string ConvertBooleanIntoSQLFormat(bool value) {
  return value ? "1" : "0";
}

std::string EscapeLikeString(std::string_view text) {
  if (text.find_first_of("[]%_\\") == std::string_view::npos) return std::string(text);
  std::string out;
  out.reserve(text.size() + 8);
  for (char c : text) {
    if (c == '\\' || c == '[' || c == ']' || c == '%' || c == '_') out += '\\';
    out += c;
  }
  return out;
}

}  // namespace orvmysql
