#pragma once

// The query model: a query names an entity and carries a tree of conditions,
// sort keys, a distinct flag and a row limit. It is written to and read from
// an XML document (ToXML, FromXML) and its condition tree is rendered as SQL by
// CConditionToStringBuilder.

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "orvmysql/Object.h"
#include "orvmysql/Variant.h"
#include "orvmysql/Visitor.h"

namespace orvmysql {

// Comparison operators 1-15, calendar operators 16-44 (date and time
// attributes), set membership 45. There is no member 0.
enum ConditionOperatorEnum : int32_t {
  dcoEqualto = 1,
  dconotequalto = 2,
  dcoLessThan = 3,
  dcoGreaterThan = 4,
  dcoLessThanEqualTo = 5,
  dcoGreaterThanEqualTo = 6,
  dcoBeginsWith = 7,
  dcoEndsWith = 8,
  dcoContains = 9,
  dcoDoesNotBeginWith = 10,
  dcoDoesNotEndWith = 11,
  dcoDoesNotContain = 12,
  dcoContainsSimilar = 13,
  dcoNull = 14,
  dcoNotNull = 15,
  dcoYesterday = 16,
  dcoToday = 17,
  dcoTomorrow = 18,
  dcoNextSevenDays = 19,
  dcoLastSevenDays = 20,
  dcoNextWeek = 21,
  dcoLastWeek = 22,
  dcoThisWeek = 23,
  dcoThisMonth = 24,
  dcoLastMonth = 25,
  dcoNextMonth = 26,
  dcoThisYear = 27,
  dcoLastYear = 28,
  dcoNextYear = 29,
  dcoOn = 30,
  dcoOnOrBefore = 31,
  dcoOnOrAfter = 32,
  dcoLastXHours = 33,
  dcoNextXHours = 34,
  dcoLastXDays = 35,
  dcoNextXDays = 36,
  dcoLastXWeeks = 37,
  dcoNextXWeeks = 38,
  dcoLastXMonths = 39,
  dcoNextXMonths = 40,
  dcoLastXYears = 41,
  dcoNextXYears = 42,
  dcoBefore = 43,
  dcoAfter = 44,
  dcoIn = 45
};

enum LogicalOperatorEnum : int32_t { dloNotSet = 0, dloAnd = 1, dloOr = 2, dloNot = 3 };

enum ConditionFieldValueTypeEnum : int32_t { dcfvtConstant = 0, dcfvtUserDefined = 1 };

enum SortOrderEnum : int32_t { dsAscending = 0, dsDescending = 1 };

// Expressions nested deeper than this are refused (error 5) by FromXML, and by
// Accept and ToXML for trees built in code, before any of the tree is walked.
inline constexpr int kMaxExpressionDepth = 100;

// A leaf of the condition tree: attribute, operator and value.
class ORVMYSQL_EXPORT CCondition : public ILeafNode {
 public:
  CCondition() = default;
  CCondition(std::string attribute_name, ConditionOperatorEnum op, Variant value = {});

  // 0 (no operator) until set.
  ConditionOperatorEnum Operator() const { return operator_; }
  void SetOperator(ConditionOperatorEnum op) { operator_ = op; }
  const std::string& AttributeName() const { return attribute_name_; }
  void SetAttributeName(std::string name) { attribute_name_ = std::move(name); }
  // dcfvtConstant until set; a user-defined value renders as no value.
  ConditionFieldValueTypeEnum ValueType() const { return value_type_; }
  void SetValueType(ConditionFieldValueTypeEnum type) { value_type_ = type; }
  // Empty until set.
  const Variant& Value() const { return value_; }
  void SetValue(Variant value) { value_ = std::move(value); }

  // ILeafNode: the visitor's Visit with this condition. An error leaving the
  // visitor gets "CCondition:ILeaf_Accept Ln " and the line added to its description.
  bool Accept(IVisitor& visitor) override;

 private:
  ConditionOperatorEnum operator_ = static_cast<ConditionOperatorEnum>(0);
  std::string attribute_name_;
  ConditionFieldValueTypeEnum value_type_ = dcfvtConstant;
  Variant value_;
};

// Declared exported before QueryList is instantiated over them: an
// instantiation is only as visible as its arguments, and the collections'
// type information must be visible to programs that link the library.
class ORVMYSQL_EXPORT CConditionExpression;
class ORVMYSQL_EXPORT COrderExpression;

// Ordered 1-based list shared by the three collections of the query model.
// Failures of Add and Item (Exist reports as Item) keep their number and get
// " => \r\n" + the collection's context text + the line added to their
// description.
template <class T>
class ORVMYSQL_EXPORT QueryList : public virtual IObject {
 public:
  // Appends the item; a null item raises error 91.
  void Add(std::shared_ptr<T> item);
  // True when Item finds an object; a position out of range raises error 9, a
  // text key (no item has one) error 5.
  bool Exist(const Variant& index) const;
  // The item at a 1-based position; out of range raises 9, a text key 5.
  std::shared_ptr<T> Item(const Variant& index) const;
  int32_t Count() const { return static_cast<int32_t>(items_.size()); }

  // Iteration in insertion order.
  auto begin() const { return items_.begin(); }
  auto end() const { return items_.end(); }

  // Removes the item at a 1-based position (library use only).
  void Remove(const Variant& index);

