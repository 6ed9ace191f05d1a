#include "runtime/CActivityInstanceDP.h"

#include <algorithm>
#include <array>
#include <iterator>

#include "query/EntityFilters.h"
#include "runtime/StateStamps.h"

namespace orvmysql {

namespace {

using dp::As;

constexpr As kAddLayout[] = {
    As::Long,            // 0 State
    As::DateTime,        // 1 ScheduledStartTime
    As::DateTime,        // 2 ScheduledTimeout (date only in Update)
    As::Text,            // 3 DisplayName
    As::Long,            // 4 FKActivityID
    As::Long,            // 5 FKProcInstanceID
    As::Long,            // 6 ActivityHandlerType
    As::Long,            // 7 ActivityType
    As::TextOrNull,      // 8 Max
    As::TextOrNull,      // 9 Min
    As::TextOrNull,      // 10 Threshold
    As::Long,            // 11 Trigger
    As::LongTextOrNull,  // 12 ExtendedAttributes
    As::Text,            // 13 ActivityInstanceIndex
    As::LongTextOrNull,  // 14 ResourceSet
    As::Long,            // 15 FKSplitInstanceID
    As::Long,            // 16 FKPathInstanceID
    As::Text,            // 17 FKThreadInstanceID
    As::Text,            // 18 FKActivityProcDefID
    As::DateTime,        // 19 ScheduledEndTime
    As::DateTime,        // 20 CreatedOn
    As::DateTime,        // 21 StartedOn
    As::DateTime,        // 22 FinishedOn
    As::Long,            // 23 Priority
    As::LongTextOrNull,  // 24 ActivityNote
};

constexpr auto kUpdateLayout = [] {
  std::array<As, std::size(kAddLayout)> layout{};
  std::copy(std::begin(kAddLayout), std::end(kAddLayout), layout.begin());
  layout[2] = As::DateOnly;
  return layout;
}();

// Positions in the order of the column list.
constexpr std::size_t kInsertOrder[] = {0,  1,  2,  3,  4,  5,  7,  9,  8,  10, 13, 6, 11,
                                        12, 14, 15, 16, 17, 18, 19, 20, 21, 22, 23, 24};

constexpr dp::Assignment kSet[] = {
    {" `State` = ", 0},
    {",`ScheduledStartTime` = ", 1},
    {",`ScheduledTimeout` = ", 2},
    {",`DisplayName` = ", 3},
    {",`FKActivityID` = ", 4},
    {",`FKProcInstanceID` = ", 5},
    {",`ActivityType` = ", 7},
    {",`Min` = ", 9},
    {",`Max` = ", 8},
    {",`Threshold` = ", 10},
    {",`ActivityInstanceIndex` = ", 13},
    {",`ActivityHandlerType` = ", 6},
    {",`Trigger` = ", 11},
    {",`ExtendedAttributes` = ", 12},
    {",`ResourceSet` = ", 14},
    {",`FKSplitInstanceID` = ", 15},
    {",`FKPathInstanceID` = ", 16},
    {",`FKThreadInstanceID` = ", 17},
    {",`FKActivityProcDefID` = ", 18},
    {",`ScheduledEndTime` = ", 19},
    {",`CreatedOn` = ", 20},
    {",`StartedOn` = ", 21},
    {",`FinishedOn` = ", 22},
    {",`Priority` = ", 23},
    {",`ActivityNote` = ", 24},
};

constexpr dp::StampRule kStamps[] = {
    {.current_bits = runtime::kOpen, .value_bits = runtime::kStart, .stamps = runtime::kStartedOn},
    {.current_bits = runtime::kClosed, .stamps = runtime::kFinishedOn},
};

constexpr dp::KeyedTable kTable{
    .locations = {.add = "CActivityInstanceDP: IActivityInstanceDP_Add Function (",
                  .update = "CActivityInstanceDP: IActivityInstanceDP_Update Function (",
                  .remove = "CActivityInstanceDP: IActivityInstanceDP_Delete Function (",
                  .by_key = "CActivityInstanceDP:IActivityInstanceDP_GetTaskByID Function (",
                  .load = "CActivityInstanceDP:IActivityInstanceDP_Load Function (",
                  .current_state =
                      "CActivityInstanceDP:IActivityInstanceDP_GetCurrentState Function (",
                  .change_state =
                      "CActivityInstanceDP: IActivityInstanceDP_ChangeAIState Function ("},
    .connection_on_91 = true,
    .select =
        "SELECT tblActivityInstance.*,tblActivities.ActivityName  FROM tblActivityInstance "
        "INNER JOIN tblActivities ON tblActivityInstance.FKActivityID = "
        "tblActivities.ActivityID ",
    .by_key = " WHERE ActivityInstanceID = ",
    .entity_type_code = -14,
    .insert_head =
        "INSERT INTO tblActivityInstance "
        " (ActivityInstanceID,`State`,`ScheduledStartTime`,`ScheduledTimeout`,`DisplayName`,"
        "`FKActivityID`,`FKProcInstanceID`,`ActivityType`,`Min`,`Max`,`Threshold`,"
        "`ActivityInstanceIndex`,`ActivityHandlerType`,`Trigger`,`ExtendedAttributes`,"
        "`ResourceSet`,FKSplitInstanceID,FKPathInstanceID,FKThreadInstanceID,FKActivityProcDefID,"
        "ScheduledEndTime,CreatedOn,StartedOn,FinishedOn,Priority,ActivityNote) VALUES (",
    .add_layout = kAddLayout,
    .insert_order = kInsertOrder,
    .update_head = "UPDATE tblActivityInstance SET ",
    .update_layout = kUpdateLayout,
    .update_set = kSet,
    .update_where = " WHERE ActivityInstanceID = ",
    .delete_one = "DELETE FROM tblActivityInstance WHERE ActivityInstanceID = ",
    .delete_in_session = true,
    .filter = &ParseActivityInstanceFilter,
    .state_read = "SELECT State FROM tblActivityInstance WHERE ActivityInstanceID = ",
    .state_set = "UPDATE tblActivityInstance SET `State` = ",
    .state_add = "UPDATE tblActivityInstance SET `State` = `State` + ",
    .stamp_rules = kStamps,
    .state_note = " ,ActivityNote = ",
};

}  // namespace

// IActivityInstanceDP

bool CActivityInstanceDP::Add(const FieldArray& fields) {
  return AddRow(kTable, fields) != -1;
}

bool CActivityInstanceDP::Update(int32_t activity_instance_id, const FieldArray& fields) {
  UpdateRow(kTable, activity_instance_id, fields);
  return true;
}

bool CActivityInstanceDP::Delete(int32_t activity_instance_id) {
  DeleteRows(kTable, activity_instance_id, 0);
  return true;
}

int32_t CActivityInstanceDP::GetCurrentState(int32_t activity_instance_id) {
  return CurrentState(kTable, activity_instance_id);
}

std::shared_ptr<IListIterator> CActivityInstanceDP::GetTaskByID(int32_t activity_instance_id) {
  return RowsByKey(kTable, activity_instance_id);
}

std::shared_ptr<IListIterator> CActivityInstanceDP::Load(const std::string& filter) {
  return RowsLoad(kTable, filter);
}

bool CActivityInstanceDP::ChangeAIState(int32_t activity_instance_id, int32_t current,
                                        int32_t value, bool add, const std::string& note) {
  return ChangeStateWord(kTable, activity_instance_id, value, add, current, note);
}

}  // namespace orvmysql
