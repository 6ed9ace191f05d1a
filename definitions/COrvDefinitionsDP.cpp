#include "definitions/COrvDefinitionsDP.h"

namespace orvmysql {

namespace {

using dp::As;

constexpr std::string_view kSelect =
    "SELECT ProcessDefID,ProcDefName,ProcdefDescription,AccessLevel,CreatedDate,ModifiedDate,"
    "CreatorID,CreatorType,CreatorName,ProcModifiedByUserID,ProcModifiedByUserType,"
    "ProcModifiedByUserName,Duration,DurationUnit,Timeout,TimeoutUnit,Priority,"
    "ExcludeNonWorkingHours,AclId,MajorVersion,MinorVersion,State,ProcDefTypeMask,Layout,"
    "`Trigger` FROM tblProcessDef ";

// Positions in the order of the INSERT column list (see IOrvDefinitionsDP).
constexpr As kLayout[] = {
    As::Text,            // 0 ProcDefName
    As::LongTextOrNull,  // 1 ProcdefDescription
    As::Long,            // 2 AccessLevel
    As::DateTime,        // 3 CreatedDate
    As::DateTime,        // 4 ModifiedDate
    As::TextOrNull,      // 5 CreatorName
    As::TextOrNull,      // 6 ProcModifiedByUserName
    As::Text,            // 7 CreatorID
    As::TextOrNull,      // 8 CreatorType
    As::TextOrNull,      // 9 ProcModifiedByUserID
    As::TextOrNull,      // 10 ProcModifiedByUserType
    As::Long,            // 11 Duration
    As::Long,            // 12 DurationUnit
    As::Long,            // 13 Priority
    As::Boolean,         // 14 ExcludeNonWorkingHours
    As::Long,            // 15 AclId
    As::Long,            // 16 MajorVersion
    As::Long,            // 17 MinorVersion
    As::Long,            // 18 State
    As::Long,            // 19 Timeout
    As::Long,            // 20 TimeoutUnit
    As::Long,            // 21 ProcDefTypeMask
    As::LongTextOrNull,  // 22 Layout
    As::LongTextOrNull,  // 23 Trigger
};
// LastActivityID, LastSwitchID and LastTransitionID stand between State and
// Timeout in the column list and always start at 0.
constexpr std::size_t kBeforeLastIDs = 19;

constexpr dp::Assignment kSet[] = {
    {" ProcDefName = ", 0},
    {" ,ProcdefDescription = ", 1},
    {" ,AccessLevel = ", 2},
    {" ,CreatedDate = ", 3},
    {" ,ModifiedDate = ", 4},
    {" ,CreatorName = ", 5},
    {" ,ProcModifiedByUserName = ", 6},
    {" ,CreatorID = ", 7},
    {" ,CreatorType = ", 8},
    {" ,ProcModifiedByUserID = ", 9},
    {" ,ProcModifiedByUserType = ", 10},
    {" ,Duration = ", 11},
    {" ,DurationUnit = ", 12},
    {" ,Priority = ", 13},
    {" ,ExcludeNonWorkingHours = ", 14},
    {" ,AclId = ", 15},
    {" ,MajorVersion = ", 16},
    {" ,MinorVersion = ", 17},
    {" ,State = ", 18},
    {" ,Timeout = ", 19},
    {" ,TimeoutUnit = ", 20},
    {" ,ProcDefTypeMask = ", 21},
    {" ,Layout = ", 22},
    {" ,`Trigger` = ", 23},
};

// The cascade of Delete, dependants first: each statement is head + the
// definition's ID + tail.
struct CascadeStep {
  std::string_view head;
  std::string_view tail;
};
constexpr CascadeStep kCascade[] = {
    {"DELETE FROM tblActivityParamBag WHERE FKActivityID IN (SELECT ActivityID FROM "
     "tblActivities WHERE FKProcDefinitionID =",
     ")"},
    {"DELETE FROM tblActivityPropertyBag WHERE FKActivityID IN (SELECT ActivityID FROM "
     "tblActivities WHERE FKProcDefinitionID =",
     ")"},
    {"DELETE FROM tblActivities WHERE FKProcDefinitionID =", ""},
    {"DELETE FROM tblTransitions WHERE FKProcDefinitionID =", ""},
    {"DELETE FROM tblSwitches WHERE FKProcDefinitionID =", ""},
    {"DELETE FROM tblProcessParams WHERE FKProcDefID =", ""},
    {"DELETE FROM tblProcessDef WHERE ProcessDefID = ", ""},
};

}  // namespace

// IOrvDefinitionsDP

bool COrvDefinitionsDP::Delete(int32_t definition_id) {
  return detail::Guard({"COrvDefinitionsDP: IOrvDefinitionsDP_Delete Function (", true}, [&] {
    // Half a definition is worse than none: the cascade commits as a whole.
    return AsOneUnit([&] {
      const std::string id = std::to_string(definition_id);
      for (const CascadeStep& step : kCascade) {
        NonQuery(std::string(step.head) + id + std::string(step.tail));
      }
      return true;
    });
  });
}

bool COrvDefinitionsDP::IsOrvdefinitionInUse(int32_t definition_id) {
  return detail::Guard(
      {"COrvDefinitionsDP: IOrvDefinitionsDP_IsOrvdefinitionInUse Function ("}, [&] {
        return RowExists("tblProcessInstance", "FKProcDefID = " + std::to_string(definition_id));
      });
}

bool COrvDefinitionsDP::IsWorkflowPublished(int32_t definition_id) {
  return detail::Guard({"COrvDefinitionsDP:IOrvDefinitionsDP_IsWorkflowPublished Function ("}, [&] {
    return RowExists("tblProcessDef",
                     "ProcessDefID = " + std::to_string(definition_id) + " AND State = 2");
  });
}

std::shared_ptr<IListIterator> COrvDefinitionsDP::Load(const std::string& filter) {
  return detail::Guard({"COrvDefinitionsDP:IOrvDefinitionsDP_Load Function (", true},
                       [&] { return RowsWithTail(kSelect, filter); });
}

std::shared_ptr<IListIterator> COrvDefinitionsDP::GetProcessDefByID(int32_t definition_id) {
  return detail::Guard({"COrvDefinitionsDP:IOrvDefinitionsDP_GetProcessDefByID Function (", true},
                       [&] { return RowsWhere(kSelect, " WHERE ProcessDefID = ", definition_id); });
}

bool COrvDefinitionsDP::WorkflowDefinitionExist(const std::string& name, int32_t definition_id) {
  return detail::Guard({"COrvDefinitionsDP: IOrvDefinitionsDP_WorkflowDefinitionExist Function ("},
                       [&] {
                         const std::string pattern = dp::LiteralPattern(name);
                         return RowExists("tblProcessDef", "ProcDefName LIKE '" + pattern +
                                                               "' AND ProcessDefID <> " +
                                                               std::to_string(definition_id));
                       });
}

bool COrvDefinitionsDP::Update(int32_t definition_id, const FieldArray& fields) {
  return detail::Guard({"COrvDefinitionsDP: IOrvDefinitionsDP_Update Function (", true}, [&] {
    const auto v = dp::FormatFields(fields, kLayout);
    return NonQuery("UPDATE tblProcessDef SET " + dp::Assignments(kSet, v) +
                    " WHERE ProcessDefID = " + std::to_string(definition_id)) > 0;
  });
}

bool COrvDefinitionsDP::Add(const FieldArray& fields) {
  return detail::Guard({"COrvDefinitionsDP: IOrvDefinitionsDP_Add Function (", true}, [&] {
    const auto v = dp::FormatFields(fields, kLayout);
    InsertWithNewKey(-4, [&](const std::string& key) {
      return "INSERT INTO tblProcessDef "
             " (ProcessDefID,ProcDefName,ProcdefDescription,AccessLevel,CreatedDate,"
             " ModifiedDate, CreatorName,ProcModifiedByUserName, CreatorID,CreatorType, "
             " ProcModifiedByUserID,ProcModifiedByUserType, Duration, DurationUnit, "
             " Priority, ExcludeNonWorkingHours, AclId, MajorVersion, "
             " MinorVersion, State, LastActivityID, LastSwitchID, "
             "LastTransitionID,Timeout,TimeoutUnit,ProcDefTypeMask,Layout,`Trigger`)"
             " VALUES (" +
             key + "," + dp::Joined(v, 0, kBeforeLastIDs) + ",0,0,0," +
             dp::Joined(v, kBeforeLastIDs, v.size()) + ")";
    });
    return true;
  });
}

}  // namespace orvmysql
