#include "orvmysql/Query.h"

#include "query/DescriptionGuard.h"

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

bool CConditionExpression::Accept(IVisitor& visitor) {
  return detail::GuardDescription("CConditionExpression:IComposite_Accept Ln ", [&] {
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
