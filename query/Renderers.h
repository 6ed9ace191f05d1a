#pragma once

// The renderers of CConditionToStringBuilder: each turns one condition into
// one SQL predicate on its column text (alias + "." + backquoted name).

#include <string>
#include <string_view>

#include "orvmysql/Query.h"
#include "orvmysql/Variant.h"

namespace orvmysql::detail {

// Data types 1 (long_text, never cut) and 2 (cut to 255 characters).
std::string GetStringCondition(const CCondition& condition, const std::string& column,
                               bool long_text);
// Data types 3, 4, 10 and 11.
std::string GetNumericCondition(const CCondition& condition, const std::string& column);
// Data type 9.
std::string GetBitMaskCondition(const CCondition& condition, const std::string& column);
// Data type 8.
std::string GetBooleanCondition(const CCondition& condition, const std::string& column);
// Data types 5, 6 and 7 (DateConditions.cpp).
std::string GetDateTimeCondition(const CCondition& condition, const std::string& column);
std::string GetDateCondition(const CCondition& condition, const std::string& column);
std::string GetTimeCondition(const CCondition& condition, const std::string& column);

// The value as the renderers read it: empty text for a user-defined value,
// the text when_empty for an Empty value, otherwise the value itself.
Variant ReadValue(const CCondition& condition, std::string_view when_empty);
// True for the text NULL (blanks around it and case do not matter).
bool IsNullText(const Variant& value);

// The comparison 1-6 (equals ... greater than or equal) that an operator
// stands for: 1-6 themselves, 30 on, 31 on or before, 32 on or after, 43
// before, 44 after; 0 for any other operator.
int ComparisonOf(int32_t op);
// " = ", " <> ", " < ", " > ", " <= ", " >= " by comparison 1-6.
std::string_view ComparisonSql(int comparison);
// The numeric pairing for a NULL value: " IS NOT NULL " for not equal, less
// and greater, " IS NULL " for the others.
std::string_view NumericNullForm(int comparison);

// Raises 8195 for the condition's operator and attribute.
[[noreturn]] void RaiseInvalidOperator(const CCondition& condition, std::string_view location);

}  // namespace orvmysql::detail
