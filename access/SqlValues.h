#pragma once

// Formatting of field-array values into SQL literals, shared by every provider.
// Numbers are converted to numbers before they are written (a text that is not
// a number raises 13), and texts reach SQL only through GetQuotedString, so no
// value can change the shape of a statement.

#include <cstddef>
#include <string>

#include "orvmysql/Variant.h"

namespace orvmysql::sql {

// Position i of a field array; raises error 9 when the array is too short.
const Variant& At(const FieldArray& fields, std::size_t i);
// Raises error 9 unless the array has at least n positions, so that a short
// array fails before any statement runs.
void RequireSize(const FieldArray& fields, std::size_t n);

// Decimal text of the value as a 32-bit integer.
std::string Long(const Variant& v);
// The value as a double in the platform's number text (DoubleText), always
// with a decimal point or an exponent ("2.5", "100000.0", "1e+300"); a value
// that is not finite raises 6.
std::string Double(const Variant& v);
// "'" + GetQuotedString(text, limit255) + "'". Null raises 94.
std::string Text(const Variant& v, bool limit255 = true);
// As Text, or the bare NULL when the value is Null or its text is empty.
std::string TextOrNull(const Variant& v, bool limit255 = true);
// As Text, with Null read as an empty text (for values read back from rows).
std::string TextOrEmpty(const Variant& v, bool limit255 = true);
// A number as the platform writes it: an integer in decimal, a double in its
// shortest text (DoubleText, no ".0" added), a text only when it is a decimal
// number (else 13), without the blanks around it; the bare NULL for Null.
std::string Number(const Variant& v);
// Long, or the bare NULL for Null.
std::string LongOrNull(const Variant& v);
// Date literals (NULL for an Empty or Null value).
std::string DateTime(const Variant& v);
std::string DateOnly(const Variant& v);
std::string Time(const Variant& v);
// "1" or "0".
std::string Boolean(const Variant& v);

// The two literals that one value of instance data writes: its text column
// and its numeric column.
struct ValueColumns {
  std::string text, number;
};
// The value rule of instance data. The value is trimmed of blanks; blanks
// only (or Null) give NULL in both columns. For the text-like data types (1,
// 6, 7 and 8) the text column gets the quoted text (not cut) and the numeric
// column NULL; for every other data type the text column gets NULL and the
// numeric column the number, read by LocaleNumber and written with a point
// (DoubleText). A value that is not a number raises 13.
ValueColumns ValueByType(const Variant& value, const Variant& data_type);

}  // namespace orvmysql::sql
