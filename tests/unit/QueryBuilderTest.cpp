// Rendering condition trees as WHERE text: one line per case, the exact SQL.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>
#include <string>

#include "QueryTestSupport.h"
#include "orvmysql/Attributes.h"
#include "orvmysql/ConditionBuilder.h"

namespace orvtest {
namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

class QueryBuilderTest : public ::testing::Test {
 protected:
  QueryBuilderTest() : map_(std::make_shared<CAttributes>()) {
    const std::pair<const char*, int32_t> columns[] = {
        {"Name", kAttrText},     {"Note", kAttrLongText}, {"Id", kAttrPrimaryKey},
        {"Num", kAttrNumber},    {"Fk", kAttrForeignKey}, {"Small", kAttrSmallNumber},
        {"When", kAttrDateTime}, {"Day", kAttrDate},      {"At", kAttrTime},
        {"Flag", kAttrBoolean},  {"Mask", kAttrBitMask},  {"Odd", 12},
    };
    for (const auto& [name, type] : columns) map_->Add("t", name, name, type);
    map_->Add("u", "Other", "Other", kAttrText);
    map_->Add("", "Bare", "Bare", kAttrText);
  }

  std::string Where(const std::shared_ptr<CConditionExpression>& root) {
    return builder_.ToString(root, map_);
  }

  // The predicate of one condition, checked to come out as " (" + it + ") ".
  std::string Pred(const std::string& attribute, ConditionOperatorEnum op, Variant value = {},
                   ConditionFieldValueTypeEnum type = dcfvtConstant) {
    const std::string sql = Where(Group(dloAnd, {Cond(attribute, op, std::move(value), type)}));
    EXPECT_THAT(sql, StartsWith(" ("));
    EXPECT_GE(sql.size(), 4u);
    EXPECT_EQ(sql.substr(sql.size() - 2), ") ");
    return sql.size() < 4 ? sql : sql.substr(2, sql.size() - 4);
  }

  Error Refused(const std::string& attribute, int32_t op, Variant value = 3) {
    return Raised([&] { Pred(attribute, static_cast<ConditionOperatorEnum>(op), value); });
  }

