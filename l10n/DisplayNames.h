#pragma once

// Display-name stylesheets, applied with libxslt.

#include <string>
#include <string_view>

namespace orvmysql::detail {

// Applies the XSLT stylesheet at `path` to the XML document and returns the
// result as text. The stylesheet is compiled on first use and kept (and so is
// what was wrong with it); transforms may run on several threads at once.
// Raises 5 for a document that is not well-formed, a stylesheet that cannot
// be compiled, and a transform that reports an error.
std::string ApplyStylesheet(const std::string& path, std::string_view xml);

}  // namespace orvmysql::detail
