// The instance-data providers against a recording connection: the exact text
// of every statement, one case per line, the location text of every
// operation, the session of Add, the value rule under a decimal-comma locale
// and under C, and bad input stopped before anything runs. What the database
// makes of the statements is proved by the live tests.

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "access/SqlValues.h"
#include "runtime/CAIPropertyDataDP.h"
#include "runtime/CActivityInstanceDataDP.h"
#include "runtime/CPIReleventDataDP.h"
#include "runtime/CProcInstDataDP.h"
#include "support/ErrorCapture.h"
#include "support/NumericLocale.h"
#include "support/RecordingConnection.h"

namespace orvmysql {
namespace {

using orvtest::ErrorOf;
using orvtest::NumericLocale;
using orvtest::On;
using orvtest::RecordingConnection;

struct Providers {
  std::shared_ptr<RecordingConnection> connection = std::make_shared<RecordingConnection>();
  std::shared_ptr<CProcInstDataDP> values = On<CProcInstDataDP>(connection);
  std::shared_ptr<CPIReleventDataDP> cases = On<CPIReleventDataDP>(connection);
  std::shared_ptr<CActivityInstanceDataDP> tasks = On<CActivityInstanceDataDP>(connection);
  std::shared_ptr<CAIPropertyDataDP> properties = On<CAIPropertyDataDP>(connection);
};

const FieldArray kValue = {12, "Amount", " 12.5 ", 2, 4, 0.5, 1000, 1, "LT", "", "rel"};
const FieldArray kCase = {30, "Amount", "12.5", 2, 4, 0.5, 1000, 1, 0, "ann", "", "Ann", 12, 1};
const FieldArray kTask = {30, "Approved", "yes", 1, 0, 0, 0, 1, "", "", "", 2};
const FieldArray kProperty = {30, "Performer", "manager", 1, 0, 0, 0, "not read", "", "L", ""};

// The declarations of a process instance's definition beside its values.
const std::string kHead =
    "SELECT tblProcessParams.ParameterID,tblProcessParams.FKProcDefID,tblProcessParams."
    "ParameterName,tblProcessParams.DisplayName,tblProcessParams.DataType,tblProcessParams."
    "DefaultValue,tblProcessParams.`Attributes` AS TemplateAttributes,tblProcessParams."
    "ParameterType,tblProcessParams.`Min`,tblProcessParams.`Max`,tblProcessParams.CreatorType,"
    "tblProcessParams.ExtendedAttributes,tblProcessParams.Relevance,tblProcessParams."
    "LookupTypeCode,tblProcessParams.ListAttribute";
const std::string kValues =
    ",tblProcessInstance.ProcInstanceID AS ProcInstanceID,tblProcInstanceData.ProcInstanceDataID "
    "AS ProcInstanceDataID, tblProcInstanceData.TextValue AS TextValue, tblProcInstanceData."
    "NumericValue AS NumericValue, tblProcInstanceData.`Attributes` AS `Attributes`";
const std::string kNoValues =
    ",NULL AS ProcInstanceID,NULL AS ProcInstanceDataID,NULL AS TextValue,NULL AS NumericValue,"
    "NULL AS `Attributes`";
// The three FROM forms, each with the instance restriction in its data join.
const std::string kOwn =
    " AND tblProcessInstance.ProcInstanceID=tblProcInstanceData.FKProcInstanceID";
const std::string kInner =
    " FROM (tblProcessParams INNER JOIN tblProcessInstance ON tblProcessParams.FKProcDefID="
    "tblProcessInstance.FKProcDefID) INNER JOIN tblProcInstanceData ON (tblProcInstanceData."
    "ParameterName=tblProcessParams.ParameterName" +
    kOwn + ") ";
const std::string kOuter =
    " FROM (tblProcessParams LEFT JOIN tblProcessInstance ON tblProcessParams.FKProcDefID="
    "tblProcessInstance.FKProcDefID) LEFT JOIN tblProcInstanceData ON (tblProcInstanceData."
    "ParameterName=tblProcessParams.ParameterName" +
    kOwn + ") ";
const std::string kOuterUnnamed =
    " FROM (tblProcessParams LEFT JOIN tblProcessInstance ON tblProcessParams.FKProcDefID="
    "tblProcessInstance.FKProcDefID) LEFT JOIN tblProcInstanceData ON ((tblProcInstanceData."
    "ParameterName=tblProcessParams.ParameterName OR tblProcInstanceData.ParameterName IS NULL)" +
    kOwn + ") ";
const std::string kOwnOrNone =
    "(tblProcessInstance.ProcInstanceID=tblProcInstanceData.FKProcInstanceID OR "
    "tblProcInstanceData.FKProcInstanceID IS NULL)";

const std::string kCaseSelect =
    "SELECT  tblPIReleventData.*,tblActivities.ActivityName FROM (tblPIReleventData INNER JOIN "
    "tblActivityInstance ON tblPIReleventData.EntityID = tblActivityInstance.ActivityInstanceID"
    " AND tblPIReleventData.EntityType <> 0) INNER JOIN tblActivities ON "
    "tblActivityInstance.FKActivityID = tblActivities.ActivityID ";

const std::string kTaskHead =
    "SELECT tblActivityParamBag.ActivityParameterID,tblActivityParamBag.FKActivityID,"
    "tblActivityParamBag.ParameterName,tblActivityParamBag.DisplayName,tblActivityParamBag."
    "DataType,tblActivityParamBag.`Value` AS DefaultValue,tblActivityParamBag.`Attributes` AS "
    "TemplateAttributes,tblActivityParamBag.ParameterType,tblActivityParamBag.`Min`,"
    "tblActivityParamBag.`Max`,tblActivityParamBag.CreatorType,tblActivityParamBag."
    "ExtendedAttributes,tblActivityParamBag.Relevance,tblActivityParamBag.LookupTypeCode,"
    "tblActivityParamBag.ListAttribute,tblActivityParamBag.Mapping";
const std::string kTaskValues =
    ",tblActivityInstance.ActivityInstanceID AS ActivityInstanceID,tblActivityInstanceData."
    "AIParameterID AS AIParameterID,tblActivityInstanceData.TaskIndex AS TaskIndex,"
    "tblActivityInstanceData.TextValue AS TextValue,tblActivityInstanceData.NumericValue AS "
    "NumericValue,tblActivityInstanceData.`Attributes` AS `Attributes`";
const std::string kTaskJoin =
    " FROM (tblActivityParamBag INNER JOIN tblActivityInstance ON tblActivityParamBag."
    "FKActivityID=tblActivityInstance.FKActivityID) %s JOIN tblActivityInstanceData ON "
    "(tblActivityInstanceData.ParameterName=tblActivityParamBag.ParameterName AND "
    "tblActivityInstance.ActivityInstanceID=tblActivityInstanceData.FKActivityInstanceID";

const std::string kPropertyHead =
    "SELECT tblActivityPropertyBag.ActivityPropertyID,tblActivityPropertyBag.FKActivityID,"
    "tblActivityPropertyBag.PropertyName,tblActivityPropertyBag.DisplayName,"
    "tblActivityPropertyBag.PropertyDescription,tblActivityPropertyBag.DataType,"
    "tblActivityPropertyBag.`Value` AS DefaultValue,tblActivityPropertyBag.`Attributes` AS "
    "TemplateAttributes,tblActivityPropertyBag.`Min`,tblActivityPropertyBag.`Max`,"
    "tblActivityPropertyBag.CreatorType,tblActivityPropertyBag.ExtendedAttributes,"
    "tblActivityPropertyBag.relevance AS Relevance,tblActivityPropertyBag.LookupTypeCode,"
    "tblActivityPropertyBag.ListAttribute,tblActivityPropertyBag.Mapping";
const std::string kPropertyValues =
    ",tblActivityInstance.ActivityInstanceID AS ActivityInstanceID,tblAIPropertyData."
    "AIPropertyID AS AIPropertyID,tblAIPropertyData.`Value` AS `Value`,tblAIPropertyData."
    "`Attributes` AS `Attributes`";
const std::string kPropertyJoin =
    " FROM (tblActivityPropertyBag INNER JOIN tblActivityInstance ON tblActivityPropertyBag."
    "FKActivityID=tblActivityInstance.FKActivityID) %s JOIN tblAIPropertyData ON "
    "(tblAIPropertyData.PropertyName=tblActivityPropertyBag.PropertyName AND "
    "tblActivityInstance.ActivityInstanceID=tblAIPropertyData.FKActivityInstanceID";

// The join with "INNER" or "LEFT" in place of %s.
std::string Join(const std::string& join, const std::string& kind) {
  std::string text = join;
  return text.replace(text.find("%s"), 2, kind);
}

struct Case {
  std::function<void(Providers&)> call;
  std::string statement;
};

void ExpectStatements(const std::vector<Case>& cases) {
  for (const Case& c : cases) {
    Providers p;
    c.call(p);
    ASSERT_FALSE(p.connection->statements.empty()) << c.statement;
    EXPECT_EQ(p.connection->statements.back(), c.statement);
  }
}

TEST(InstanceDataStatements, ProcessInstanceValues) {
  ExpectStatements({
      {[](Providers& p) { p.values->Add(kValue); },
       "INSERT INTO tblProcInstanceData  (ProcInstanceDataID,FKProcInstanceID,ParameterName,"
       "TextValue, DataType,`Attributes`,`Min`,`Max`,ParameterType,NumericValue,LookupTypeCode,"
       "ListAttribute,Relevance) VALUES (42,12,'Amount',NULL,2,4,0.5,1000.0,1,12.5,'LT',NULL,"
       "'rel')"},
      {[](Providers& p) { p.values->Update(7, kValue); },
       "UPDATE tblProcInstanceData SET  FKProcInstanceID = 12 ,ParameterName = 'Amount' ,"
       "TextValue = NULL ,DataType = 2 ,`Attributes` = 4 ,`Min` = 0.5 ,`Max` = 1000.0 ,"
       "ParameterType = 1 ,NumericValue = 12.5 ,LookupTypeCode = 'LT' ,ListAttribute = NULL ,"
       "Relevance = 'rel' WHERE ProcInstanceDataID = 7"},
      {[](Providers& p) { p.values->Delete(7, 0); },
       "DELETE FROM tblProcInstanceData WHERE ProcInstanceDataID = 7"},
      {[](Providers& p) { p.values->Delete(7, 12); },
       "DELETE FROM tblProcInstanceData WHERE FKProcInstanceID = 12"},
      {[](Providers& p) { p.values->ParameterExist("a_b", 12); },
       "SELECT 1 AS ListCount FROM tblProcInstanceData WHERE EXISTS (SELECT NULL FROM "
       "tblProcInstanceData WHERE FKProcInstanceID = 12 AND ParameterName LIKE 'a\\\\_b') LIMIT 1"},
      {[](Providers& p) { p.values->GetParameterByID(7); },
       kHead + kValues + kInner + " WHERE ProcInstanceDataID = 7"},
      {[](Providers& p) { p.values->GetParameterForProcess(12); },
       kHead + kValues + kOuter + " WHERE " + kOwnOrNone +
           " AND tblProcessInstance.ProcInstanceID = 12"},
      {[](Providers& p) { p.values->Load("WHERE tblProcessInstance.FKProcDefID = 3"); },
       kHead + kValues + kInner +
           " WHERE tblProcessInstance.FKProcDefID = 3 AND "
           "(tblProcessInstance.ProcInstanceID=tblProcInstanceData.FKProcInstanceID)"},
      {[](Providers& p) { p.values->Load(""); },
       kHead + kValues + kInner +
           " WHERE (tblProcessInstance.ProcInstanceID=tblProcInstanceData.FKProcInstanceID)"},
      {[](Providers& p) { p.values->LoadProcessInstanceParams(3, -1); },
       kHead + kNoValues + " FROM tblProcessParams  WHERE tblProcessParams.FKProcDefID = 3"},
      {[](Providers& p) { p.values->LoadProcessInstanceParams(3, 12); },
       kHead + kValues + kOuterUnnamed +
           " WHERE tblProcessParams.FKProcDefID = 3 AND tblProcessInstance.ProcInstanceID = 12 "
           "AND " +
           kOwnOrNone},
      {[](Providers& p) { p.values->LoadProcessInstanceParams(-1, 12); },
       kHead + kValues + kOuterUnnamed + " WHERE tblProcessInstance.ProcInstanceID = 12 AND " +
           kOwnOrNone},
  });
}

TEST(InstanceDataStatements, CaseRelevantData) {
  ExpectStatements({
      {[](Providers& p) { p.cases->Add(kCase); },
       "INSERT INTO tblPIReleventData  (PIReleventDataID,FKProcInstanceID,ParameterName,TextValue,"
       " DataType,`Attributes`,`Min`,`Max`,ParameterType,NumericValue,EntityID, EntityType, "
       "TaskIndex, ResourceID, ResourceType, ResourceName) VALUES (42,12,'Amount',NULL,2,4,0.5,"
       "1000.0,1,12.5,30,1,0,'ann',NULL,'Ann')"},
      {[](Providers& p) { p.cases->Update(7, kCase); },
       "UPDATE tblPIReleventData SET  FKProcInstanceID = 12 ,ParameterName = 'Amount' ,TextValue "
       "= NULL ,DataType = 2 ,`Attributes` = 4 ,`Min` = 0.5 ,`Max` = 1000.0 ,ParameterType = 1 ,"
       "NumericValue = 12.5 ,EntityID = 30 ,EntityType = 1 ,TaskIndex = 0 ,ResourceID = 'ann' ,"
       "ResourceType = NULL ,ResourceName = 'Ann' WHERE PIReleventDataID = 7"},
      {[](Providers& p) { p.cases->Delete(7, 0); },
       "DELETE FROM tblPIReleventData WHERE PIReleventDataID = 7"},
      {[](Providers& p) { p.cases->Delete(7, 30); },
       "DELETE FROM tblPIReleventData WHERE EntityID = 30 AND EntityType = 1"},
      {[](Providers& p) { p.cases->GetParameterByID(7); },
       kCaseSelect + " WHERE PIReleventDataID = 7"},
      {[](Providers& p) { p.cases->GetParameterForEntity(12); },
       kCaseSelect + " WHERE tblPIReleventData.FKProcInstanceID = 12"},
      {[](Providers& p) { p.cases->Load("ORDER BY ParameterName"); },
       kCaseSelect + " ORDER BY ParameterName"},
  });
}

TEST(InstanceDataStatements, TaskParametersAndProperties) {
  ExpectStatements({
      {[](Providers& p) { p.tasks->Add(kTask); },
       "INSERT INTO tblActivityInstanceData  (AIParameterID,FKActivityInstanceID,ParameterName,"
       "TextValue, DataType,`Attributes`,`Min`,`Max`,ParameterType,NumericValue,TaskIndex,"
       "LookupTypeCode,ListAttribute,Relevance) VALUES (42,30,'Approved','yes',1,0,0.0,0.0,1,"
       "NULL,2,NULL,NULL,NULL)"},
      {[](Providers& p) { p.tasks->Update(7, kTask); },
       "UPDATE tblActivityInstanceData SET  FKActivityInstanceID = 30 ,ParameterName = 'Approved' "
       ",TextValue = 'yes' ,DataType = 1 ,`Attributes` = 0 ,`Min` = 0.0 ,`Max` = 0.0 ,"
       "ParameterType = 1 ,NumericValue = NULL ,TaskIndex = 2 ,LookupTypeCode = NULL ,"
       "ListAttribute = NULL ,Relevance = NULL WHERE AIParameterID = 7"},
      {[](Providers& p) { p.tasks->Delete(7, 0); },
       "DELETE FROM tblActivityInstanceData WHERE AIParameterID = 7"},
      {[](Providers& p) { p.tasks->Delete(7, 30); },
       "DELETE FROM tblActivityInstanceData WHERE FKActivityInstanceID = 30"},
      {[](Providers& p) { p.tasks->ParameterExist("Approved", 30, 2); },
       "SELECT 1 AS ListCount FROM tblActivityInstanceData WHERE EXISTS (SELECT NULL FROM "
       "tblActivityInstanceData WHERE FKActivityInstanceID = 30 AND TaskIndex = 2 AND "
       "ParameterName LIKE 'Approved') LIMIT 1"},
      {[](Providers& p) { p.tasks->GetParameterByID(7); },
       kTaskHead + kTaskValues + Join(kTaskJoin, "INNER") +
           ")  WHERE tblActivityInstanceData.AIParameterID = 7"},
      {[](Providers& p) { p.tasks->GetParameterForTask(30, 2); },
       kTaskHead + kTaskValues + Join(kTaskJoin, "LEFT") +
           " AND tblActivityInstanceData.TaskIndex = 2) WHERE "
           "tblActivityInstance.ActivityInstanceID = 30"},
      {[](Providers& p) { p.tasks->Load("WHERE tblActivityInstanceData.TaskIndex = 2"); },
       kTaskHead + kTaskValues + Join(kTaskJoin, "INNER") +
           ")  WHERE tblActivityInstanceData.TaskIndex = 2"},
      {[](Providers& p) { p.tasks->LoadTaskParams(5, -1, 2); },
       kTaskHead +
           ",NULL AS ActivityInstanceID,NULL AS AIParameterID,NULL AS TaskIndex,NULL AS "
           "TextValue,NULL AS NumericValue,NULL AS `Attributes` FROM tblActivityParamBag WHERE "
           "tblActivityParamBag.FKActivityID = 5"},
      {[](Providers& p) { p.tasks->LoadTaskParams(-1, 30, 2); },
       kTaskHead + kTaskValues + Join(kTaskJoin, "LEFT") +
           " AND tblActivityInstanceData.TaskIndex = 2) WHERE "
           "tblActivityInstance.ActivityInstanceID = 30"},
      {[](Providers& p) { p.tasks->LoadTaskParams(5, 30, 2); },
       kTaskHead + kTaskValues + Join(kTaskJoin, "LEFT") +
           " AND tblActivityInstanceData.TaskIndex = 2) WHERE "
           "tblActivityInstance.ActivityInstanceID = 30 AND tblActivityParamBag.FKActivityID = 5"},
      {[](Providers& p) { p.properties->Add(kProperty); },
       "INSERT INTO tblAIPropertyData  (AIPropertyID,FKActivityInstanceID,PropertyName,`Value`, "
       "DataType,`Attributes`,`Min`,`Max`,LookupTypeCode,ListAttribute,Relevance) VALUES (42,30,"
       "'Performer','manager',1,0,0.0,0.0,NULL,'L',NULL)"},
      {[](Providers& p) { p.properties->Update(7, kProperty); },
       "UPDATE tblAIPropertyData SET  FKActivityInstanceID = 30 ,PropertyName = 'Performer' ,"
       "`Value` = 'manager' ,DataType = 1 ,`Attributes` = 0 ,`Min` = 0.0 ,`Max` = 0.0 ,"
       "LookupTypeCode = NULL ,ListAttribute = 'L' ,Relevance = NULL WHERE AIPropertyID = 7"},
      {[](Providers& p) { p.properties->Delete(7, 0); },
       "DELETE FROM tblAIPropertyData WHERE AIPropertyID = 7"},
      {[](Providers& p) { p.properties->Delete(7, 30); },
       "DELETE FROM tblAIPropertyData WHERE FKActivityInstanceID = 30"},
      {[](Providers& p) { p.properties->PropertyExist("Per%", 30); },
       "SELECT 1 AS ListCount FROM tblAIPropertyData WHERE EXISTS (SELECT NULL FROM "
       "tblAIPropertyData WHERE FKActivityInstanceID = 30 AND PropertyName LIKE 'Per\\\\%') "
       "LIMIT 1"},
      {[](Providers& p) { p.properties->GetPropertyByID(7); },
       kPropertyHead + kPropertyValues + Join(kPropertyJoin, "INNER") +
           ")  WHERE tblAIPropertyData.AIPropertyID = 7"},
      {[](Providers& p) { p.properties->GetPropertiesForInstance(30); },
       kPropertyHead + kPropertyValues + Join(kPropertyJoin, "LEFT") +
           ") WHERE tblActivityInstance.ActivityInstanceID = 30"},
      {[](Providers& p) { p.properties->Load(""); },
       kPropertyHead + kPropertyValues + Join(kPropertyJoin, "INNER") + ")  "},
      {[](Providers& p) { p.properties->LoadInstanceProperties(5, 30); },
       kPropertyHead + kPropertyValues + Join(kPropertyJoin, "LEFT") +
           ") WHERE tblActivityInstance.ActivityInstanceID = 30 AND "
           "tblActivityPropertyBag.FKActivityID = 5"},
      {[](Providers& p) { p.properties->LoadInstanceProperties(5, -1); },
       kPropertyHead +
           ",NULL AS ActivityInstanceID,NULL AS AIPropertyID,NULL AS `Value`,NULL AS "
           "`Attributes` FROM tblActivityPropertyBag WHERE tblActivityPropertyBag.FKActivityID = "
           "5"},
  });
}

TEST(InstanceDataStatements, EveryOperationNamesItsLocation) {
  const std::vector<std::pair<std::function<void(Providers&)>, std::string>> cases = {
      {[](Providers& p) { p.values->Add(kValue); }, "CProcInstDataDP:Add Function ("},
      {[](Providers& p) { p.values->Update(1, kValue); }, "CProcInstDataDP:Update Function ("},
      {[](Providers& p) { p.values->Delete(1, 0); }, "CProcInstDataDP:Delete Function ("},
      {[](Providers& p) { p.values->ParameterExist("a", 1); },
       "CProcInstDataDP:ParameterExist Function ("},
      {[](Providers& p) { p.values->GetParameterByID(1); },
       "CProcInstDataDP:GetParameterByID Function ("},
      {[](Providers& p) { p.values->GetParameterForProcess(1); },
       "CProcInstDataDP:GetParameterForProcess Function ("},
      {[](Providers& p) { p.values->Load(""); }, "CProcInstDataDP:Load Function ("},
      {[](Providers& p) { p.values->LoadProcessInstanceParams(1, 1); },
       "CProcInstDataDP:LoadProcessInstanceParams Function ("},
      {[](Providers& p) { p.cases->Add(kCase); },
       "CPIReleventDataDP: IParameterValueDP_Add Function ("},
      {[](Providers& p) { p.cases->Update(1, kCase); },
       "CPIReleventDataDP: IParameterValueDP_Update Function ("},
      {[](Providers& p) { p.cases->Delete(1, 1); },
       "CPIReleventDataDP: IParameterValueDP_Delete Function ("},
      {[](Providers& p) { p.cases->GetParameterByID(1); },
       "CPIReleventDataDP:IParameterValueDP_GetParameterByID Function ("},
      {[](Providers& p) { p.cases->GetParameterForEntity(1); },
       "CPIReleventDataDP:IParameterValueDP_GetParameterForEntity Function ("},
      {[](Providers& p) { p.cases->Load(""); },
       "CPIReleventDataDP:IParameterValueDP_Load Function ("},
      {[](Providers& p) { p.tasks->Add(kTask); },
       "CActivityInstanceDataDP:ITaskParamsDP_Add Function ("},
      {[](Providers& p) { p.tasks->Update(1, kTask); },
       "CActivityInstanceDataDP:ITaskParamsDP_Update Function ("},
      {[](Providers& p) { p.tasks->Delete(1, 1); },
       "CActivityInstanceDataDP:ITaskParamsDP_Delete Function ("},
      {[](Providers& p) { p.tasks->GetParameterByID(1); },
       "CActivityInstanceDataDP:ITaskParamsDP_GetParameterByID Function ("},
      {[](Providers& p) { p.tasks->Load(""); },
       "CActivityInstanceDataDP:ITaskParamsDP_Load Function ("},
      {[](Providers& p) { p.tasks->GetParameterForTask(1, 0); },
       "CActivityInstanceDataDP:ITaskParamsDP_GetParameterForTask Function ("},
      {[](Providers& p) { p.tasks->LoadTaskParams(1, 1, 0); },
       "CActivityInstanceDataDP:ITaskParamsDP_LoadTaskParams Function ("},
      {[](Providers& p) { p.tasks->ParameterExist("a", 1, 0); },
       "CActivityInstanceDataDP:ITaskParamsDP_ParameterExist Function ("},
      {[](Providers& p) { p.properties->Add(kProperty); },
       "CAIPropertyDataDP:ITaskPropertyDP_Add Function ("},
      {[](Providers& p) { p.properties->Update(1, kProperty); },
       "CAIPropertyDataDP:ITaskPropertyDP_Update Function ("},
      {[](Providers& p) { p.properties->Delete(1, 0); },
       "CAIPropertyDataDP:ITaskPropertyDP_Delete Function ("},
      {[](Providers& p) { p.properties->GetPropertyByID(1); },
       "CAIPropertyDataDP:ITaskPropertyDP_GetPropertyByID Function ("},
      {[](Providers& p) { p.properties->Load(""); },
       "CAIPropertyDataDP:ITaskPropertyDP_Load Function ("},
      {[](Providers& p) { p.properties->GetPropertiesForInstance(1); },
       "CAIPropertyDataDP:ITaskPropertyDP_GetPropertiesForInstance Function ("},
      {[](Providers& p) { p.properties->LoadInstanceProperties(1, 1); },
       "CAIPropertyDataDP:ITaskPropertyDP_LoadInstanceProperties Function ("},
      {[](Providers& p) { p.properties->PropertyExist("a", 1); },
       "CAIPropertyDataDP:ITaskPropertyDP_PropertyExist Function ("},
  };
  for (const auto& [call, location] : cases) {
    Providers p;
    p.connection->fail_on = "tbl";
    const Error e = orvtest::Raised([&] { call(p); });
    EXPECT_EQ(e.Number(), kErrDatabase) << location;
    // The location, the line of the failed statement and ")" end the trail.
    const auto at = e.Source().rfind(" => \r\n");
    ASSERT_NE(at, std::string::npos) << location;
    const std::string last = e.Source().substr(at + 6);
    EXPECT_TRUE(last.starts_with(location) && last.ends_with(")")) << last;
    EXPECT_EQ(p.connection->depth, 0) << location;
  }
}

TEST(InstanceDataStatements, OnlyAddOpensASessionAndAFailedAddEndsIt) {
  Providers p;
  EXPECT_TRUE(p.values->Add(kValue));
  EXPECT_EQ(p.cases->Add(kCase), Variant(true));
  EXPECT_EQ(p.tasks->Add(kTask), 42);
  EXPECT_EQ(p.properties->Add(kProperty), 42);
  EXPECT_EQ(p.connection->starts, 4);
  p.values->Update(1, kValue);
  p.cases->Delete(1, 5);
  p.tasks->GetParameterForTask(1, 0);
  p.properties->LoadInstanceProperties(-1, 1);
  EXPECT_EQ(p.connection->starts, 4);
  EXPECT_EQ(p.connection->depth, 0);

  // The caller's own session stays open after a failed Add.
  p.connection->StartSession();
  p.connection->fail_on = "INSERT INTO tblPIReleventData";
  EXPECT_EQ(ErrorOf([&] { p.cases->Add(kCase); }), kErrDatabase);
  EXPECT_EQ(p.connection->depth, 1);
}

TEST(InstanceDataStatements, BadInputStopsBeforeAnyStatementOrSession) {
  Providers p;
  NumericLocale c("C");
  FieldArray comma = kValue;
  comma[2] = "12,5";
  FieldArray injected = kCase;
  injected[2] = "1); DELETE FROM tblPIReleventData; --";
  FieldArray bad_type = kTask;
  bad_type[3] = "1 OR 1=1";
  EXPECT_EQ(ErrorOf([&] { p.values->Add(comma); }), kErrTypeMismatch);
  EXPECT_EQ(ErrorOf([&] { p.values->Update(1, comma); }), kErrTypeMismatch);
  EXPECT_EQ(ErrorOf([&] { p.cases->Add(injected); }), kErrTypeMismatch);
  EXPECT_EQ(ErrorOf([&] { p.tasks->Add(bad_type); }), kErrTypeMismatch);
  EXPECT_EQ(ErrorOf([&] { p.values->Add(FieldArray(10)); }), kErrSubscript);
  EXPECT_EQ(ErrorOf([&] { p.cases->Add(FieldArray(13)); }), kErrSubscript);
  EXPECT_EQ(ErrorOf([&] { p.tasks->Add(FieldArray(11)); }), kErrSubscript);
  EXPECT_EQ(ErrorOf([&] { p.properties->Add(FieldArray(10)); }), kErrSubscript);
  EXPECT_EQ(ErrorOf([&] {
              p.properties->Add({30, Null, "", 1, 0, 0, 0, 0, "", "", ""});
            }),
            kErrInvalidUseOfNull);
  EXPECT_TRUE(p.connection->statements.empty());
  EXPECT_EQ(p.connection->starts, 0);
}

// Text column and numeric column of one value, as "text | number".
std::string Columns(const Variant& value, const Variant& data_type) {
  const sql::ValueColumns columns = sql::ValueByType(value, data_type);
  return columns.text + " | " + columns.number;
}

TEST(InstanceDataStatements, ValueRuleFeedsOneOfTwoColumns) {
  NumericLocale c("C");
  EXPECT_EQ(Columns("   ", 2), "NULL | NULL");
  EXPECT_EQ(Columns("", 1), "NULL | NULL");
  EXPECT_EQ(Columns(Null, 2), "NULL | NULL");
  for (int32_t text_like : {1, 6, 7, 8}) {
    EXPECT_EQ(Columns("  it's 12,5 \\ ", text_like), "'it''s 12,5 \\\\' | NULL") << text_like;
  }
  // The text is not cut.
  EXPECT_EQ(Columns(std::string(300, 'x'), 1), "'" + std::string(300, 'x') + "' | NULL");
  EXPECT_EQ(Columns(" 12.5 ", 2), "NULL | 12.5");
  EXPECT_EQ(Columns("-3", 3), "NULL | -3");
  EXPECT_EQ(Columns("1e3", 11), "NULL | 1000");
  EXPECT_EQ(Columns(2.25, 2), "NULL | 2.25");
  EXPECT_EQ(Columns(7, 1), "'7' | NULL");
  EXPECT_EQ(ErrorOf([] { Columns("12,5", 2); }), kErrTypeMismatch);
  EXPECT_EQ(ErrorOf([] { Columns("twelve", 2); }), kErrTypeMismatch);
  EXPECT_EQ(ErrorOf([] { Columns("1e999", 2); }), kErrOverflow);
  EXPECT_EQ(ErrorOf([] { Columns("12", "x"); }), kErrTypeMismatch);
}

TEST(InstanceDataStatements, ValueRuleReadsTheProgramsDecimalComma) {
  NumericLocale comma(NumericLocale::Comma());
  EXPECT_EQ(Columns("12,5", 2), "NULL | 12.5");
  EXPECT_EQ(Columns(" -0,25 ", 4), "NULL | -0.25");
  EXPECT_EQ(Columns("12.5", 2), "NULL | 12.5");  // a point is read in any locale
  EXPECT_EQ(Columns("12,5", 1), "'12,5' | NULL");
  EXPECT_EQ(ErrorOf([] { Columns("1.234,5", 2); }), kErrTypeMismatch);  // no group separators

  // Min and Max, and the value, reach SQL with a point.
  Providers p;
  FieldArray value = kValue;
  value[2] = "12,5";
  value[5] = 0.5;
  p.values->Add(value);
  EXPECT_NE(p.connection->statements.back().find(",0.5,1000.0,1,12.5,"), std::string::npos)
      << p.connection->statements.back();
}

}  // namespace
}  // namespace orvmysql
