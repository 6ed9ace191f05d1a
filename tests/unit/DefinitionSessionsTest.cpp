// The definition providers against a recording connection: the session
// bracket (also when a statement fails) and the error trail without a
// connection; the cascades' statements are in UnitOfWorkTest. What the
// database stores is proved by the live tests.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "definitions/CActivitiesDP.h"
#include "definitions/COrvDefinitionsDP.h"
#include "definitions/CSwitchesDP.h"
#include "orvmysql/Error.h"
#include "support/ErrorCapture.h"
#include "support/RecordingConnection.h"

namespace orvmysql {
namespace {

using orvtest::On;
using orvtest::RecordingConnection;

TEST(DefinitionSessions, FailedStatementEndsTheSessionAndCarriesTheLocation) {
  auto connection = std::make_shared<RecordingConnection>();
  connection->fail_on = "INSERT INTO tblSwitches";
  try {
    On<CSwitchesDP>(connection)->Add({2, "Start", 7, "start"});
    FAIL() << "the insert should have failed";
  } catch (const Error& e) {
    EXPECT_EQ(e.Number(), kErrDatabase);
    EXPECT_NE(e.Source().find(" => \r\nCSwitchesDP: ISwitchesDP_Add Function ("), std::string::npos)
        << e.Source();
  }
  EXPECT_EQ(connection->depth, 0);
  EXPECT_EQ(connection->statements.back(),
            "INSERT INTO tblSwitches (SwitchID,SwitchType,DisplayName,FKProcDefinitionID,"
            "SwitchProcDefID) VALUES (42,2,'Start',7,'start')");

  // A failure in the middle of the cascade ends its session too.
  connection->fail_on = "tblTransitions";
  EXPECT_EQ(
      [&] {
        try {
          On<COrvDefinitionsDP>(connection)->Delete(3);
        } catch (const Error& e) {
          return e.Number();
        }
        return 0;
      }(),
      kErrDatabase);
  EXPECT_EQ(connection->depth, 0);
}

TEST(DefinitionSessions, BadValuesStopBeforeTheSessionStarts) {
  auto connection = std::make_shared<RecordingConnection>();
  auto activities = On<CActivitiesDP>(connection);
  EXPECT_THROW(activities->Add(FieldArray(15)), Error);
  EXPECT_THROW(activities->Delete(1, "7; DROP TABLE tblActivities"), Error);
  EXPECT_THROW(activities->Delete(1, "12.5"), Error);
  // Text that is not UTF-8 is refused while the field array is formatted, so
  // no session starts and no key is taken.
  const FieldArray fields{"Task", "", 1, 0, 1, 2, 3, 4, 5, 7, 6, "", "", "t1", 16, "{C}"};
  FieldArray bad_subject = fields;
  bad_subject[11] = "\xC3' OR 1=1 -- ";
  EXPECT_EQ(orvtest::ErrorOf([&] { activities->Add(bad_subject); }), kErrInvalidCall);
  EXPECT_EQ(orvtest::ErrorOf([&] { activities->Update(7, "t1\xBF", fields); }), kErrInvalidCall);
  EXPECT_EQ(orvtest::ErrorOf(
                [&] { On<COrvDefinitionsDP>(connection)->WorkflowDefinitionExist("\xF8", 1); }),
            kErrInvalidCall);
  EXPECT_TRUE(connection->statements.empty());
  EXPECT_EQ(connection->starts, 0);

  // A valid key is written as it is given.
  activities->Delete(1, "00900102");
  EXPECT_THAT(connection->statements,
              testing::Contains("DELETE FROM tblActivities WHERE ActivityID = 00900102"));
}

TEST(DefinitionSessions, MissingConnectionIsNamedWhereTheOperationSaysSo) {
  auto unconnected = std::make_shared<CActivitiesDP>();
  try {
    unconnected->Load("");
    FAIL();
  } catch (const Error& e) {
    EXPECT_EQ(e.Number(), kErrObjectNotSet);
    EXPECT_TRUE(e.Description().ends_with(" (Connection)")) << e.Description();
  }
  try {
    unconnected->ActivityExist("a", 1, 2);
    FAIL();
  } catch (const Error& e) {
    EXPECT_EQ(e.Number(), kErrObjectNotSet);
    EXPECT_FALSE(e.Description().ends_with(" (Connection)")) << e.Description();
    EXPECT_THAT(e.Source(), testing::HasSubstr(" => \r\nmodQueryHelper:Exists Ln "));
  }
}

}  // namespace
}  // namespace orvmysql
