#pragma once

// A fully read result: column names and the values of every row. It does not
// refer to the connection that produced it, so it outlives that connection.

#include <cstddef>
#include <string>
#include <vector>

#include "orvmysql/Variant.h"

namespace orvmysql {

class Recordset {
 public:
  Recordset() = default;
  // cells holds the rows one after another, names.size() values per row.
  Recordset(std::vector<std::string> names, std::vector<Variant> cells);

  std::size_t ColumnCount() const { return names_.size(); }
  std::size_t RowCount() const { return rows_; }
  const std::string& Name(std::size_t column) const { return names_[column]; }
  const Variant& Value(std::size_t row, std::size_t column) const {
    return cells_[row * names_.size() + column];
  }

 private:
  std::vector<std::string> names_;
  std::vector<Variant> cells_;
  std::size_t rows_ = 0;
};

}  // namespace orvmysql
