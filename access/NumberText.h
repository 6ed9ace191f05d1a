#pragma once

// Numbers as text: the one conversion of a double to text, the check that a
// text is a plain decimal number before it is pasted unquoted into SQL, and
// the reading of a number a person typed in the program's locale.

#include <string>
#include <string_view>

namespace orvmysql {

// The double as the platform writes a number: plain decimal digits for
// magnitudes from 0.0001 up to 1e15, exponent form outside that range, and
// always the shortest text that reads back as the same double ("100000",
// "123456789.125", "0.30000000000000004", "1e+15", "1e-05").
std::string DoubleText(double value);

// True when the text, without blanks, tabs and line breaks around it, is a
// decimal number as SQL reads one: an optional sign, digits with an optional
// decimal point, and an optional exponent. With whole_only, sign and digits
// only. Such a text can be pasted into a statement as it is given.
bool IsDecimalNumber(std::string_view text, bool whole_only = false);

// The number in a text typed the way the program's LC_NUMERIC locale writes
// numbers: its decimal separator stands for the point ("12,5" is 12.5 under a
// decimal-comma locale), and a point is read as a decimal point in any locale.
// Group separators are not read. Raises 13 when the text is not a number and
// 6 when it is too large for a double.
double LocaleNumber(std::string_view text);

}  // namespace orvmysql
