// Fuzzes the query document reader and the SQL rendering of the four entity
// filters. Any input must either be refused with the library's Error or give
// a query whose written document reads back to the same document; rendering
// may refuse a query only with the library's Error. A foreign exception
// surfacing as internal error 51, or out of memory, counts as a crash.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "orvmysql/ConditionBuilder.h"
#include "orvmysql/Error.h"
#include "orvmysql/Query.h"
#include "query/EntityFilters.h"

namespace {

using namespace orvmysql;

void Expected(const Error& error) {
  if (error.Number() == kErrInternal || error.Number() == kErrOutOfMemory) std::abort();
}

template <class F>
void Refusable(F&& f) {
  try {
    f();
  } catch (const Error& e) {
    Expected(e);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const std::shared_ptr<CAttributes> kMaps[] = {
      WorkitemAttributes(), ProcInstanceAttributes(), ActivityInstanceAttributes(),
      MessageAttributes()};
  const std::string_view xml(reinterpret_cast<const char*>(data), size);

  CQuery query;
  try {
    query.FromXML(xml);
  } catch (const Error& e) {
    Expected(e);
    return 0;
  }

  const std::string written = query.ToXML();
  CQuery again;
  try {
    again.FromXML(written);
  } catch (const Error&) {
    std::abort();  // the library refused its own document
  }
  if (again.ToXML() != written) std::abort();

  CConditionToStringBuilder builder;
  for (const auto& map : kMaps) {
    Refusable([&] { builder.ToString(query.Criteria(), map); });
  }
  std::shared_ptr<CAttributes> workitems, messages;
  Refusable([&] { ParseWorkitemFilter(xml, workitems); });
  Refusable([&] { ParseMessageFilter(xml, messages); });
  return 0;
}
