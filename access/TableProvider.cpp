#include "access/TableProvider.h"

#include <numeric>

#include "access/General.h"
#include "access/NumberText.h"
#include "access/SqlValues.h"
#include "orvmysql/Error.h"

namespace orvmysql::dp {

std::vector<std::string> FormatFields(const FieldArray& fields, std::span<const As> layout) {
  sql::RequireSize(fields, layout.size());
  std::vector<std::string> values, numbers;
  values.reserve(layout.size() + 1);
  for (std::size_t i = 0; i < layout.size(); ++i) {
    const Variant& v = fields[i];
    switch (layout[i]) {
      case As::Long:
        values.push_back(sql::Long(v));
        break;
      case As::Double:
        values.push_back(sql::Double(v));
        break;
      case As::Text:
        values.push_back(sql::Text(v, true));
        break;
      case As::TextOrNull:
        values.push_back(sql::TextOrNull(v, true));
        break;
      case As::LongTextOrNull:
        values.push_back(sql::TextOrNull(v, false));
        break;
      case As::DateTime:
        values.push_back(sql::DateTime(v));
        break;
      case As::DateOnly:
        values.push_back(sql::DateOnly(v));
        break;
      case As::Boolean:
        values.push_back(sql::Boolean(v));
        break;
      case As::Unused:
        values.emplace_back();
        break;
      case As::ValueByType: {
        auto columns = sql::ValueByType(v, sql::At(fields, i + 1));
        values.push_back(std::move(columns.text));
        numbers.push_back(std::move(columns.number));
        break;
      }
      case As::TextOrEmpty:
        values.push_back(sql::TextOrEmpty(v, true));
        break;
      case As::LongTextOrEmpty:
        values.push_back(sql::TextOrEmpty(v, false));
        break;
      case As::Number:
        values.push_back(sql::Number(v));
        break;
    }
  }
  values.insert(values.end(), numbers.begin(), numbers.end());
  return values;
}

FieldArray RowFields(IListItem& row, std::span<const std::string_view> columns) {
  FieldArray fields;
  fields.reserve(columns.size());
  for (std::string_view column : columns) fields.push_back(row.GetValue(std::string(column)));
  return fields;
}

std::string JoinedColumn(IListIterator& rows, const std::string& column) {
  std::string list;
  while (rows.GetNext()) {
    if (!list.empty()) list += ',';
    list += sql::Long(rows.CurrentItem()->GetValue(column));
  }
  return list;
}

void RequireIdList(std::string_view text) {
  for (std::size_t start = 0;;) {
    const std::size_t comma = text.find(',', start);
    const std::string_view id = text.substr(start, comma - start);
    if (!IsDecimalNumber(id, true)) {
      ThrowRuntimeError(kErrTypeMismatch,
                        "'" + std::string(id) + "' in the id list is not a decimal number");
    }
    if (comma == std::string_view::npos) return;
    start = comma + 1;
  }
}

std::string Assignments(std::span<const Assignment> set, const std::vector<std::string>& values) {
  std::string text;
  for (const Assignment& a : set) {
    text += a.text;
    text += values.at(a.index);
  }
  return text;
}

std::string Joined(const std::vector<std::string>& values, std::size_t first, std::size_t last) {
  std::vector<std::size_t> order(last - first);
  std::iota(order.begin(), order.end(), first);
  return Joined(values, order);
}

std::string Joined(const std::vector<std::string>& values, std::span<const std::size_t> order,
                   std::string_view separator) {
  std::string text;
  for (std::size_t i = 0; i < order.size(); ++i) {
    if (i > 0) text += separator;
    text += values.at(order[i]);
  }
  return text;
}

std::string LiteralPattern(std::string_view text) {
  // Checked before the wildcards are escaped, so that an error names the
  // position in the caller's text.
  RequireUtf8(text);
  std::string body = GetQuotedString(EscapeLikeString(text), true);
  // The cut may fall between a LIKE escape and the wildcard it escapes; the
  // pattern would then end in a lone escape. Every backslash of the body is
  // doubled, so an odd count of trailing backslash pairs means exactly that.
  const std::size_t last = body.find_last_not_of('\\');
  const std::size_t pairs = (body.size() - (last == std::string::npos ? 0 : last + 1)) / 2;
  if (pairs % 2 == 1) body.resize(body.size() - 2);
  return body;
}

Key Key::Text(std::string_view text) {
  return Key("'" + GetQuotedString(text, true) + "'");
}

namespace {

bool Matches(const StampRule& rule, int32_t current, int32_t value) {
  return (current & rule.current_bits) == rule.current_bits &&
         (!rule.current_not_zero || current != 0) && (value & rule.value_bits) == rule.value_bits;
}

}  // namespace

std::string StateChange(const KeyedTable& t, const Key& key, int32_t value, bool add,
                        int32_t current, std::string_view note) {
  std::string text(add ? t.state_add : t.state_set);
  text += std::to_string(value);
  for (const StampRule& rule : t.stamp_rules) {
    if (!Matches(rule, current, value)) continue;
    for (std::string_view stamp : rule.stamps) {
      text += stamp;
      text += sql::DateTime(Variant(Date::Now()));
    }
    break;
  }
  if (!t.state_note.empty()) {
    text += t.state_note;
    text += sql::Text(Variant(note), false);
  }
  text += t.update_where;
  text += key.Literal();
  return text;
}

}  // namespace orvmysql::dp

