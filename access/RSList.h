#pragma once

#include <memory>
#include <string>
#include <vector>

#include "access/Recordset.h"
#include "orvmysql/List.h"

namespace orvmysql {

// The row of a list. It builds its schema (column name to position, without
// regard to case) from the first row loaded; at most 301 columns (a 302nd
// raises error 9) and no two of the same name (error 457).
class CRSListItem final : public IListItem {
 public:
  // Loads the row of the recordset; builds the schema on first use.
  void Init(const std::shared_ptr<const Recordset>& recordset, std::size_t row);

  // IListItem
  Variant GetValue(const std::string& name) override;

 private:
  static constexpr std::size_t kMaxColumns = 301;
  void LoadSchema(const Recordset& recordset);

  std::shared_ptr<const Recordset> recordset_;
  std::size_t row_ = 0;
  bool has_schema_ = false;
  std::vector<std::string> schema_;  // lower-case names by position
};

// A forward list over a recordset, with one item reused for every row.
class CRSList final : public IListIterator {
 public:
  void Init(std::shared_ptr<const Recordset> recordset);
  void SetKey(std::string key) { key_ = std::move(key); }

  // IListIterator
  int32_t Count() override;
  std::shared_ptr<IListItem> CurrentItem() override;
  bool GetNext() override;
  void Reset() override;
  void Skip(int32_t n) override;
  bool Exists(const Variant& key) override;
  std::shared_ptr<IListItem> GetItem(const Variant& key) override;

 private:
  bool IsEmpty() const { return !recordset_ || recordset_->RowCount() == 0; }

  std::shared_ptr<const Recordset> recordset_;
  std::shared_ptr<CRSListItem> item_;
  std::size_t position_ = 0;  // RowCount() is past the end
  bool has_current_ = false;
  std::string key_;
};

// A row list over the given columns and rows; for callers that build results
// themselves (and for fakes in tests).
std::shared_ptr<IListIterator> MakeRowList(std::vector<std::string> names,
                                           const std::vector<std::vector<Variant>>& rows);

}  // namespace orvmysql
