// The data handler and creation by name, without a database.

#include <gtest/gtest.h>

#include "access/Connection.h"
#include "access/DataSourceBase.h"
#include "orvmysql/orvmysql.h"

using namespace orvmysql;

TEST(ConnectionString, ExactFormDefaultPortAndMaskedPassword) {
  const CDPConnector with_port("db.example", "wf", "engine", "p;w", "3307");
  const std::string exact =
      "Driver=MySQL ODBC 5.1 Driver;DATABASE=wf;SERVER=db.example;UID=engine;PASSWORD=p;w;"
      "PORT=3307;OPTION=18475;";
  EXPECT_EQ(BuildConnectionString(with_port), exact);
  auto connection = NewConnection(with_port);
  EXPECT_EQ(connection->ConnectionString(), exact);
  EXPECT_EQ(MaskedConnectionString(*connection),
            "Driver=MySQL ODBC 5.1 Driver;DATABASE=wf;SERVER=db.example;UID=engine;"
            "PASSWORD=********;PORT=3307;OPTION=18475;");

  const CDPConnector no_port("h", "d", "u", "", "");
  EXPECT_EQ(BuildConnectionString(no_port),
            "Driver=MySQL ODBC 5.1 Driver;DATABASE=d;SERVER=h;UID=u;PASSWORD=;PORT=3306;"
            "OPTION=18475;");
}

TEST(DataHandler, TypeAndSessionBeforeInit) {
  CMYSqlDP handler;
  EXPECT_EQ(handler.Type(), "MYSQL");
  for (auto op : {+[](CMYSqlDP& h) { h.StartSession(); }, +[](CMYSqlDP& h) { h.EndSession(); }}) {
    try {
      op(handler);
      FAIL();
    } catch (const Error& e) {
      EXPECT_EQ(e.Number(), kErrObjectNotSet);
      EXPECT_EQ(e.Description(), "Object variable or With block variable not set (Connection)");
      EXPECT_NE(e.Source().find(" => \r\nCMSAccessDP:IOrvDataHandler_StartSession Ln "),
                std::string::npos);
    }
  }
  handler.Init(CDPConnector("h", "d", "u", "p"));
  EXPECT_EQ(handler.Type(), "MYSQL");
}

TEST(DataHandler, CodesWithoutProviderRaise91) {
  CMYSqlDP handler;
  handler.Init(CDPConnector("h", "d", "u", "p"));
  for (int code : {0, 1, 2, 3, 12, 25, -4}) {
    try {
      handler.GetDataSource(code);
      FAIL() << code;
    } catch (const Error& e) {
      EXPECT_EQ(e.Number(), kErrObjectNotSet);
      EXPECT_NE(e.Source().find(" => \r\nCMSAccessDP:IOrvDataHandler_GetDataSource Ln "),
                std::string::npos);
    }
  }
}

TEST(DataHandler, EachCallGivesAFreshProviderSharingTheConnection) {
  CMYSqlDP handler;
  handler.Init(CDPConnector("h", "d", "u", "p"));
  for (int code = 4; code <= 24; ++code) {
    if (code == 12) continue;
    auto a = handler.GetDataSource(code);
    auto b = handler.GetDataSource(code);
    ASSERT_NE(a, nullptr);
    EXPECT_NE(a, b);
    auto base = std::dynamic_pointer_cast<DataSourceBase>(a);
    ASSERT_NE(base, nullptr);
    EXPECT_EQ(base->Connection(), handler.Connection());
  }
}

TEST(CreateObject, ByNameWithoutRegardToCase) {
  auto handler = CreateObjectAs<IOrvDataHandler>("ORVMYSQL.cmysqldp");
  EXPECT_NE(std::dynamic_pointer_cast<IDataProvider>(handler), nullptr);
  EXPECT_NE(std::dynamic_pointer_cast<IDataSource>(CreateObject("orvmysql.CWorkitemsDP")), nullptr);
  try {
    CreateObject("orvmysql.CNoSuchThing");
    FAIL();
  } catch (const Error& e) {
    EXPECT_EQ(e.Number(), kErrCannotCreateObject);
  }
}
