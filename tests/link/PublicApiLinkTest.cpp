// Built from the public headers and linked against the shared library alone,
// as an engine is. A public class whose type information the library keeps
// hidden makes this program fail to link; a cast that the library's objects
// do not answer makes it fail at run time.

#include <gtest/gtest.h>

#include <typeinfo>

#include "orvmysql/orvmysql.h"

using namespace orvmysql;

namespace {

template <class T>
void ExpectCreatedAs(std::string_view name) {
  std::shared_ptr<T> typed = std::dynamic_pointer_cast<T>(CreateObject(name));
  ASSERT_NE(typed, nullptr) << name;
  EXPECT_EQ(typeid(*typed), typeid(T)) << name;
}

TEST(PublicApi, ClassesCreatedByNameAreTheTypesTheHeadersDeclare) {
  ExpectCreatedAs<CMYSqlDP>("orvmysql.CMYSqlDP");
  ExpectCreatedAs<CDPContext>("orvmysql.CDPContext");
  ExpectCreatedAs<CDPConnector>("orvmysql.CDPConnector");
  ExpectCreatedAs<CQuery>("orvmysql.CQuery");
  ExpectCreatedAs<CCondition>("orvmysql.CCondition");
  ExpectCreatedAs<CConditionExpression>("orvmysql.CConditionExpression");
  ExpectCreatedAs<COrderExpression>("orvmysql.COrderExpression");
  ExpectCreatedAs<CConditions>("orvmysql.CConditions");
  ExpectCreatedAs<CConditionExpressionList>("orvmysql.CConditionExpressionList");
  ExpectCreatedAs<COrderExpressionList>("orvmysql.COrderExpressionList");
  ExpectCreatedAs<CConditionToStringBuilder>("orvmysql.CConditionToStringBuilder");
  ExpectCreatedAs<CAttributes>("orvmysql.CAttributes");
  ExpectCreatedAs<CAttribute>("orvmysql.CAttribute");
  EXPECT_NE(
      std::dynamic_pointer_cast<IOrvDefinitionsDP>(CreateObject("orvmysql.COrvDefinitionsDP")),
      nullptr);
  EXPECT_NE(std::dynamic_pointer_cast<IConnection>(CreateObject("orvmysql.CConnection")), nullptr);
}

TEST(PublicApi, QueryCollectionsBuiltByTheProgram) {
  COrderExpressionList order;
  order.Add(std::make_shared<COrderExpression>("Name", dsDescending));
  CConditionExpressionList expressions;
  expressions.Add(std::make_shared<CConditionExpression>(dloOr));
  CConditions conditions;
  conditions.Add(std::make_shared<CCondition>("State", dcoEqualto, Variant(1)));
  EXPECT_EQ(order.Item(1)->SortOrder(), dsDescending);
  EXPECT_EQ(expressions.Item(1)->LogicalOperator(), dloOr);
  EXPECT_EQ((*conditions.begin())->AttributeName(), "State");
  try {
    order.Item(2);
    ADD_FAILURE() << "no error for a position out of range";
  } catch (const Error& e) {
    EXPECT_EQ(e.Number(), kErrSubscript);
  }
}

}  // namespace
