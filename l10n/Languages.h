#pragma once

// The message lookup's side of the languages (see orvmysql/Language.h).

#include <cstdint>
#include <string>

namespace orvmysql::detail {

// The current language's text of a message number; empty when there is no
// current language, its catalog lacks the number, or its files are missing or
// broken. Never throws: it is asked while another error is being raised.
std::string CatalogMessage(int32_t number) noexcept;

}  // namespace orvmysql::detail