  std::shared_ptr<CAttributes> map_;
  CConditionToStringBuilder builder_;
};

TEST_F(QueryBuilderTest, TextOperatorsAndTheirNullRules) {
  EXPECT_EQ(Pred("Name", dcoEqualto, "abc"), "t.`Name` = 'abc'");
  EXPECT_EQ(Pred("Name", dconotequalto, "x"), "(t.`Name` <> 'x' OR t.`Name` IS NULL)");
  EXPECT_EQ(Pred("Name", dcoBeginsWith, "ab"), "t.`Name` LIKE 'ab%'");
  EXPECT_EQ(Pred("Name", dcoEndsWith, "ab"), "t.`Name` LIKE '%ab'");
  EXPECT_EQ(Pred("Name", dcoContains, "ab"), "t.`Name` LIKE '%ab%'");
  EXPECT_EQ(Pred("Name", dcoDoesNotBeginWith, "ab"),
            "(t.`Name` NOT LIKE 'ab%' OR t.`Name` IS NULL)");
  EXPECT_EQ(Pred("Name", dcoDoesNotEndWith, "ab"), "(t.`Name` NOT LIKE '%ab' OR t.`Name` IS NULL)");
  EXPECT_EQ(Pred("Name", dcoDoesNotContain, "ab"),
            "(t.`Name` NOT LIKE '%ab%' OR t.`Name` IS NULL)");
  EXPECT_EQ(Pred("Name", dcoNull, "ignored"), "(t.`Name` = '' OR t.`Name` IS NULL) ");
  EXPECT_EQ(Pred("Name", dcoNotNull), "(t.`Name` <> '' AND t.`Name` IS NOT NULL) ");
  // No value: the positive forms also take NULL, the negated ones ask for a value.
  EXPECT_EQ(Pred("Name", dcoEqualto), "(t.`Name` = '' OR t.`Name` IS NULL)");
  EXPECT_EQ(Pred("Name", dcoBeginsWith), "(t.`Name` LIKE '%' OR t.`Name` IS NULL)");
  EXPECT_EQ(Pred("Name", dcoEndsWith, "   "), "(t.`Name` LIKE '%' OR t.`Name` IS NULL)");
  EXPECT_EQ(Pred("Name", dcoContains), "(t.`Name` LIKE '' OR t.`Name` IS NULL)");
  EXPECT_EQ(Pred("Name", dconotequalto), "(t.`Name` <> '' AND t.`Name` IS NOT NULL)");
  EXPECT_EQ(Pred("Name", dcoDoesNotBeginWith), "(t.`Name` NOT LIKE '%' AND t.`Name` IS NOT NULL)");
  EXPECT_EQ(Pred("Name", dcoDoesNotContain), "(t.`Name` NOT LIKE '' AND t.`Name` IS NOT NULL)");
  // A user-defined value counts as no value.
  EXPECT_EQ(Pred("Name", dcoEqualto, "abc", dcfvtUserDefined),
            "(t.`Name` = '' OR t.`Name` IS NULL)");
}

TEST_F(QueryBuilderTest, TextValuesAreQuotedAndCutByType) {
  EXPECT_EQ(Pred("Name", dcoEqualto, "O'Hara"), "t.`Name` = 'O''Hara'");
  EXPECT_EQ(Pred("Name", dcoContains, "a\\' OR 1=1 -- "), "t.`Name` LIKE '%a\\\\'' OR 1=1 -- %'");
  EXPECT_EQ(Pred("Name", dcoEqualto, 42), "t.`Name` = '42'");
  const std::string long_value(300, 'x');
  EXPECT_EQ(Pred("Name", dcoEqualto, long_value), "t.`Name` = '" + long_value.substr(0, 255) + "'");
  EXPECT_EQ(Pred("Note", dcoEqualto, long_value), "t.`Note` = '" + long_value + "'");
}

TEST_F(QueryBuilderTest, NumericOperatorsAndTheNullPairing) {
  EXPECT_EQ(Pred("Id", dcoEqualto, 5), "t.`Id` = 5");
  EXPECT_EQ(Pred("Num", dconotequalto, "7"), "t.`Num` <> 7");
  EXPECT_EQ(Pred("Fk", dcoLessThan, 2.5), "t.`Fk` < 2.5");
  EXPECT_EQ(Pred("Small", dcoGreaterThan, " 42 "), "t.`Small` >  42 ");
  EXPECT_EQ(Pred("Id", dcoLessThanEqualTo, "-3.5"), "t.`Id` <= -3.5");
  EXPECT_EQ(Pred("Id", dcoGreaterThanEqualTo, "1e5"), "t.`Id` >= 1e5");
  EXPECT_EQ(Pred("Id", dcoNull, "ignored"), "t.`Id` IS NULL ");
  EXPECT_EQ(Pred("Id", dcoNotNull), "t.`Id` IS NOT NULL ");
  // No value, or the text NULL: equal, <= and >= ask for NULL; <>, < and > for a value.
  EXPECT_EQ(Pred("Id", dcoEqualto), "t.`Id` IS NULL ");
  EXPECT_EQ(Pred("Id", dcoLessThanEqualTo, "NULL"), "t.`Id` IS NULL ");
  EXPECT_EQ(Pred("Id", dcoGreaterThanEqualTo, " null "), "t.`Id` IS NULL ");
  EXPECT_EQ(Pred("Id", dconotequalto), "t.`Id` IS NOT NULL ");
  EXPECT_EQ(Pred("Id", dcoLessThan, "NULL"), "t.`Id` IS NOT NULL ");
  EXPECT_EQ(Pred("Id", dcoGreaterThan), "t.`Id` IS NOT NULL ");
}

TEST_F(QueryBuilderTest, UnquotedValuesMustBeNumbers) {
  for (const Variant& bad :
       {Variant("1 OR 1=1"), Variant("5; DROP TABLE tblWorkitems"), Variant("0x10"), Variant(""),
        Variant("abc"), Variant("--5"), Variant("1e"), Variant("."), Variant("+"), Variant(true),
        Variant(Date::FromParts(2024, 5, 1))}) {
    EXPECT_EQ(Raised([&] { Pred("Id", dcoEqualto, bad); }).Number(), kErrTypeMismatch)
        << bad.ToText();
    EXPECT_EQ(Raised([&] { Pred("Mask", dcoContains, bad); }).Number(), kErrTypeMismatch)
        << bad.ToText();
  }
  // A user-defined value is no value, which is not a number either.
  EXPECT_EQ(Raised([&] { Pred("Id", dcoEqualto, 5, dcfvtUserDefined); }).Number(),
            kErrTypeMismatch);
  // Bit masks have no NULL form.
  Error null_mask = Raised([&] { Pred("Mask", dcoEqualto, "NULL"); });
  EXPECT_EQ(null_mask.Number(), kErrTypeMismatch);
  EXPECT_THAT(null_mask.Description(), HasSubstr("'NULL' of the attribute 'Mask' is not a number"));
  EXPECT_THAT(null_mask.Source(), HasSubstr("CConditionToStringBuilder:GetBitMaskCondition Ln "));
}

TEST_F(QueryBuilderTest, BitMasksAndBooleans) {
  EXPECT_EQ(Pred("Mask", dcoEqualto, 4), "t.`Mask` = 4");
  EXPECT_EQ(Pred("Mask", dcoEqualto, " 7 "), "t.`Mask` =  7 ");
  EXPECT_EQ(Pred("Mask", dconotequalto, "4"), "t.`Mask` <> 4");
  EXPECT_EQ(Pred("Mask", dcoContains, 4), "t.`Mask` & 4 = 4");
  EXPECT_EQ(Pred("Mask", dcoDoesNotContain, 4), "t.`Mask` & 4 = 0 ");
  EXPECT_EQ(Pred("Mask", dcoNull), "t.`Mask` = 0 ");
  EXPECT_EQ(Pred("Mask", dcoNotNull), "t.`Mask` <> 0 ");
  EXPECT_EQ(Pred("Mask", dcoEqualto), "t.`Mask` = 0");
  EXPECT_EQ(Pred("Mask", dcoEqualto, 4, dcfvtUserDefined), "t.`Mask` = 4");

  EXPECT_EQ(Pred("Flag", dcoEqualto, "yes"), "t.`Flag` = 1");
  EXPECT_EQ(Pred("Flag", dcoEqualto, "YeS"), "t.`Flag` = 1");
  EXPECT_EQ(Pred("Flag", dcoEqualto, "true"), "t.`Flag` = 0");
  EXPECT_EQ(Pred("Flag", dcoEqualto, "maybe"), "t.`Flag` = 0");
  EXPECT_EQ(Pred("Flag", dconotequalto, true), "t.`Flag` <> 1");
  EXPECT_EQ(Pred("Flag", dcoEqualto, 0), "t.`Flag` = 0");
  EXPECT_EQ(Pred("Flag", dcoEqualto), "t.`Flag` = 0");
  EXPECT_EQ(Pred("Flag", dcoEqualto, "yes", dcfvtUserDefined), "t.`Flag` = 0");
  EXPECT_EQ(Raised([&] { Pred("Flag", dcoEqualto, Null); }).Number(), kErrInvalidUseOfNull);
}

TEST_F(QueryBuilderTest, EachDataTypeTakesItsOwnOperators) {
  FixedClock clock(Date::FromParts(2024, 5, 15, 15, 30, 0));
  const auto range = [](int first, int last) {
    std::set<int> ops;
    for (int op = first; op <= last; ++op) ops.insert(op);
    return ops;
  };
  const auto join = [](std::initializer_list<std::set<int>> parts) {
    std::set<int> all;
    for (const auto& part : parts) all.insert(part.begin(), part.end());
    return all;
  };
  const std::pair<const char*, std::set<int>> accepted[] = {
      {"Name", {1, 2, 7, 8, 9, 10, 11, 12, 14, 15}},
      {"Note", {1, 2, 7, 8, 9, 10, 11, 12, 14, 15}},
      {"Id", join({range(1, 6), {14, 15}})},
      {"Small", join({range(1, 6), {14, 15}})},
      {"Mask", {1, 2, 9, 12, 14, 15}},
      {"Flag", {1, 2}},
      {"When", join({range(1, 6), range(14, 44)})},
      {"Day", join({range(1, 6), range(14, 32), range(35, 42)})},
      {"At", join({range(1, 6), {14, 15}, range(30, 34), {43, 44}})},
  };
  for (const auto& [attribute, ops] : accepted) {
    for (int op = 0; op <= 46; ++op) {
      if (ops.count(op)) {
        // The value 3 reads as a number, a day count and a count of units.
        EXPECT_NO_THROW(Pred(attribute, static_cast<ConditionOperatorEnum>(op), 3))
            << attribute << " " << op;
      } else {
        EXPECT_EQ(Refused(attribute, op).Number(), OwnError(kMsgInvalidOperator))
            << attribute << " " << op;
      }
    }
  }
  EXPECT_THAT(
      Refused("Name", dcoLessThan).Description(),
      StartsWith("Operator 'less than' is not a valid operator for the attribute 'Name'. => "));
  EXPECT_THAT(
      Refused("Day", dcoContains).Description(),
      StartsWith("Operator 'contains' is not a valid operator for the attribute 'Day'. => "));
  EXPECT_THAT(Refused("Mask", 0).Description(),
              StartsWith("Operator '' is not a valid operator for the attribute 'Mask'. => "));
  EXPECT_THAT(Refused("Flag", dcoIn).Source(),
              HasSubstr(" => \r\nCConditionToStringBuilder:GetBooleanCondition method ("));
}

TEST_F(QueryBuilderTest, GroupsJoinTheirMembersInOrder) {
  auto a = Cond("Name", dcoEqualto, "a");
  auto one = Cond("Id", dcoEqualto, 1);
  EXPECT_EQ(Where(Group(dloOr, {a, one})), " (t.`Name` = 'a' OR t.`Id` = 1) ");
  EXPECT_EQ(Where(Group(dloNot, {a, one})), " (t.`Name` = 'a't.`Id` = 1) ");
  EXPECT_EQ(Where(Group(dloNotSet, {a, one})), " (t.`Name` = 'a't.`Id` = 1) ");
  // Nested groups come first, whenever they were added.
  auto root = Group(dloAnd, {a});
  root->ConditionExpressions()->Add(Group(dloOr, {one, Cond("Mask", dcoContains, 4)}));
  root->ConditionExpressions()->Add(Group(dloAnd, {Cond("Flag", dcoEqualto, "yes")}));
  EXPECT_EQ(Where(root),
            " ( (t.`Id` = 1 OR t.`Mask` & 4 = 4)  AND  (t.`Flag` = 1)  AND t.`Name` = 'a') ");
}

TEST_F(QueryBuilderTest, ConditionsThatRenderNothing) {
  auto a = Cond("Name", dcoEqualto, "a");
  auto odd = Cond("Odd", dcoEqualto, "x");
  // Beside others an unknown data type leaves a doubled joiner ...
  EXPECT_EQ(Where(Group(dloAnd, {a, odd, Cond("Id", dcoEqualto, 1)})),
            " (t.`Name` = 'a' AND  AND t.`Id` = 1) ");
  // ... and a group of nothing else is dropped.
  EXPECT_EQ(Where(Group(dloAnd, {a}, {Group(dloOr, {odd})})), " (t.`Name` = 'a') ");
  // A whole tree of nothing leaves only the root mark: the second pop fails.
  for (const auto& empty : {Group(dloAnd, {}), Group(dloAnd, {odd})}) {
    Error error = Raised([&] { Where(empty); });
    EXPECT_EQ(error.Number(), kErrSubscript);
    EXPECT_THAT(error.Source(), HasSubstr("CConditionToStringBuilder:Pop Ln "));
    EXPECT_THAT(error.Source(), HasSubstr("CConditionToStringBuilder:ToString Ln "));
  }
  EXPECT_EQ(builder_.ToString(nullptr, map_), "");
  // The builder is reusable after a failure.
  EXPECT_EQ(Where(Group(dloAnd, {a})), " (t.`Name` = 'a') ");
}

TEST_F(QueryBuilderTest, ColumnsTakeTheAliasAndTheConditionsOwnName) {
  EXPECT_EQ(Where(Group(dloAnd, {Cond("name", dcoEqualto, "a"), Cond("OTHER", dcoEqualto, "b"),
                                 Cond("Name", dcoEqualto, "c"), Cond("Bare", dcoEqualto, "d")})),
            " (t.`name` = 'a' AND u.`OTHER` = 'b' AND t.`Name` = 'c' AND .`Bare` = 'd') ");

  Error unknown = Raised([&] { Where(Group(dloAnd, {Cond("Nope", dcoEqualto, "a")})); });
  EXPECT_EQ(unknown.Number(), OwnError(kMsgUnknownAttribute));
  EXPECT_THAT(unknown.Description(),
              StartsWith("Unknown attribute 'Nope'. => \r\nCCondition:ILeaf_Accept Ln "));
  EXPECT_THAT(unknown.Source(), StartsWith("pelOrv=> [Err:8194][Ver:"));
  EXPECT_THAT(unknown.Source(), HasSubstr("CConditionToStringBuilder:IVisitor_Visit Ln "));
}

TEST_F(QueryBuilderTest, LargeGroupsGrowTheStack) {
  auto root = Group(dloOr, {});
  for (int i = 0; i < 120; ++i) root->Conditions()->Add(Cond("Id", dcoEqualto, i));
  const std::string sql = Where(root);
  EXPECT_THAT(sql, StartsWith(" (t.`Id` = 0 OR t.`Id` = 1 OR "));
  EXPECT_THAT(sql, HasSubstr(" OR t.`Id` = 119) "));
  size_t joins = 0;
  for (size_t at = sql.find(" OR "); at != std::string::npos; at = sql.find(" OR ", at + 1))
    ++joins;
  EXPECT_EQ(joins, 119u);
}

}  // namespace
}  // namespace orvtest
