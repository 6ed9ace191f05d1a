// The query object model: defaults, collections and the order of the walk.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "QueryTestSupport.h"

namespace orvtest {
namespace {

using ::testing::HasSubstr;
using ::testing::MatchesRegex;

TEST(QueryModelTest, NewObjectsHaveTheirDefaults) {
  CCondition condition;
  EXPECT_EQ(condition.Operator(), 0);
  EXPECT_EQ(condition.ValueType(), dcfvtConstant);
  EXPECT_TRUE(condition.Value().IsEmpty());

  CConditionExpression expression;
  EXPECT_EQ(expression.LogicalOperator(), dloAnd);
  EXPECT_EQ(expression.Conditions()->Count(), 0);
  EXPECT_EQ(expression.ConditionExpressions()->Count(), 0);

  CQuery query;
  EXPECT_EQ(query.Criteria(), nullptr);
  ASSERT_NE(query.OrderBy(), nullptr);
  EXPECT_EQ(query.OrderBy()->Count(), 0);
  EXPECT_FALSE(query.Distinct());
  EXPECT_EQ(query.MaxRows(), 200);
  query.SetMaxRows(0);
  EXPECT_EQ(query.MaxRows(), 200);
  query.SetMaxRows(-5);
  EXPECT_EQ(query.MaxRows(), -5);
}

TEST(QueryModelTest, CollectionsAreOneBasedAndReportWithTheirContext) {
  CConditions conditions;
  auto a = Cond("A", dcoEqualto), b = Cond("B", dcoEqualto), c = Cond("C", dcoEqualto);
  for (const auto& item : {a, b, c}) conditions.Add(item);
  EXPECT_EQ(conditions.Count(), 3);
  EXPECT_EQ(conditions.Item(1), a);
  EXPECT_EQ(conditions.Item(3.0), c);
  EXPECT_TRUE(conditions.Exist(2));
  std::vector<std::shared_ptr<CCondition>> walked(conditions.begin(), conditions.end());
  EXPECT_EQ(walked, (std::vector{a, b, c}));

  // Out of range is an error, not false; Exist reports under Item's context.
  Error out_of_range = Raised([&] { conditions.Exist(5); });
  EXPECT_EQ(out_of_range.Number(), kErrSubscript);
  EXPECT_THAT(out_of_range.Description(),
              MatchesRegex("Subscript out of range => \r\nCConditions:Item Ln [0-9]+"));
  EXPECT_EQ(Raised([&] { conditions.Item(0); }).Number(), kErrSubscript);
  // No item has a key.
  EXPECT_EQ(Raised([&] { conditions.Item("a"); }).Number(), kErrInvalidCall);

  Error null_item = Raised([&] { conditions.Add(nullptr); });
  EXPECT_EQ(null_item.Number(), kErrObjectNotSet);
  EXPECT_THAT(null_item.Description(), HasSubstr(" => \r\nCConditions:Add Ln "));
  EXPECT_EQ(conditions.Count(), 3);

  conditions.Remove(2);
  EXPECT_EQ(conditions.Item(2), c);

  EXPECT_THAT(Raised([] { CConditionExpressionList().Item(1); }).Description(),
              HasSubstr("CConditionExpressionList:Item Ln "));
  EXPECT_THAT(Raised([] { COrderExpressionList().Add(nullptr); }).Description(),
              HasSubstr("COrderExpressionList:Add Ln "));
}

// Records the walk; returns false from the calls named in `refuse`.
class Recorder : public IVisitor {
 public:
  std::vector<std::string> calls;
  std::vector<std::string> refuse;

  bool VisitEnter(ICompositeNode& node) override { return Record("enter", Name(node)); }
  bool VisitLeave(ICompositeNode& node) override { return Record("leave", Name(node)); }
  bool Visit(ILeafNode& node) override {
    return Record("visit", dynamic_cast<CCondition&>(node).AttributeName());
  }

