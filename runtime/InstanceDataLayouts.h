#pragma once

// The field layout that the parameter values of process instances and of
// tasks share: positions 0 to 10 are the same, so that one array serves both;
// tasks add their task index at 11.

#include "access/TableProvider.h"

namespace orvmysql::runtime {

inline constexpr dp::As kParameterValueLayout[] = {
    dp::As::Long,         // 0 FKProcInstanceID / FKActivityInstanceID
    dp::As::Text,         // 1 ParameterName
    dp::As::ValueByType,  // 2 TextValue, and NumericValue after the last position
    dp::As::Long,         // 3 DataType
    dp::As::Long,         // 4 Attributes
    dp::As::Double,       // 5 Min
    dp::As::Double,       // 6 Max
    dp::As::Long,         // 7 ParameterType
    dp::As::TextOrNull,   // 8 LookupTypeCode
    dp::As::TextOrNull,   // 9 ListAttribute
    dp::As::TextOrNull,   // 10 Relevance
    dp::As::Long,         // 11 TaskIndex (tasks only)
};

}  // namespace orvmysql::runtime
