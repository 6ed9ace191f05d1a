#pragma once

#include <string_view>
#include <vector>

namespace orvmysql {

// The names CreateObject accepts, in the library's own spelling.
std::vector<std::string_view> CreatableClassNames();

}  // namespace orvmysql
