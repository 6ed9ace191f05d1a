#pragma once

// Plumbing shared by every provider of a table (definitions, runtime
// instances and their data, messaging): field arrays formatted by a
// per-provider layout before anything runs, statement assembly from those
// formatted values, the statement patterns every provider repeats (select by
// a key, select with the caller's tail, keyed insert in a session), and the
// whole set of operations of a table described by a KeyedTable.

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "access/Atomic.h"
#include "access/DataSourceBase.h"
#include "orvmysql/Attributes.h"
#include "orvmysql/List.h"
#include "orvmysql/Variant.h"

namespace orvmysql::dp {

// How one position of a field array is written into SQL.
enum class As : std::uint8_t {
  Long,            // 32-bit integer in decimal
  Double,          // double with a decimal point
  Text,            // quoted, cut to 255 characters
  TextOrNull,      // quoted, cut to 255 characters; NULL when empty
  LongTextOrNull,  // quoted, not cut; NULL when empty
  DateTime,        // date-time literal; NULL when Empty or Null
  DateOnly,        // date literal without the time of day; NULL when Empty or Null
  Boolean,         // 1 or 0
  Unused,          // must be present, is not read
  // A value of instance data that feeds two columns by the data type at the
  // next position (sql::ValueByType): the position gives the text column's
  // literal, and the numeric column's literal follows the layout's last
  // position (as if the layout were one position longer, once per ValueByType).
  ValueByType,
  TextOrEmpty,      // quoted, cut to 255 characters; Null is written as ''
  LongTextOrEmpty,  // quoted, not cut; Null is written as ''
  Number,           // a number as the platform writes it (no ".0" added); NULL for Null
};

// Formats every position of the layout. Raises 9 when the array is shorter
// than the layout, 13 for a numeric position that holds no number, 94 for Null
// in a quoted position without a NULL rule. Unused positions give "".
std::vector<std::string> FormatFields(const FieldArray& fields, std::span<const As> layout);

// The texts joined into one at compile time, for statements that share their
// pieces: Concat<kHead, kFrom> is a std::string_view of both.
template <const std::string_view&... Parts>
struct Concatenation {
  static constexpr auto kChars = [] {
    std::array<char, (Parts.size() + ... + 0)> chars{};
    auto out = chars.begin();
    ((out = std::copy(Parts.begin(), Parts.end(), out)), ...);
    return chars;
  }();
  static constexpr std::string_view kText{kChars.data(), kChars.size()};
};
template <const std::string_view&... Parts>
inline constexpr std::string_view Concat = Concatenation<Parts...>::kText;
// The values of the named columns of a row, in the order of the names, for
// formatting by a layout.
FieldArray RowFields(IListItem& row, std::span<const std::string_view> columns);

// The named column of every row, each as a decimal 32-bit integer, joined by
// "," ("12,13,27"); "" for no rows. For the id lists of IN clauses.
std::string JoinedColumn(IListIterator& rows, const std::string& column);

// Raises 13 unless the text is decimal whole numbers joined by commas, blanks
// around each allowed ("12, 13,27"): such a list can be pasted into an IN
// clause as it is given.
void RequireIdList(std::string_view text);

// The pieces (texts and string_views) joined into one text.
template <class... Parts>
std::string Cat(const Parts&... parts) {
  std::string text;
  text.reserve((std::string_view(parts).size() + ... + 0));
  (text.append(std::string_view(parts)), ...);
  return text;
}

// One statement of a multi-statement change. With only_if_none_before it runs
// only when the statement before it ran and changed no row (a fallback).
struct Step {
  std::string sql;
  bool only_if_none_before = false;
};

// One "column = value" piece of an UPDATE: the literal text before the value
// and the position of the value.
struct Assignment {
  std::string_view text;
  std::size_t index;
};

// The texts and values of the assignments, concatenated in order.
std::string Assignments(std::span<const Assignment> set, const std::vector<std::string>& values);

// values[first] to values[last - 1], separated by ",".
std::string Joined(const std::vector<std::string>& values, std::size_t first, std::size_t last);
// The values at the given positions, in that order, separated by the separator.
std::string Joined(const std::vector<std::string>& values, std::span<const std::size_t> order,
                   std::string_view separator = ",");

// The text as the body of a quoted LIKE pattern that matches only itself:
// wildcards escaped, then quoted and cut to 255 characters. Raises 5 for a
// text that is not valid UTF-8.
std::string LiteralPattern(std::string_view text);

// A row's key as it is written into SQL: a number in decimal, or a text
// quoted by GetQuotedString (cut to 255 characters) for tables whose key is
// the caller's text. Numbers convert implicitly.
class Key {
 public:
  Key(int32_t id) : literal_(std::to_string(id)) {}  // NOLINT(google-explicit-constructor)
  static Key Text(std::string_view text);
  const std::string& Literal() const { return literal_; }

