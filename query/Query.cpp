#include "orvmysql/Query.h"

#include <iterator>
#include <utility>
#include <vector>

#include "query/DescriptionGuard.h"
#include "query/Nesting.h"

namespace orvmysql {

namespace detail {

void ReraiseWithContext(std::string_view context, int line) {
  Error error = CurrentError();
  std::string description = error.Description();
  description += " => \r\n";
  description += context;
  description += std::to_string(line);
  error.SetDescription(std::move(description));
  throw error;
}

}  // namespace detail

namespace {

// The 0-based slot of a 1-based position. Items have no keys, so any index
// that is not a number is refused like an unknown key.
std::size_t Slot(const Variant& index, std::size_t count) {
  switch (index.GetType()) {
    case Variant::Type::Boolean:
    case Variant::Type::Long:
    case Variant::Type::Double: {
      int32_t position = index.ToLong();
      if (position < 1 || static_cast<std::size_t>(position) > count) {
        ThrowRuntimeError(kErrSubscript);
      }
      return static_cast<std::size_t>(position - 1);
    }
    default:
      ThrowRuntimeError(kErrInvalidCall);
  }
}

}  // namespace

CCondition::CCondition(std::string attribute_name, ConditionOperatorEnum op, Variant value)
    : operator_(op), attribute_name_(std::move(attribute_name)), value_(std::move(value)) {}

bool CCondition::Accept(IVisitor& visitor) {
  return detail::GuardDescription("CCondition:ILeaf_Accept Ln ",
                                  [&] { return visitor.Visit(*this); });
}

template <class T>
void QueryList<T>::Add(std::shared_ptr<T> item) {
  detail::GuardDescription(add_context_, [&] {
    if (!item) ThrowRuntimeError(kErrObjectNotSet);
    items_.push_back(std::move(item));
  });
}

template <class T>
std::shared_ptr<T> QueryList<T>::Item(const Variant& index) const {
  return detail::GuardDescription(item_context_,
                                  [&] { return items_[Slot(index, items_.size())]; });
}

template <class T>
bool QueryList<T>::Exist(const Variant& index) const {
  return Item(index) != nullptr;
}

template <class T>
void QueryList<T>::Remove(const Variant& index) {
  items_.erase(items_.begin() + static_cast<std::ptrdiff_t>(Slot(index, items_.size())));
}

template class QueryList<CCondition>;
template class QueryList<CConditionExpression>;
template class QueryList<COrderExpression>;

CConditions::CConditions() : QueryList("CConditions:Add Ln ", "CConditions:Item Ln ") {}

CConditionExpressionList::CConditionExpressionList()
    : QueryList("CConditionExpressionList:Add Ln ", "CConditionExpressionList:Item Ln ") {}

COrderExpressionList::COrderExpressionList()
    : QueryList("COrderExpressionList:Add Ln ", "COrderExpressionList:Item Ln ") {}

CConditionExpression::CConditionExpression(LogicalOperatorEnum op)
    : conditions_(std::make_shared<CConditions>()),
      expressions_(std::make_shared<CConditionExpressionList>()),
      logical_operator_(op) {}

CConditionExpression::~CConditionExpression() {
  // Children that only this tree holds are emptied before they die, so each
  // release below frees one node and never a chain.
  std::vector<std::shared_ptr<CConditionExpression>> pending;
  const auto adopt_children = [&pending](CConditionExpression& node) {
    if (!node.expressions_ || node.expressions_.use_count() != 1) return;
    auto& items = node.expressions_->items_;
    std::move(items.begin(), items.end(), std::back_inserter(pending));
    items.clear();
  };
  adopt_children(*this);
  while (!pending.empty()) {
    std::shared_ptr<CConditionExpression> next = std::move(pending.back());
    pending.pop_back();
    if (next && next.use_count() == 1) adopt_children(*next);
  }
}

namespace detail {

void RequireNestingWithinLimit(const CConditionExpression& root) {
  std::vector<std::pair<const CConditionExpression*, int>> stack{{&root, 1}};
  while (!stack.empty()) {
    const auto [node, depth] = stack.back();
    stack.pop_back();
    if (depth > kMaxExpressionDepth) {
      ThrowRuntimeError(kErrInvalidCall, "condition expressions are nested deeper than " +
                                             std::to_string(kMaxExpressionDepth) + " levels");
    }
    for (const auto& child : *node->ConditionExpressions())
      stack.emplace_back(child.get(), depth + 1);
  }
}

}  // namespace detail

namespace {

// Nesting of Accept calls on this thread; the outermost one checks the depth.
thread_local int accept_nesting = 0;

}  // namespace

bool CConditionExpression::Accept(IVisitor& visitor) {
  return detail::GuardDescription("CConditionExpression:IComposite_Accept Ln ", [&] {
    if (accept_nesting == 0) detail::RequireNestingWithinLimit(*this);
    struct Nesting {
      Nesting() { ++accept_nesting; }
      ~Nesting() { --accept_nesting; }
    } nesting;
    if (visitor.VisitEnter(*this)) {
      for (const auto& expression : *expressions_) {
        if (!expression->Accept(visitor)) return false;
      }
      for (const auto& condition : *conditions_) {
        if (!condition->Accept(visitor)) return false;
      }
    }
    return visitor.VisitLeave(*this);
  });
}

CQuery::CQuery() : order_by_(std::make_shared<COrderExpressionList>()) {}

}  // namespace orvmysql
