#pragma once

// CConditionToStringBuilder renders a condition tree as the text of a SQL
// WHERE clause for MySQL, against the attribute map of an entity.
//
// Each condition becomes one predicate on its column, written as
// alias + "." + "`" + AttributeName + "`", by the renderer that the
// attribute's data type selects; siblings are joined with their group's
// logical operator (" AND ", " OR ", nothing for dloNotSet and dloNot) and each
// group is wrapped as " (" ... ") ". Nested groups come before the conditions
// of the same group.
//
// Values and safety:
// - Text values are quoted: apostrophes doubled and backslashes escaped
//   (GetQuotedString), cut to 255 characters for data type 2. LIKE wildcards
//   in a value are not escaped and act as wildcards. A value that is not
//   valid UTF-8 raises 5, naming the position of its first bad byte.
// - Numeric (3, 4, 10, 11) and bit-mask (9) values are written unquoted, so a
//   value must be a number (sign, digits, decimal point, exponent) after its
//   blanks are trimmed; on numeric attributes the text NULL (any case) is also
//   accepted and gives the IS NULL / IS NOT NULL forms. Anything else raises
//   type mismatch (13) before any SQL is built, so a filter can never change
//   the shape of a statement.
// - Booleans are written "1"/"0"; dates and times by the date literal routines.
//
// Errors: an attribute not in the map raises 8194; an operator the data type
// does not accept raises 8195; a value that does not convert raises the
// conversion error (13, or 94 for Null); a text that is not UTF-8 raises 5.

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "orvmysql/Attributes.h"
#include "orvmysql/Query.h"
#include "orvmysql/Visitor.h"

namespace orvmysql {

class ORVMYSQL_EXPORT CConditionToStringBuilder : public IVisitor {
 public:
  CConditionToStringBuilder();

  // The WHERE text of the tree, each group wrapped as " (" ... ") ", or empty
  // text when root is null. A tree in which no condition renders to text
  // raises error 9 (its root leaves only the group mark on the work stack).
  std::string ToString(const std::shared_ptr<ICompositeNode>& root,
                       const std::shared_ptr<CAttributes>& attributes);

  // IVisitor, called by the tree during ToString.
  bool VisitEnter(ICompositeNode& node) override;
  bool VisitLeave(ICompositeNode& node) override;
  bool Visit(ILeafNode& node) override;

 private:
  void Push(std::string text);
  std::string Pop();
  void ResizeArray();

  std::shared_ptr<ICompositeNode> root_;
  std::shared_ptr<CAttributes> attributes_;
  std::string current_alias_;
  std::string alias_cache_;
  bool use_alias_ = false;
  // Work stack: slots 0..capacity_, count_ is the next free slot.
  std::vector<std::string> stack_;
  int32_t capacity_ = 0;
  int32_t count_ = 0;
};

}  // namespace orvmysql