 private:
  explicit Key(std::string literal) : literal_(std::move(literal)) {}
  std::string literal_;
};

// An entity filter of query/EntityFilters.h: reads the filter document and
// renders it against the provider's attribute map (built on first use).
using EntityFilter = std::string (*)(std::string_view document,
                                     std::shared_ptr<CAttributes>& attributes);

// One date-stamp rule of a state change. It matches when the current word
// holds every bit of current_bits (and is not 0 when current_not_zero) and
// the new value holds every bit of value_bits. Each stamp text
// (" ,StartedOn = ") is followed by the present local date and time, read
// from the clock once per stamp.
struct StampRule {
  int32_t current_bits = 0;
  bool current_not_zero = false;
  int32_t value_bits = 0;
  std::span<const std::string_view> stamps{};
};

// Statements, layouts and location texts of a table whose rows have a key
// (from GetNextID, or the caller's text) and belong to an owner (an activity,
// a definition or a process instance). The providers of the bags, the process
// parameters, the transitions and the switches, of the splits, paths and
// threads of routing, and of the process instances, activity instances and
// work items are such tables.
struct KeyedTable {
  // Location texts of the operations for the error trail.
  struct Locations {
    std::string_view add{}, update{}, remove{}, by_key{}, by_owner{}, load{};
    std::string_view current_state{}, change_state{};
  };
  Locations locations{};
  // Whether error 91 gets " (Connection)" appended in every operation.
  bool connection_on_91 = false;

  std::string_view select{};        // select list, ending in a blank
  std::string_view by_key{};        // " WHERE <key> = "
  std::string_view by_owner{};      // " WHERE <owner> = "
  std::string_view owner_order{};   // after the owner's id: the order of its rows
  std::string_view owner_select{};  // select list of the owner's rows; empty for select
  // A condition every Load keeps: the caller's tail is followed by " AND " and
  // the condition, and an empty tail becomes " WHERE " and the condition.
  std::string_view load_restriction{};

  int32_t entity_type_code = 0;  // of GetNextID
  // The INSERT up to the key; the key, ",", the values and ")" follow.
  std::string_view insert_head{};
  std::span<const As> add_layout{};
  // Positions in the order of the column list; empty for positions in order.
  std::span<const std::size_t> insert_order{};
  // Between two values of the VALUES list (the key is always followed by ",").
  std::string_view insert_separator = ",";

  std::string_view update_head{};  // "UPDATE <table> SET "
  std::span<const As> update_layout{};
  std::span<const Assignment> update_set{};
  std::string_view update_where{};  // " WHERE <key> = "

  std::string_view delete_one{};       // "DELETE ... WHERE <key> = "
  std::string_view delete_all{};       // "DELETE ... WHERE <owner> = "; empty when not offered
  std::string_view delete_all_tail{};  // after the owner's id in delete_all
  bool delete_in_session = false;      // whether Delete runs between StartSession and EndSession

  // Load through an entity filter instead of a trusted tail: the filter gives
  // the tail that follows the select list and a blank or, with
  // filter_gives_statement, the whole statement.
  EntityFilter filter = nullptr;
  bool filter_gives_statement = false;

  // The State word, for tables that have one; the key clause is update_where.
  std::string_view state_read{};  // "SELECT State FROM <table> WHERE <key> = "
  std::string_view state_set{};   // "UPDATE <table> SET `State` = "
  std::string_view state_add{};   // "UPDATE <table> SET `State` = `State` + "
  // The date stamps of a state change: the first rule that matches writes its
  // stamps; none may match.
  std::span<const StampRule> stamp_rules{};
  // The assignment of the caller's note (" ,ActivityNote = "), written after
  // the stamps as a quoted text that is not cut; empty when there is none.
  std::string_view state_note{};
  bool state_in_session = false;  // whether a state change runs in a session

  // Adjusts the formatted values of Add and Update before they are written.
  void (*complete)(std::vector<std::string>& values) = nullptr;
};

// The UPDATE of a state change: set or add head, the value in decimal, the
// stamps of the first matching rule for the current word, the note, the key.
std::string StateChange(const KeyedTable& table, const Key& key, int32_t value, bool add,
                        int32_t current, std::string_view note);

}  // namespace orvmysql::dp

namespace orvmysql {

class TableProvider : public DataSourceBase {
 protected:
  using Where = int;  // a source line, recorded for the error trail

