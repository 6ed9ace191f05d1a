#include "query/Operators.h"

#include <charconv>

#include "orvmysql/Query.h"
#include "query/TextUtil.h"

namespace orvmysql::detail {

namespace {

constexpr EnumName kOperators[] = {
    {dcoEqualto, "dcoEqualto"},
    {dconotequalto, "dconotequalto"},
    {dcoLessThan, "dcoLessThan"},
    {dcoGreaterThan, "dcoGreaterThan"},
    {dcoLessThanEqualTo, "dcoLessThanEqualTo"},
    {dcoGreaterThanEqualTo, "dcoGreaterThanEqualTo"},
    {dcoBeginsWith, "dcoBeginsWith"},
    {dcoEndsWith, "dcoEndsWith"},
    {dcoContains, "dcoContains"},
    {dcoDoesNotBeginWith, "dcoDoesNotBeginWith"},
    {dcoDoesNotEndWith, "dcoDoesNotEndWith"},
    {dcoDoesNotContain, "dcoDoesNotContain"},
    {dcoContainsSimilar, "dcoContainsSimilar"},
    {dcoNull, "dcoNull"},
    {dcoNotNull, "dcoNotNull"},
    {dcoYesterday, "dcoYesterday"},
    {dcoToday, "dcoToday"},
    {dcoTomorrow, "dcoTomorrow"},
    {dcoNextSevenDays, "dcoNextSevenDays"},
    {dcoLastSevenDays, "dcoLastSevenDays"},
    {dcoNextWeek, "dcoNextWeek"},
    {dcoLastWeek, "dcoLastWeek"},
    {dcoThisWeek, "dcoThisWeek"},
    {dcoThisMonth, "dcoThisMonth"},
    {dcoLastMonth, "dcoLastMonth"},
    {dcoNextMonth, "dcoNextMonth"},
    {dcoThisYear, "dcoThisYear"},
    {dcoLastYear, "dcoLastYear"},
    {dcoNextYear, "dcoNextYear"},
    {dcoOn, "dcoOn"},
    {dcoOnOrBefore, "dcoOnOrBefore"},
    {dcoOnOrAfter, "dcoOnOrAfter"},
    {dcoLastXHours, "dcoLastXHours"},
    {dcoNextXHours, "dcoNextXHours"},
    {dcoLastXDays, "dcoLastXDays"},
    {dcoNextXDays, "dcoNextXDays"},
    {dcoLastXWeeks, "dcoLastXWeeks"},
    {dcoNextXWeeks, "dcoNextXWeeks"},
    {dcoLastXMonths, "dcoLastXMonths"},
    {dcoNextXMonths, "dcoNextXMonths"},
    {dcoLastXYears, "dcoLastXYears"},
    {dcoNextXYears, "dcoNextXYears"},
    {dcoBefore, "dcoBefore"},
    {dcoAfter, "dcoAfter"},
    {dcoIn, "dcoIn"},
};

// By operator value 1 to 45.
constexpr std::string_view kDisplayNames[] = {
    "equals",
    "not equal to",
    "less than",
    "greater than",
    "less than equal to",
    "greater than equal to",
    "begins with",
    "ends with",
    "contains",
    "does not begin with",
    "does not end with",
    "does not contain",
    "contains similar",
    "null",
    "not null",
    "yesterday",
    "today",
    "tomorrow",
    "next seven days",
    "last seven days",
    "next week",
    "last week",
    "this week",
    "this month",
    "last month",
    "next month",
    "this year",
    "last year",
    "next year",
    "on",
    "on or before",
    "on or after",
    "last X hours",
    "next X hours",
    "last X days",
    "next X days",
    "last X weeks",
    "next X weeks",
    "last X months",
    "next X months",
    "last X years",
    "next X years",
    "before",
    "after",
    "in",
};
static_assert(std::size(kDisplayNames) == std::size(kOperators));

constexpr EnumName kLogicalOperators[] = {
    {dloNotSet, "dloNotSet"}, {dloAnd, "dloAnd"}, {dloOr, "dloOr"}, {dloNot, "dloNot"}};

constexpr EnumName kValueTypes[] = {{dcfvtConstant, "dcfvtConstant"},
                                    {dcfvtUserDefined, "dcfvtUserDefined"}};

constexpr EnumName kSortOrders[] = {{dsAscending, "dsAscending"}, {dsDescending, "dsDescending"}};

}  // namespace

std::span<const EnumName> OperatorNames() {
  return kOperators;
}
std::span<const EnumName> LogicalOperatorNames() {
  return kLogicalOperators;
}
std::span<const EnumName> ValueTypeNames() {
  return kValueTypes;
}
std::span<const EnumName> SortOrderNames() {
  return kSortOrders;
}

std::string_view NameOf(std::span<const EnumName> names, int32_t value) {
  for (const EnumName& n : names) {
    if (n.value == value) return n.name;
  }
  return {};
}

std::optional<int32_t> ValueOf(std::span<const EnumName> names, std::string_view text) {
  for (const EnumName& n : names) {
    if (SameText(n.name, text)) return n.value;
  }
  int32_t number = 0;
  const char* first = text.data();
  const char* last = first + text.size();
  if (first != last && *first == '+') {
    ++first;
    if (first != last && *first == '-') return std::nullopt;
  }
  auto [end, ec] = std::from_chars(first, last, number);
  if (ec != std::errc() || end != last || first == last) return std::nullopt;
  return number;
}

std::string_view OperatorDisplayName(int32_t op) {
  if (op < 1 || op > static_cast<int32_t>(std::size(kDisplayNames))) return {};
  return kDisplayNames[op - 1];
}

}  // namespace orvmysql::detail
