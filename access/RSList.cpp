#include "access/RSList.h"

#include <algorithm>

#include "access/AsciiCase.h"
#include "access/ErrorHandling.h"

namespace orvmysql {

namespace {

using detail::AsciiLower;

// Column names are matched without regard to ASCII case, independent of the locale.
bool EqualsIgnoreCase(std::string_view lower, std::string_view name) {
  return lower.size() == name.size() &&
         std::equal(lower.begin(), lower.end(), name.begin(),
                    [](char a, char b) { return a == AsciiLower(b); });
}

}  // namespace

// CRSListItem ---------------------------------------------------------------

void CRSListItem::Init(const std::shared_ptr<const Recordset>& recordset, std::size_t row) {
  if (!has_schema_) LoadSchema(*recordset);
  // Every row of a recordset has the same columns in the same places, so the
  // schema built from the first row holds for all of them.
  recordset_ = recordset;
  row_ = row;
}

void CRSListItem::LoadSchema(const Recordset& recordset) {
  detail::Guard({"CRSListItem:LoadSchema Ln "}, [&] {
    if (recordset.ColumnCount() == 0) return;
    std::vector<std::string> schema;
    for (std::size_t i = 0; i < recordset.ColumnCount(); ++i) {
      if (i >= kMaxColumns) ThrowRuntimeError(kErrSubscript);
      std::string key = detail::AsciiLowerCase(recordset.Name(i));
      if (std::find(schema.begin(), schema.end(), key) != schema.end()) {
        ThrowRuntimeError(kErrDuplicateKey, recordset.Name(i));
      }
      schema.push_back(std::move(key));
    }
    schema_ = std::move(schema);
    has_schema_ = true;
  });
}

Variant CRSListItem::GetValue(const std::string& name) {
  if (!has_schema_) return Null;
  for (std::size_t i = 0; i < schema_.size(); ++i) {
    if (EqualsIgnoreCase(schema_[i], name)) return recordset_->Value(row_, i);
  }
  ThrowRuntimeError(kErrInvalidCall, name);
}

// CRSList -------------------------------------------------------------------

void CRSList::Init(std::shared_ptr<const Recordset> recordset) {
  recordset_ = std::move(recordset);
  item_ = std::make_shared<CRSListItem>();
  position_ = 0;
  has_current_ = false;
}

// IListIterator

int32_t CRSList::Count() {
  return detail::Guard({"CRSList:IListIterator_Count Ln "}, [&]() -> int32_t {
    if (!recordset_) return 0;
    if (recordset_->RowCount() > static_cast<std::size_t>(INT32_MAX)) {
      ThrowRuntimeError(kErrOverflow);
    }
    return static_cast<int32_t>(recordset_->RowCount());
  });
}

std::shared_ptr<IListItem> CRSList::CurrentItem() {
  if (!has_current_) return nullptr;
  return item_;
}

bool CRSList::GetNext() {
  return detail::Guard({"CRSList:IListIterator_GetNext Ln "}, [&] {
    if (recordset_ && position_ < recordset_->RowCount()) {
      has_current_ = true;
      item_->Init(recordset_, position_);
      ++position_;
      return true;
    }
    has_current_ = false;
    return false;
  });
}

void CRSList::Reset() {
  detail::Guard({"CRSList:IListIterator_Reset Ln "}, [&] {
    if (!IsEmpty()) position_ = 0;
  });
}

void CRSList::Skip(int32_t n) {
  detail::Guard({"CRSList:IListIterator_Skip Ln "}, [&] {
    if (IsEmpty()) return;
    const auto last = static_cast<int64_t>(recordset_->RowCount()) - 1;
    const int64_t target = std::clamp<int64_t>(static_cast<int64_t>(position_) + n, 0, last);
    position_ = static_cast<std::size_t>(target);
    item_->Init(recordset_, position_);
    has_current_ = true;
  });
}

bool CRSList::Exists(const Variant& /*key*/) {
  return false;
}

std::shared_ptr<IListItem> CRSList::GetItem(const Variant& /*key*/) {
  return nullptr;
}

std::shared_ptr<IListIterator> MakeRowList(std::vector<std::string> names,
                                           const std::vector<std::vector<Variant>>& rows) {
  std::vector<Variant> cells;
  cells.reserve(rows.size() * names.size());
  for (const auto& row : rows) {
    if (row.size() != names.size()) ThrowRuntimeError(kErrInvalidCall, "row width");
    cells.insert(cells.end(), row.begin(), row.end());
  }
  auto list = std::make_shared<CRSList>();
  list->Init(std::make_shared<const Recordset>(std::move(names), std::move(cells)));
  return list;
}

}  // namespace orvmysql