  // Runs body between StartSession and EndSession. When body fails the
  // session is ended all the same, so that a failed operation never leaves
  // the connection held open; the failure then goes on unchanged.
  template <class Body>
  auto InSession(Body&& body, Where where = __builtin_LINE());

  // Runs body as one unit of work (access/Atomic.h) in a session level of its
  // own: its statements commit together or not at all, a deadlock runs it
  // again from the start, and inside another unit it joins that one.
  template <class Body>
  auto AsOneUnit(Body&& body, Where where = __builtin_LINE()) {
    return detail::Atomically(Conn(), std::forward<Body>(body), where);
  }

  // In one session: a new key for the entity type, then the INSERT that
  // statement(key) builds, then, when a row was inserted, inserted(key).
  // Returns the key, or -1 when no row was inserted. A statement too large
  // for the server is refused before the key is taken.
  int32_t InsertWithNewKey(int32_t entity_type_code,
                           const std::function<std::string(const std::string& key)>& statement,
                           Where where = __builtin_LINE());
  int32_t InsertWithNewKey(int32_t entity_type_code,
                           const std::function<std::string(const std::string& key)>& statement,
                           const std::function<void(const std::string& key)>& inserted,
                           Where where = __builtin_LINE());

  // The operations of a keyed table, each under its own location text.
  // AddRow returns the new key or -1; AddRowWithKey inserts under the caller's
  // key, without a session, and is true when a row was inserted; UpdateRow
  // returns the number of rows matched. DeleteRows deletes the row with the key
  // when owner_id < 1, otherwise every row of the owner.
  int32_t AddRow(const dp::KeyedTable& table, const FieldArray& fields);
  bool AddRowWithKey(const dp::KeyedTable& table, const dp::Key& key, const FieldArray& fields);
  int32_t UpdateRow(const dp::KeyedTable& table, const dp::Key& key, const FieldArray& fields);
  void DeleteRows(const dp::KeyedTable& table, const dp::Key& key, int32_t owner_id);
  std::shared_ptr<IListIterator> RowsByKey(const dp::KeyedTable& table, const dp::Key& key);
  std::shared_ptr<IListIterator> RowsByOwner(const dp::KeyedTable& table, int32_t owner_id);
  // The caller's trusted tail after the select list, or, for a table with an
  // entity filter, the rows the filter document selects.
  std::shared_ptr<IListIterator> RowsLoad(const dp::KeyedTable& table, const std::string& tail);
  // The row's State word, 0 when there is no row or the word is NULL.
  int32_t CurrentState(const dp::KeyedTable& table, const dp::Key& key);
  // Sets the State word to value, or adds value to it (arithmetically, in one
  // UPDATE), with the stamps the table's rules give for the caller's current
  // word and the table's note; true when the row exists.
  bool ChangeStateWord(const dp::KeyedTable& table, const dp::Key& key, int32_t value, bool add,
                       int32_t current = 0, std::string_view note = {});

  // select + filter + the key + tail, for example
  // "SELECT ... FROM tblSwitches " + " WHERE SwitchID = " + "12".
  std::shared_ptr<IListIterator> RowsWhere(std::string_view select, std::string_view filter,
                                           const dp::Key& key, std::string_view tail = {},
                                           Where where = __builtin_LINE());
  // select + " " + the caller's tail, passed on unchanged (trusted SQL).
  std::shared_ptr<IListIterator> RowsWithTail(std::string_view select, const std::string& tail,
                                              Where where = __builtin_LINE());

  // Runs the statements of a multi-statement change in order: the one place
  // through which such a change sends its statements. Returns the rows each
  // statement changed, -1 for a fallback that did not run. Session calls are
  // the caller's.
  std::vector<int32_t> RunSteps(const std::vector<dp::Step>& steps, Where where = __builtin_LINE());

 private:
  // Ends the session without marking a line, dropping any error: used only
  // while another error is on its way out.
  void EndSessionAfterFailure() noexcept;
  // The values of an INSERT after the key, formatted by the table's layout.
  static std::string InsertValues(const dp::KeyedTable& table, const FieldArray& fields);

  // The entity filter's attribute map, built on first use and kept.
  std::shared_ptr<CAttributes> filter_attributes_;
};

template <class Body>
auto TableProvider::InSession(Body&& body, Where where) {
  StartSession(where);
  struct Ender {
    TableProvider* owner;
    ~Ender() {
      if (owner != nullptr) owner->EndSessionAfterFailure();
    }
  } ender{this};
  auto result = std::forward<Body>(body)();
  ender.owner = nullptr;
  EndSession(where);
  return result;
}

}  // namespace orvmysql
