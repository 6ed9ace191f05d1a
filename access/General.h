#pragma once

// SQL literal formatting shared by every provider (keys: orvmysql/Keys.h).

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "orvmysql/Connection.h"
#include "orvmysql/Keys.h"
#include "orvmysql/Variant.h"

namespace orvmysql {

// A new GUID as 32 upper-case hexadecimal digits, without separators.
std::string GetGUID();

// Text escaped for a quoted SQL literal (the caller adds the apostrophes):
// a text of blanks only gives "", NULs are removed, every ' becomes '' and
// every \ becomes \\. With limit255 the text is cut to 255 characters of the
// escaped text (UTF-8 characters, never bytes) without splitting a character
// or an escape pair, so the literal always stays closed. A text that is not
// valid UTF-8 raises 5 (see RequireUtf8), wherever the fault stands.
std::string GetQuotedString(std::string_view text, bool limit255);

// Raises 5 ("Invalid procedure call or argument: text is not valid UTF-8 at
// byte N: ...", N counted from 1 and offset by offset) unless the text is
// well-formed UTF-8: no stray continuation bytes, no sequences cut short, no
// overlong forms, no surrogates, nothing beyond U+10FFFF.
void RequireUtf8(std::string_view text, std::size_t offset = 0);

// " 'yyyy-mm-dd' " (blanks included) or "NULL" for an Empty or Null value.
std::string ConvertDateIntoSQLFormat(const Variant& date);
// "'1899-12-30 hh:mm:ss'" or "NULL" for an Empty or Null value.
std::string ConvertTimeIntoSQLFormat(const Variant& time);
// " 'yyyy-mm-dd hh:mm:ss' " (blanks included) or "NULL" for an Empty or Null value.
std::string ConvertDateTimeIntoSQLFormat(const Variant& date_time);
// "1" or "0".
std::string ConvertBooleanIntoSQLFormat(bool value);
// The text with \ [ ] % _ escaped by a backslash, for a LIKE pattern.
std::string EscapeLikeString(std::string_view text);

}  // namespace orvmysql