 private:
  static std::string Name(ICompositeNode& node) {
    auto& expression = dynamic_cast<CConditionExpression&>(node);
    return expression.Conditions()->Count() > 0
               ? "group of " + expression.Conditions()->Item(1)->AttributeName()
               : "empty group";
  }
  bool Record(const std::string& what, const std::string& name) {
    calls.push_back(what + " " + name);
    return std::find(refuse.begin(), refuse.end(), calls.back()) == refuse.end();
  }
};

TEST(QueryModelTest, NestedExpressionsAreVisitedBeforeTheConditions) {
  // The nested group is added after the conditions and still comes first.
  auto root = Group(dloAnd, {Cond("A", dcoEqualto), Cond("B", dcoEqualto)});
  root->ConditionExpressions()->Add(Group(dloOr, {Cond("N", dcoEqualto)}));

  Recorder all;
  EXPECT_TRUE(root->Accept(all));
  EXPECT_EQ(all.calls, (std::vector<std::string>{"enter group of A", "enter group of N", "visit N",
                                                 "leave group of N", "visit A", "visit B",
                                                 "leave group of A"}));

  // A refused enter skips the children but still leaves, with leave's result.
  Recorder skip;
  skip.refuse = {"enter group of A", "leave group of A"};
  EXPECT_FALSE(root->Accept(skip));
  EXPECT_EQ(skip.calls, (std::vector<std::string>{"enter group of A", "leave group of A"}));

  // A child that stops the walk stops the conditions and the leave as well.
  Recorder stop;
  stop.refuse = {"leave group of N"};
  EXPECT_FALSE(root->Accept(stop));
  EXPECT_EQ(stop.calls, (std::vector<std::string>{"enter group of A", "enter group of N", "visit N",
                                                  "leave group of N"}));

  Recorder empty;
  EXPECT_TRUE(CConditionExpression().Accept(empty));
  EXPECT_EQ(empty.calls, (std::vector<std::string>{"enter empty group", "leave empty group"}));
}

TEST(QueryModelTest, AVisitorErrorPassesEachNodeOnItsWayOut) {
  struct Failing : Recorder {
    bool Visit(ILeafNode&) override { ThrowRuntimeError(kErrOverflow); }
  } failing;
  auto root = Group(dloAnd, {}, {Group(dloAnd, {Cond("X", dcoEqualto)})});
  Error error = Raised([&] { root->Accept(failing); });
  EXPECT_EQ(error.Number(), kErrOverflow);
  EXPECT_EQ(error.Source(), "orvmysql");
  EXPECT_THAT(error.Description(),
              MatchesRegex("Overflow => \r\nCCondition:ILeaf_Accept Ln [0-9]+"
                           " => \r\nCConditionExpression:IComposite_Accept Ln [0-9]+"
                           " => \r\nCConditionExpression:IComposite_Accept Ln [0-9]+"));
}

// A chain of expressions, each the only nested expression of the one above.
std::shared_ptr<CConditionExpression> Chain(int levels) {
  auto root = Group(dloAnd, {Cond("X", dcoEqualto, 1)});
  auto node = root;
  for (int level = 1; level < levels; ++level) {
    auto child = Group(dloOr, {Cond("X", dcoEqualto, level)});
    node->ConditionExpressions()->Add(child);
    node = child;
  }
  return root;
}

TEST(QueryModelTest, DeepTreesBuiltInCodeAreRefusedWholeAndReleasedWithoutRecursion) {
  auto map = std::make_shared<CAttributes>();
  map->Add("t", "X", "X", 3);
  EXPECT_NO_THROW(CConditionToStringBuilder().ToString(Chain(kMaxExpressionDepth), map));

  CQuery query;
  query.SetCriteria(Chain(200000));
  Recorder recorder;
  Error walked = Raised([&] { query.Criteria()->Accept(recorder); });
  EXPECT_EQ(walked.Number(), kErrInvalidCall);
  EXPECT_THAT(walked.Description(), MatchesRegex("Invalid procedure call or argument: condition "
                                                 "expressions are nested deeper than 100 levels"
                                                 " => \r\nCConditionExpression:IComposite_"
                                                 "Accept Ln [0-9]+"));
  EXPECT_TRUE(recorder.calls.empty());
  EXPECT_EQ(Raised([&] { query.ToXML(); }).Number(), kErrInvalidCall);
  EXPECT_EQ(Raised([&] { CConditionToStringBuilder().ToString(query.Criteria(), map); }).Number(),
            kErrInvalidCall);
  // Releasing 200,000 levels must not need 200,000 stack frames.
  query.SetCriteria(nullptr);

  // A subtree still held elsewhere survives the release of its parent.
  auto kept = Chain(3);
  { auto parent = Group(dloAnd, {}, {kept}); }
  EXPECT_EQ(kept->ConditionExpressions()->Item(1)->ConditionExpressions()->Count(), 1);
}

}  // namespace
}  // namespace orvtest
