#pragma once

// Bits of the state word that the runtime providers test to stamp dates, and
// the stamp texts they share.

#include <cstdint>
#include <string_view>

namespace orvmysql::runtime {

inline constexpr int32_t kOpen = 0x4000000;
// The bits of a value that starts an instance or a work item.
inline constexpr int32_t kStart = 0x4000004;
inline constexpr int32_t kClosed = 0x8000000;

inline constexpr std::string_view kStartedOn[] = {" ,StartedOn = "};
inline constexpr std::string_view kFinishedOn[] = {" ,FinishedOn = "};

}  // namespace orvmysql::runtime
