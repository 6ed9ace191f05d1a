// The query document: writing, reading back, and refusing bad documents.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "QueryTestSupport.h"

namespace orvtest {
namespace {

using ::testing::HasSubstr;

void ExpectSameExpression(const CConditionExpression& a, const CConditionExpression& b) {
  EXPECT_EQ(a.LogicalOperator(), b.LogicalOperator());
  ASSERT_EQ(a.Conditions()->Count(), b.Conditions()->Count());
  for (int32_t i = 1; i <= a.Conditions()->Count(); ++i) {
    const auto x = a.Conditions()->Item(i);
    const auto y = b.Conditions()->Item(i);
    EXPECT_EQ(x->AttributeName(), y->AttributeName());
    EXPECT_EQ(x->Operator(), y->Operator());
    EXPECT_EQ(x->ValueType(), y->ValueType());
    EXPECT_TRUE(x->Value() == y->Value()) << "condition " << i << " of " << x->AttributeName();
  }
  ASSERT_EQ(a.ConditionExpressions()->Count(), b.ConditionExpressions()->Count());
  for (int32_t i = 1; i <= a.ConditionExpressions()->Count(); ++i) {
    ExpectSameExpression(*a.ConditionExpressions()->Item(i), *b.ConditionExpressions()->Item(i));
  }
}

void ExpectSameQuery(const CQuery& a, const CQuery& b) {
  EXPECT_EQ(a.EntityName(), b.EntityName());
  EXPECT_EQ(a.MaxRows(), b.MaxRows());
  EXPECT_EQ(a.Distinct(), b.Distinct());
  ASSERT_EQ(a.Criteria() == nullptr, b.Criteria() == nullptr);
  if (a.Criteria()) ExpectSameExpression(*a.Criteria(), *b.Criteria());
  ASSERT_EQ(a.OrderBy()->Count(), b.OrderBy()->Count());
  for (int32_t i = 1; i <= a.OrderBy()->Count(); ++i) {
    EXPECT_EQ(a.OrderBy()->Item(i)->AttributeName(), b.OrderBy()->Item(i)->AttributeName());
    EXPECT_EQ(a.OrderBy()->Item(i)->SortOrder(), b.OrderBy()->Item(i)->SortOrder());
  }
}

CQuery Read(const std::string& xml) {
  CQuery query;
  query.FromXML(xml);
  return query;
}

TEST(QueryXmlTest, WritesTheDocumentShape) {
  CQuery query;
  query.SetEntityName("tblWorkitems");
  query.SetMaxRows(50);
  query.SetDistinct(true);
  auto root = Group(dloOr, {Cond("Subject", dcoContains, "a<b & \"c\""), Cond("Priority", dcoNull)},
                    {Group(dloAnd, {Cond("State", dconotequalto, 4)})});
  query.SetCriteria(root);
  query.OrderBy()->Add(std::make_shared<COrderExpression>("CreatedOn", dsDescending));
  EXPECT_EQ(query.ToXML(),
            "<query entity=\"tblWorkitems\" maxrows=\"50\" distinct=\"true\" columnset=\"\">"
            "<columnset/><criteria><conditionexpression logicaloperator=\"dloOr\">"
            "<conditionexpressions><conditionexpression logicaloperator=\"dloAnd\">"
            "<conditionexpressions/><conditions>"
            "<condition attributename=\"State\" operator=\"dconotequalto\" "
            "valuetype=\"dcfvtConstant\" vartype=\"long\">4</condition>"
            "</conditions></conditionexpression></conditionexpressions><conditions>"
            "<condition attributename=\"Subject\" operator=\"dcoContains\" "
            "valuetype=\"dcfvtConstant\">a&lt;b &amp; \"c\"</condition>"
            "<condition attributename=\"Priority\" operator=\"dcoNull\" "
            "valuetype=\"dcfvtConstant\"/></conditions></conditionexpression></criteria>"
            "<joins/><orderby><sort attributename=\"CreatedOn\" sortorder=\"dsDescending\"/>"
            "</orderby><parameters/></query>");
  EXPECT_EQ(CQuery().ToXML(),
            "<query entity=\"\" maxrows=\"200\" distinct=\"false\" columnset=\"\"><columnset/>"
            "<criteria/><joins/><orderby/><parameters/></query>");
}

TEST(QueryXmlTest, ARoundTripReproducesTheQuery) {
  CQuery query;
  query.SetEntityName("vWorkitems\"Process'");
  query.SetMaxRows(-5);
  auto kinds = Group(dloNot, {});
  const Variant values[] = {Variant(),
                            Variant(Null),
                            Variant(""),
                            Variant("   "),
                            Variant("\r\n\t"),
                            Variant(" two  blanks "),
                            Variant("line\r\nbreak\tand tab"),
                            Variant("<![CDATA[ ]]> &amp; ]]> '\" \xC3\xA9\xE2\x82\xAC"),
                            Variant(true),
                            Variant(false),
                            Variant(-2147483647 - 1),
                            Variant(0.1),
                            Variant(-1e300),
                            Variant(Date::FromParts(2024, 2, 29, 23, 59, 59)),
                            Variant(Date::FromParts(1899, 12, 30, 6, 30)),
                            Variant(Date(45292.123456789))};
  for (const Variant& value : values) kinds->Conditions()->Add(Cond("A\"<&>'\n", dcoIn, value));
  kinds->Conditions()->Add(
      Cond("Odd", static_cast<ConditionOperatorEnum>(0), "x", dcfvtUserDefined));
  kinds->Conditions()->Add(Cond("Odd", static_cast<ConditionOperatorEnum>(99), "y",
                                static_cast<ConditionFieldValueTypeEnum>(7)));
  auto root = Group(static_cast<LogicalOperatorEnum>(-4), {Cond("B", dcoToday)},
                    {kinds, Group(dloNotSet, {}), Group(dloOr, {}, {Group(dloAnd, {})})});
  query.SetCriteria(root);
  query.OrderBy()->Add(std::make_shared<COrderExpression>("X", dsAscending));
  query.OrderBy()->Add(std::make_shared<COrderExpression>("Y", static_cast<SortOrderEnum>(5)));

  const std::string xml = query.ToXML();
  const CQuery back = Read(xml);
  ExpectSameQuery(query, back);
  EXPECT_EQ(back.ToXML(), xml);
}

TEST(QueryXmlTest, ReadsNamesInAnyCaseAndNumbers) {
  const CQuery query = Read(R"(<?xml version="1.0"?>
    <query entity="tblProcessInstance" maxrows=" 0 " distinct="-1">
      <criteria>
        <conditionexpression logicaloperator="2">
          <conditions>
            <condition attributename="State" operator=" DCONOTEQUALTO " valuetype="1">4</condition>
            <condition attributename="Note" operator="9"><![CDATA[a<b]]> &amp; c</condition>
            <condition attributename="Blank" operator="dcoNull">
            </condition>
          </conditions>
        </conditionexpression>
      </criteria>
      <orderby><sort attributename="CreatedOn" sortorder="DSDESCENDING"/><sort attributename="Priority"/></orderby>
    </query>)");
  EXPECT_EQ(query.EntityName(), "tblProcessInstance");
  EXPECT_EQ(query.MaxRows(), 200);
  EXPECT_TRUE(query.Distinct());
  ASSERT_NE(query.Criteria(), nullptr);
  EXPECT_EQ(query.Criteria()->LogicalOperator(), dloOr);
  const auto& conditions = *query.Criteria()->Conditions();
  ASSERT_EQ(conditions.Count(), 3);
  EXPECT_EQ(conditions.Item(1)->Operator(), dconotequalto);
  EXPECT_EQ(conditions.Item(1)->ValueType(), dcfvtUserDefined);
  EXPECT_TRUE(conditions.Item(1)->Value() == Variant("4"));
  EXPECT_EQ(conditions.Item(2)->Operator(), dcoContains);
  EXPECT_EQ(conditions.Item(2)->ValueType(), dcfvtConstant);
  EXPECT_TRUE(conditions.Item(2)->Value() == Variant("a<b & c"));
  // Text of blanks only, without a vartype, is no value.
  EXPECT_TRUE(conditions.Item(3)->Value().IsEmpty());
  EXPECT_EQ(query.OrderBy()->Item(1)->SortOrder(), dsDescending);
  EXPECT_EQ(query.OrderBy()->Item(2)->SortOrder(), dsAscending);
}

TEST(QueryXmlTest, MissingPartsKeepTheDefaults) {
  const CQuery bare = Read("<query/>");
  ExpectSameQuery(bare, CQuery());
  EXPECT_EQ(Read("<query><criteria/></query>").Criteria(), nullptr);
  const CQuery empty_group = Read("<query><criteria><conditionexpression/></criteria></query>");
  ASSERT_NE(empty_group.Criteria(), nullptr);
  EXPECT_EQ(empty_group.Criteria()->LogicalOperator(), dloAnd);
}

TEST(QueryXmlTest, BadDocumentsAreRefusedWithTheirPlace) {
  const std::pair<std::string, std::string> cases[] = {
      {"",
       "Invalid procedure call or argument: query document: not well-formed XML: No document "
       "element found (line 1, column 1)"},
      {"<query><criteria></query>",
       "not well-formed XML: Start-end tags mismatch (line 1, column 20)"},
      {"<filter/>", "the root element 'query' is missing"},
      {"<query>\n<criteria><conditionexpression><conditions>\n"
       "  <condition attributename=\"a\" operator=\"dcoFoo\"/>"
       "</conditions></conditionexpression></criteria></query>",
       "unknown value 'dcoFoo' of the attribute 'operator' of the element 'condition' (line 3, "
       "column 4)"},
      {"<query maxrows=\"ten\"/>", "unknown value 'ten' of the attribute 'maxrows'"},
      {"<query maxrows=\"99999999999\"/>",
       "unknown value '99999999999' of the attribute 'maxrows'"},
      {"<query distinct=\"maybe\"/>", "unknown value 'maybe' of the attribute 'distinct'"},
      {"<query><orderby><sort sortorder=\"up\"/></orderby></query>",
       "'sortorder' of the element 'sort'"},
      {"<query><criteria><conditionexpression logicaloperator=\"xor\"/></criteria></query>",
       "'logicaloperator' of the element 'conditionexpression'"},
      {"<query><criteria><conditionexpression><conditions><condition "
       "vartype=\"long\">1.5</condition>"
       "</conditions></conditionexpression></criteria></query>",
       "the value '1.5' is not a valid long"},
      {"<query><criteria><conditionexpression><conditions><condition "
       "vartype=\"date\">soon</condition>"
       "</conditions></conditionexpression></criteria></query>",
       "the value 'soon' is not a valid date"},
      {"<query><criteria><conditionexpression><conditions><condition vartype=\"blob\">1</condition>"
       "</conditions></conditionexpression></criteria></query>",
       "unknown value 'blob' of the attribute 'vartype'"},
  };
  for (const auto& [xml, what] : cases) {
    CQuery query;
    query.SetEntityName("kept");
    Error error = Raised([&] { query.FromXML(xml); });
    EXPECT_EQ(error.Number(), kErrInvalidCall) << xml;
    EXPECT_THAT(error.Description(), HasSubstr(what)) << xml;
    EXPECT_EQ(query.EntityName(), "kept");
  }
}

TEST(QueryXmlTest, NestingIsLimited) {
  const auto nested = [](int depth) {
    std::string xml = "<query><criteria>";
    for (int i = 0; i < depth; ++i) xml += "<conditionexpression><conditionexpressions>";
    for (int i = 0; i < depth; ++i) xml += "</conditionexpressions></conditionexpression>";
    return xml + "</criteria></query>";
  };
  EXPECT_NO_THROW(Read(nested(kMaxExpressionDepth)));
  EXPECT_THAT(Raised([&] { Read(nested(kMaxExpressionDepth + 1)); }).Description(),
              HasSubstr("nested deeper than 100 levels"));
  EXPECT_EQ(Raised([&] { Read(nested(100000)); }).Number(), kErrInvalidCall);
}

}  // namespace
}  // namespace orvtest
