#pragma once

// Names of the query model's enumerations, shared by the XML document (names)
// and the condition builder (operator display names in error 8195).

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

namespace orvmysql::detail {

struct EnumName {
  int32_t value;
  std::string_view name;
};

std::span<const EnumName> OperatorNames();
std::span<const EnumName> LogicalOperatorNames();
std::span<const EnumName> ValueTypeNames();
std::span<const EnumName> SortOrderNames();

// The member's name, or empty text for a value that is not a member.
std::string_view NameOf(std::span<const EnumName> names, int32_t value);
// The value of a name (without regard to case) or of a decimal number; none
// for anything else.
std::optional<int32_t> ValueOf(std::span<const EnumName> names, std::string_view text);

// The operator's display name ("equals", "less than", ...), empty text for a
// value outside 1-45.
std::string_view OperatorDisplayName(int32_t op);

}  // namespace orvmysql::detail