 protected:
  QueryList(std::string_view add_context, std::string_view item_context)
      : add_context_(add_context), item_context_(item_context) {}

 private:
  friend class CConditionExpression;  // releases deep trees without recursion

  std::vector<std::shared_ptr<T>> items_;
  std::string_view add_context_;
  std::string_view item_context_;
};

class ORVMYSQL_EXPORT CConditions : public QueryList<CCondition> {
 public:
  CConditions();
};

class ORVMYSQL_EXPORT CConditionExpressionList : public QueryList<CConditionExpression> {
 public:
  CConditionExpressionList();
};

class ORVMYSQL_EXPORT COrderExpressionList : public QueryList<COrderExpression> {
 public:
  COrderExpressionList();
};

// An inner node: conditions and nested expressions joined by one logical
// operator.
class ORVMYSQL_EXPORT CConditionExpression : public ICompositeNode {
 public:
  explicit CConditionExpression(LogicalOperatorEnum op = dloAnd);
  // Releases nested expressions one at a time, so that a tree of any depth
  // is destroyed without one stack frame per level.
  ~CConditionExpression() override;

  const std::shared_ptr<CConditions>& Conditions() const { return conditions_; }
  const std::shared_ptr<CConditionExpressionList>& ConditionExpressions() const {
    return expressions_;
  }
  // dloAnd until set.
  LogicalOperatorEnum LogicalOperator() const { return logical_operator_; }
  void SetLogicalOperator(LogicalOperatorEnum op) { logical_operator_ = op; }

  // ICompositeNode. Nested expressions are always visited before the
  // conditions of the same node. A false VisitEnter skips the children but
  // still leads to VisitLeave; a false from a child stops the walk without
  // VisitLeave. Errors get "CConditionExpression:IComposite_Accept Ln " and
  // the line added to their description. A tree nested deeper than
  // kMaxExpressionDepth raises 5 before the visitor sees any node.
  bool Accept(IVisitor& visitor) override;

 private:
  std::shared_ptr<CConditions> conditions_;
  std::shared_ptr<CConditionExpressionList> expressions_;
  LogicalOperatorEnum logical_operator_;
};

// A sort key.
class ORVMYSQL_EXPORT COrderExpression : public virtual IObject {
 public:
  COrderExpression() = default;
  explicit COrderExpression(std::string attribute_name, SortOrderEnum order = dsAscending)
      : attribute_name_(std::move(attribute_name)), sort_order_(order) {}

  const std::string& AttributeName() const { return attribute_name_; }
  void SetAttributeName(std::string name) { attribute_name_ = std::move(name); }
  SortOrderEnum SortOrder() const { return sort_order_; }
  void SetSortOrder(SortOrderEnum order) { sort_order_ = order; }

 private:
  std::string attribute_name_;
  SortOrderEnum sort_order_ = dsAscending;
};

class ORVMYSQL_EXPORT CQuery : public virtual IObject {
 public:
  CQuery();

  const std::string& EntityName() const { return entity_name_; }
  void SetEntityName(std::string name) { entity_name_ = std::move(name); }
  // Null until assigned or read from a document.
  const std::shared_ptr<CConditionExpression>& Criteria() const { return criteria_; }
  void SetCriteria(std::shared_ptr<CConditionExpression> criteria) {
    criteria_ = std::move(criteria);
  }
  const std::shared_ptr<COrderExpressionList>& OrderBy() const { return order_by_; }
  bool Distinct() const { return distinct_; }
  void SetDistinct(bool distinct) { distinct_ = distinct; }
  // 200 until set; setting 0 stores 200, any other value is kept as it is.
  int32_t MaxRows() const { return max_rows_; }
  void SetMaxRows(int32_t rows) { max_rows_ = rows == 0 ? 200 : rows; }

  // Makes this query the one the document describes. A document that is not
  // well-formed, lacks the root element "query", names an unknown enumeration
  // value or nests expressions deeper than kMaxExpressionDepth raises error 5
  // naming the fault and its line and column; the query is then unchanged.
  void FromXML(std::string_view xml);
  // The query document; FromXML of it reproduces this query. Its shape:
  //   <query entity= maxrows= distinct= columnset=> <columnset/>
  //     <criteria><conditionexpression logicaloperator=>
  //       <conditionexpressions>...nested expressions...</conditionexpressions>
  //       <conditions><condition attributename= operator= valuetype=>value
  //       </condition></conditions></conditionexpression></criteria>
  //     <joins/> <orderby><sort attributename= sortorder=/></orderby> <parameters/>
  //   </query>
  // A condition whose value is not plain text carries one attribute more,
  // vartype ("null", "boolean", "long", "double", "date", or "text" for a text
  // of blanks only), so that the value reads back with its type. It is an
  // addition to the engine's document: readers that do not know it may ignore
  // it and take the element text as the value. Criteria nested deeper than
  // kMaxExpressionDepth raise 5.
  std::string ToXML() const;

 private:
  std::string entity_name_;
  std::shared_ptr<CConditionExpression> criteria_;
  std::shared_ptr<COrderExpressionList> order_by_;
  bool distinct_ = false;
  int32_t max_rows_ = 200;
};

// The collections' operations are compiled once, in the library.
extern template class QueryList<CCondition>;
extern template class QueryList<CConditionExpression>;
extern template class QueryList<COrderExpression>;

}  // namespace orvmysql
