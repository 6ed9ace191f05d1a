#include "definitions/CActivitiesDP.h"

#include "access/NumberText.h"
#include "access/SqlValues.h"

namespace orvmysql {

namespace {

using dp::As;

constexpr std::string_view kSelect =
    "SELECT ActivityID,ActivityName,Description,ActivityType,StartTime,StartTimeUnit,Duration,"
    "DurationUnit,Timeout,TimeoutUnit,FKProcDefinitionID,Priority,Subject,Message,"
    "ActivityProcDefID,ActivityTypeMask,ClassID FROM tblActivities ";

// Positions in the order of the INSERT column list (see IActivitiesDP).
constexpr As kLayout[] = {
    As::Text,            // 0 ActivityName
    As::LongTextOrNull,  // 1 Description
    As::Long,            // 2 ActivityType
    As::Long,            // 3 StartTime
    As::Long,            // 4 StartTimeUnit
    As::Long,            // 5 Duration
    As::Long,            // 6 DurationUnit
    As::Long,            // 7 Timeout
    As::Long,            // 8 TimeoutUnit
    As::Long,            // 9 FKProcDefinitionID
    As::Long,            // 10 Priority
    As::TextOrNull,      // 11 Subject
    As::LongTextOrNull,  // 12 Message
    As::Text,            // 13 ActivityProcDefID
    As::Long,            // 14 ActivityTypeMask
    As::Text,            // 15 ClassID
};

// Update leaves the type, the type mask, the class, the definition and the
// identifier of an activity as Add wrote them.
constexpr dp::Assignment kSet[] = {
    {" `ActivityName` = ", 0},  {",`Description` = ", 1}, {",`StartTime` = ", 3},
    {",`StartTimeUnit` = ", 4}, {",`Duration` = ", 5},    {",`DurationUnit` = ", 6},
    {",`Timeout` = ", 7},       {",`TimeoutUnit` = ", 8}, {",`Priority` = ", 10},
    {",`Subject` = ", 11},      {",`Message` = ", 12},
};

}  // namespace

// IActivitiesDP

bool CActivitiesDP::Delete(int32_t /*definition_id*/, const std::string& activity_id) {
  return detail::Guard({"CActivitiesDP: IActivitiesDP_Delete Function (", true}, [&] {
    // The ID arrives as text and is written as it is given, once it is known
    // to be a whole number.
    if (!IsDecimalNumber(activity_id, true)) {
      ThrowRuntimeError(kErrTypeMismatch, "the activity id '" + activity_id + "' is not a number");
    }
    const std::string& id = activity_id;
    return AsOneUnit([&] {
      NonQuery("DELETE FROM tblActivityParamBag WHERE FKActivityID = " + id);
      NonQuery("DELETE FROM tblActivityPropertyBag WHERE FKActivityID = " + id);
      NonQuery("DELETE FROM tblActivities WHERE ActivityID = " + id);
      return true;
    });
  });
}

std::shared_ptr<IListIterator> CActivitiesDP::GetActivitiesForProcess(int32_t definition_id) {
  return detail::Guard(
      {"CActivitiesDP:IActivitiesDP_GetActivitiesForProcess Function (", true},
      [&] { return RowsWhere(kSelect, " WHERE FKProcDefinitionID = ", definition_id); });
}

std::shared_ptr<IListIterator> CActivitiesDP::GetActivityByID(int32_t activity_id) {
  return detail::Guard({"CActivitiesDP:IActivitiesDP_GetActivityByID Function (", true},
                       [&] { return RowsWhere(kSelect, " WHERE ActivityID = ", activity_id); });
}

std::shared_ptr<IListIterator> CActivitiesDP::Load(const std::string& filter) {
  return detail::Guard({"CActivitiesDP: IActivitiesDP_Load Function (", true},
                       [&] { return RowsWithTail(kSelect, filter); });
}

bool CActivitiesDP::ActivityExist(const std::string& name, int32_t definition_id,
                                  int32_t activity_id) {
  return detail::Guard({"CActivitiesDP: IActivitiesDP_ActivityExist Function ("}, [&] {
    const std::string pattern = dp::LiteralPattern(name);
    return RowExists("tblActivities", "FKProcDefinitionID = " + std::to_string(definition_id) +
                                          " AND ActivityID <> " + std::to_string(activity_id) +
                                          " AND ActivityName LIKE '" + pattern + "'");
  });
}

bool CActivitiesDP::Add(const FieldArray& fields) {
  return detail::Guard({"CActivitiesDP: IActivitiesDP_Add Function (", true}, [&] {
    const auto v = dp::FormatFields(fields, kLayout);
    InsertWithNewKey(-7, [&](const std::string& key) {
      return "INSERT INTO tblActivities "
             " (`ActivityID`,`ActivityName`,`Description`,`ActivityType`,`StartTime`,"
             "`StartTimeUnit`,`Duration`,`DurationUnit`,`Timeout`,`TimeoutUnit`,"
             "`FKProcDefinitionID`,`Priority`,`Subject`,`Message`,`ActivityProcDefID`,"
             "`ActivityTypeMask`,ClassID) VALUES (" +
             key + "," + dp::Joined(v, 0, v.size()) + ")";
    });
    return true;
  });
}

bool CActivitiesDP::Update(int32_t definition_id, const std::string& activity_identifier,
                           const FieldArray& fields) {
  return detail::Guard({"CActivitiesDP: IActivitiesDP_Update Function (", true}, [&] {
    const auto v = dp::FormatFields(fields, kLayout);
    // The identifier is compared by LIKE, so it acts as a pattern.
    return NonQuery(" UPDATE tblActivities SET " + dp::Assignments(kSet, v) +
                    " WHERE FKProcDefinitionID = " + std::to_string(definition_id) +
                    " AND ActivityProcDefID LIKE " + sql::Text(Variant(activity_identifier))) > 0;
  });
}

}  // namespace orvmysql