namespace orvmysql {

int32_t TableProvider::InsertWithNewKey(
    int32_t entity_type_code, const std::function<std::string(const std::string& key)>& statement,
    Where where) {
  return InsertWithNewKey(entity_type_code, statement, nullptr, where);
}

int32_t TableProvider::InsertWithNewKey(
    int32_t entity_type_code, const std::function<std::string(const std::string& key)>& statement,
    const std::function<void(const std::string& key)>& inserted, Where where) {
  // The widest key there is, so that the statement measured here is never
  // shorter than the one sent.
  static const std::string kWidestKey = std::to_string(INT32_MIN);
  return InSession(
      [&] {
        RequireFits(statement(kWidestKey).size(), where);
        const std::string key = NextID(entity_type_code, where);
        if (NonQuery(statement(key), where) <= 0) return -1;
        if (inserted) inserted(key);
        return Variant(key).ToLong();
      },
      where);
}

std::shared_ptr<IListIterator> TableProvider::RowsWhere(std::string_view select,
                                                        std::string_view filter, const dp::Key& key,
                                                        std::string_view tail, Where where) {
  std::string text(select);
  text += filter;
  text += key.Literal();
  text += tail;
  return Rows(text, where);
}

std::shared_ptr<IListIterator> TableProvider::RowsWithTail(std::string_view select,
                                                           const std::string& tail, Where where) {
  return Rows(std::string(select) + " " + tail, where);
}

std::vector<int32_t> TableProvider::RunSteps(const std::vector<dp::Step>& steps, Where where) {
  std::vector<int32_t> changed;
  changed.reserve(steps.size());
  for (const dp::Step& step : steps) {
    const bool skip = step.only_if_none_before && (changed.empty() || changed.back() != 0);
    changed.push_back(skip ? -1 : NonQuery(step.sql, where));
  }
  return changed;
}

std::string TableProvider::InsertValues(const dp::KeyedTable& t, const FieldArray& fields) {
  auto v = dp::FormatFields(fields, t.add_layout);
  if (t.complete != nullptr) t.complete(v);
  return t.insert_order.empty() ? dp::Joined(v, 0, v.size())
                                : dp::Joined(v, t.insert_order, t.insert_separator);
}

int32_t TableProvider::AddRow(const dp::KeyedTable& t, const FieldArray& fields) {
  return detail::Guard({t.locations.add, t.connection_on_91}, [&] {
    const std::string values = InsertValues(t, fields);
    return InsertWithNewKey(t.entity_type_code, [&](const std::string& key) {
      return std::string(t.insert_head) + key + "," + values + ")";
    });
  });
}

bool TableProvider::AddRowWithKey(const dp::KeyedTable& t, const dp::Key& key,
                                  const FieldArray& fields) {
  return detail::Guard({t.locations.add, t.connection_on_91}, [&] {
    const std::string values = InsertValues(t, fields);
    return NonQuery(std::string(t.insert_head) + key.Literal() + "," + values + ")") > 0;
  });
}

int32_t TableProvider::UpdateRow(const dp::KeyedTable& t, const dp::Key& key,
                                 const FieldArray& fields) {
  return detail::Guard({t.locations.update, t.connection_on_91}, [&] {
    auto v = dp::FormatFields(fields, t.update_layout);
    if (t.complete != nullptr) t.complete(v);
    return NonQuery(std::string(t.update_head) + dp::Assignments(t.update_set, v) +
                    std::string(t.update_where) + key.Literal());
  });
}

void TableProvider::DeleteRows(const dp::KeyedTable& t, const dp::Key& key, int32_t owner_id) {
  detail::Guard({t.locations.remove, t.connection_on_91}, [&] {
    const bool whole_owner = owner_id >= 1 && !t.delete_all.empty();
    const std::string statement =
        whole_owner
            ? std::string(t.delete_all) + std::to_string(owner_id) + std::string(t.delete_all_tail)
            : std::string(t.delete_one) + key.Literal();
    return t.delete_in_session ? InSession([&] { return NonQuery(statement); })
                               : NonQuery(statement);
  });
}

std::shared_ptr<IListIterator> TableProvider::RowsByKey(const dp::KeyedTable& t,
                                                        const dp::Key& key) {
  return detail::Guard({t.locations.by_key, t.connection_on_91},
                       [&] { return RowsWhere(t.select, t.by_key, key); });
}

std::shared_ptr<IListIterator> TableProvider::RowsByOwner(const dp::KeyedTable& t,
                                                          int32_t owner_id) {
  return detail::Guard({t.locations.by_owner, t.connection_on_91}, [&] {
    return RowsWhere(t.owner_select.empty() ? t.select : t.owner_select, t.by_owner, owner_id,
                     t.owner_order);
  });
}

std::shared_ptr<IListIterator> TableProvider::RowsLoad(const dp::KeyedTable& t,
                                                       const std::string& tail) {
  return detail::Guard({t.locations.load, t.connection_on_91}, [&] {
    if (t.filter != nullptr) {
      const std::string filtered = t.filter(tail, filter_attributes_);
      return t.filter_gives_statement ? Rows(filtered) : RowsWithTail(t.select, filtered);
    }
    if (t.load_restriction.empty()) return RowsWithTail(t.select, tail);
    const std::string restriction(t.load_restriction);
    return tail.empty() ? Rows(std::string(t.select) + " WHERE " + restriction)
                        : RowsWithTail(t.select, tail + " AND " + restriction);
  });
}

int32_t TableProvider::CurrentState(const dp::KeyedTable& t, const dp::Key& key) {
  return detail::Guard({t.locations.current_state, t.connection_on_91}, [&] {
    return Variant(Scalar(std::string(t.state_read) + key.Literal(), "0")).ToLong();
  });
}

bool TableProvider::ChangeStateWord(const dp::KeyedTable& t, const dp::Key& key, int32_t value,
                                    bool add, int32_t current, std::string_view note) {
  return detail::Guard({t.locations.change_state, t.connection_on_91}, [&] {
    const std::string statement = dp::StateChange(t, key, value, add, current, note);
    return (t.state_in_session ? InSession([&] { return NonQuery(statement); })
                               : NonQuery(statement)) > 0;
  });
}

void TableProvider::EndSessionAfterFailure() noexcept {
  try {
    Conn().EndSession(true);
  } catch (...) {
  }
}

}  // namespace orvmysql
