#include "access/Recordset.h"

#include "orvmysql/Error.h"

namespace orvmysql {

Recordset::Recordset(std::vector<std::string> names, std::vector<Variant> cells)
    : names_(std::move(names)), cells_(std::move(cells)) {
  if (names_.empty()) {
    if (!cells_.empty()) ThrowRuntimeError(kErrInvalidCall, "values without columns");
    return;
  }
  if (cells_.size() % names_.size() != 0) ThrowRuntimeError(kErrInvalidCall, "ragged rows");
  rows_ = cells_.size() / names_.size();
}

}  // namespace orvmysql
