#include "access/General.h"

#include <uuid/uuid.h>

#include <cstdio>
#include <limits>

#include "access/ErrorHandling.h"

namespace orvmysql {

namespace {

bool IsBlank(std::string_view text) {
  return text.find_first_not_of(' ') == std::string_view::npos;
}

// Length of the UTF-8 sequence that starts with this byte; a stray byte counts
// as one character of its own.
std::size_t Utf8Length(unsigned char lead) {
  if (lead < 0xC0) return 1;
  if (lead < 0xE0) return 2;
  if (lead < 0xF0) return 3;
  return 4;
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
    out.reserve(text.size() + 8);
    std::size_t chars = 0;
    for (std::size_t i = 0; i < text.size();) {
      const char c = text[i];
      std::string_view unit;
      if (c == '\0') {
        ++i;
        continue;
      } else if (c == '\'') {
        unit = "''";
        ++i;
      } else if (c == '\\') {
        unit = "\\\\";
        ++i;
      } else {
        std::size_t n = std::min(Utf8Length(static_cast<unsigned char>(c)), text.size() - i);
        unit = text.substr(i, n);
        i += n;
      }
      // An escape pair is two characters of the literal; a cut that would split
      // it drops the whole pair, so the literal always stays closed.
      const std::size_t unit_chars = (unit == "''" || unit == "\\\\") ? 2 : 1;
      if (limit255 && chars + unit_chars > 255) break;
      out += unit;
      chars += unit_chars;
    }
    return out;
  });
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
