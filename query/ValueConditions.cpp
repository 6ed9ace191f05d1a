// Renderers for text, numeric, bit-mask and boolean attributes.

#include <algorithm>

#include "access/ErrorHandling.h"
#include "access/General.h"
#include "access/NumberText.h"
#include "query/Operators.h"
#include "query/Renderers.h"
#include "query/TextUtil.h"

namespace orvmysql::detail {

namespace {

constexpr std::string_view kNumericLocation =
    "CConditionToStringBuilder:GetNumericCondition method";

// The value's text, as it is given, when it is a number as SQL writes one
// (blanks around it allowed); anything else raises 13 so that an unquoted
// value can never add SQL of its own.
std::string NumericLiteral(const CCondition& condition, const Variant& value) {
  std::string text = value.ToText();
  if (!IsDecimalNumber(text)) {
    ThrowRuntimeError(kErrTypeMismatch, "the value '" + text + "' of the attribute '" +
                                            condition.AttributeName() + "' is not a number");
  }
  return text;
}

// Text operators: COL + keyword + "'" + lead + VAL + trail + "'".
struct TextOperator {
  int32_t op;
  std::string_view keyword;
  std::string_view lead;
  std::string_view trail;
  bool negated;  // a NULL column counts as a match
};

constexpr TextOperator kTextOperators[] = {
    {dcoEqualto, " = ", "", "", false},
    {dconotequalto, " <> ", "", "", true},
    {dcoBeginsWith, " LIKE ", "", "%", false},
    {dcoEndsWith, " LIKE ", "%", "", false},
    {dcoContains, " LIKE ", "%", "%", false},
    {dcoDoesNotBeginWith, " NOT LIKE ", "", "%", true},
    {dcoDoesNotEndWith, " NOT LIKE ", "%", "", true},
    {dcoDoesNotContain, " NOT LIKE ", "%", "%", true},
};

}  // namespace

Variant ReadValue(const CCondition& condition, std::string_view when_empty) {
  if (condition.ValueType() == dcfvtUserDefined) return Variant(std::string());
  if (condition.Value().IsEmpty()) return Variant(when_empty);
  return condition.Value();
}

bool IsNullText(const Variant& value) {
  if (!value.IsText()) return false;
  return SameText(TrimBlanks(value.Text()), "NULL");
}

int ComparisonOf(int32_t op) {
  switch (op) {
    case dcoEqualto:
    case dconotequalto:
    case dcoLessThan:
    case dcoGreaterThan:
    case dcoLessThanEqualTo:
    case dcoGreaterThanEqualTo:
      return op;
    case dcoOn:
      return dcoEqualto;
    case dcoOnOrBefore:
      return dcoLessThanEqualTo;
    case dcoOnOrAfter:
      return dcoGreaterThanEqualTo;
    case dcoBefore:
      return dcoLessThan;
    case dcoAfter:
      return dcoGreaterThan;
    default:
      return 0;
  }
}

std::string_view ComparisonSql(int comparison) {
  static constexpr std::string_view kSql[] = {" = ", " <> ", " < ", " > ", " <= ", " >= "};
  return kSql[comparison - 1];
}

std::string_view NumericNullForm(int comparison) {
  return comparison == dconotequalto || comparison == dcoLessThan || comparison == dcoGreaterThan
             ? " IS NOT NULL "
             : " IS NULL ";
}

void RaiseInvalidOperator(const CCondition& condition, std::string_view location) {
  RaiseError(
      kMsgInvalidOperator, location,
      {Variant(OperatorDisplayName(condition.Operator())), Variant(condition.AttributeName())});
}

std::string GetStringCondition(const CCondition& condition, const std::string& column,
                               bool long_text) {
  return Guard({"CConditionToStringBuilder:GetStringCondition method ("}, [&]() -> std::string {
    const int32_t op = condition.Operator();
    if (op == dcoNull) return "(" + column + " = '' OR " + column + " IS NULL) ";
    if (op == dcoNotNull) return "(" + column + " <> '' AND " + column + " IS NOT NULL) ";
    const std::string value = GetQuotedString(ReadValue(condition, "").ToText(), !long_text);
    const auto* found = std::find_if(std::begin(kTextOperators), std::end(kTextOperators),
                                     [&](const TextOperator& t) { return t.op == op; });
    if (found == std::end(kTextOperators)) {
      RaiseInvalidOperator(condition, "CConditionToStringBuilder:GetStringCondition method");
    }
    const bool empty = value.empty();
    // "Contains" an empty text matches the empty text, not everything.
    const bool bare = empty && found->lead == "%" && found->trail == "%";
    std::string text = column;
    text += found->keyword;
    text += '\'';
    if (!bare) text += found->lead;
    text += value;
    if (!bare) text += found->trail;
    text += '\'';
    if (found->negated) {
      return "(" + text +
             (empty ? " AND " + column + " IS NOT NULL)" : " OR " + column + " IS NULL)");
    }
    return empty ? "(" + text + " OR " + column + " IS NULL)" : text;
  });
}

std::string GetNumericCondition(const CCondition& condition, const std::string& column) {
  return Guard({"CConditionToStringBuilder:GetNumericCondition method ("}, [&]() -> std::string {
    const int32_t op = condition.Operator();
    if (op == dcoNull) return column + " IS NULL ";
    if (op == dcoNotNull) return column + " IS NOT NULL ";
    if (op < dcoEqualto || op > dcoGreaterThanEqualTo) {
      RaiseInvalidOperator(condition, kNumericLocation);
    }
    const Variant value = ReadValue(condition, "NULL");
    if (IsNullText(value)) return column + std::string(NumericNullForm(op));
    return column + std::string(ComparisonSql(op)) + NumericLiteral(condition, value);
  });
}

std::string GetBitMaskCondition(const CCondition& condition, const std::string& column) {
  return Guard({"CConditionToStringBuilder:GetBitMaskCondition Ln "}, [&]() -> std::string {
    const auto mask = [&] {
      const Variant& value = condition.Value();
      return value.IsEmpty() ? std::string("0") : NumericLiteral(condition, value);
    };
    switch (condition.Operator()) {
      case dcoEqualto:
        return column + " = " + mask();
      case dconotequalto:
        return column + " <> " + mask();
      case dcoContains: {
        const std::string m = mask();
        return column + " & " + m + " = " + m;
      }
      case dcoDoesNotContain:
        return column + " & " + mask() + " = 0 ";
      case dcoNull:
        return column + " = 0 ";
      case dcoNotNull:
        return column + " <> 0 ";
      default:
        // Reported under the numeric renderer's name, as the engine expects.
        RaiseInvalidOperator(condition, kNumericLocation);
    }
  });
}

std::string GetBooleanCondition(const CCondition& condition, const std::string& column) {
  return Guard({"CConditionToStringBuilder:GetBooleanCondition method ("}, [&]() -> std::string {
    bool flag = false;
    const Variant& value = condition.Value();
    if (condition.ValueType() != dcfvtUserDefined) {
      if (value.IsText()) {
        flag = LowerCase(value.Text()) == "yes";
      } else if (!value.IsEmpty()) {
        flag = value.ToBoolean();
      }
    }
    const std::string literal = ConvertBooleanIntoSQLFormat(flag);
    switch (condition.Operator()) {
      case dcoEqualto:
        return column + " = " + literal;
      case dconotequalto:
        return column + " <> " + literal;
      default:
        RaiseInvalidOperator(condition, "CConditionToStringBuilder:GetBooleanCondition method");
    }
  });
}

}  // namespace orvmysql::detail
