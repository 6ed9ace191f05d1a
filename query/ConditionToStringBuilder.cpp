#include "orvmysql/ConditionBuilder.h"

#include "access/ErrorHandling.h"
#include "query/Renderers.h"

namespace orvmysql {

namespace {

// Marks on the work stack: the bottom of the whole text and the start of a group.
constexpr std::string_view kRootMark = "$";
constexpr std::string_view kGroupMark = " (";
constexpr int32_t kStackGrowth = 50;

std::string Render(const CCondition& condition, int32_t data_type, const std::string& column) {
  switch (data_type) {
    case kAttrLongText:
      return detail::GetStringCondition(condition, column, true);
    case kAttrText:
      return detail::GetStringCondition(condition, column, false);
    case kAttrPrimaryKey:
    case kAttrNumber:
    case kAttrForeignKey:
    case kAttrSmallNumber:
      return detail::GetNumericCondition(condition, column);
    case kAttrDateTime:
      return detail::GetDateTimeCondition(condition, column);
    case kAttrDate:
      return detail::GetDateCondition(condition, column);
    case kAttrTime:
      return detail::GetTimeCondition(condition, column);
    case kAttrBoolean:
      return detail::GetBooleanCondition(condition, column);
    case kAttrBitMask:
      return detail::GetBitMaskCondition(condition, column);
    default:
      return {};
  }
}

template <class T, class Node>
T& NodeAs(Node& node) {
  auto* typed = dynamic_cast<T*>(&node);
  if (typed == nullptr) ThrowRuntimeError(kErrTypeMismatch);
  return *typed;
}

}  // namespace

CConditionToStringBuilder::CConditionToStringBuilder() {
  ResizeArray();
}

std::string CConditionToStringBuilder::ToString(const std::shared_ptr<ICompositeNode>& root,
                                                const std::shared_ptr<CAttributes>& attributes) {
  return detail::Guard({"CConditionToStringBuilder:ToString Ln "}, [&]() -> std::string {
    if (!root) return {};
    root_ = root;
    attributes_ = attributes;
    use_alias_ = true;
    current_alias_.clear();
    alias_cache_.clear();
    count_ = 0;
    struct ReleaseRoot {
      std::shared_ptr<ICompositeNode>& root;
      ~ReleaseRoot() { root.reset(); }
    } release{root_};

    Push(std::string(kRootMark));
    std::string result;
    if (root_->Accept(*this)) {
      result = Pop();
      // An empty root leaves only the root mark, and this second Pop fails.
      if (Pop() != kRootMark) result.clear();
    }
    return result;
  });
}

bool CConditionToStringBuilder::VisitEnter(ICompositeNode& /*node*/) {
  return detail::Guard({"CConditionToStringBuilder:IVisitor_VisitEnter Ln "}, [&] {
    Push(std::string(kGroupMark));
    return true;
  });
}

bool CConditionToStringBuilder::Visit(ILeafNode& node) {
  return detail::Guard({"CConditionToStringBuilder:IVisitor_Visit Ln "}, [&] {
    const auto& condition = NodeAs<CCondition>(node);
    const auto attribute = attributes_ ? attributes_->Item(condition.AttributeName()) : nullptr;
    if (!attribute) {
      detail::RaiseError(kMsgUnknownAttribute, "CConditionToStringBuilder:IVisitor_Visit",
                         {Variant(condition.AttributeName())});
    }
    if (use_alias_ && attribute->EntityAlias() != alias_cache_) {
      alias_cache_ = attribute->EntityAlias();
      current_alias_ = alias_cache_;
    }
    // The condition's own name is the column; the map gives alias and type.
    const std::string column = current_alias_ + ".`" + condition.AttributeName() + "`";
    Push(Render(condition, attribute->DataType(), column));
    return true;
  });
}

bool CConditionToStringBuilder::VisitLeave(ICompositeNode& node) {
  return detail::Guard({"CConditionToStringBuilder:IVisitor_VisitLeave Ln "}, [&] {
    const auto op = NodeAs<CConditionExpression>(node).LogicalOperator();
    const std::string_view joiner = op == dloAnd ? " AND " : op == dloOr ? " OR " : "";
    // Pops come last first; prepending restores the order of the pushes.
    std::string accumulated;
    for (std::string item = Pop(); item != kRootMark && item != kGroupMark; item = Pop()) {
      if (accumulated.empty()) {
        accumulated = std::move(item);
      } else {
        item += joiner;
        item += accumulated;
        accumulated = std::move(item);
      }
    }
    if (!accumulated.empty()) Push(std::string(kGroupMark) + accumulated + ") ");
    return true;
  });
}

void CConditionToStringBuilder::Push(std::string text) {
  detail::Guard({"CConditionToStringBuilder:Push Ln "}, [&] {
    if (capacity_ < count_) ResizeArray();
    stack_[static_cast<std::size_t>(count_)] = std::move(text);
    ++count_;
  });
}

std::string CConditionToStringBuilder::Pop() {
  return detail::Guard({"CConditionToStringBuilder:Pop Ln "}, [&] {
    if (count_ < 1) {
      count_ = 0;
      ThrowRuntimeError(kErrSubscript);
    }
    --count_;
    return std::exchange(stack_[static_cast<std::size_t>(count_)], std::string());
  });
}

void CConditionToStringBuilder::ResizeArray() {
  detail::Guard({"CConditionToStringBuilder: ResizeArray Sub ("}, [&] {
    capacity_ += kStackGrowth;
    stack_.resize(static_cast<std::size_t>(capacity_) + 1);
  });
}

}  // namespace orvmysql
