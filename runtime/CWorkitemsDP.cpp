#include "runtime/CWorkitemsDP.h"

#include "query/EntityFilters.h"
#include "runtime/StateStamps.h"

namespace orvmysql {

namespace {

using dp::As;

constexpr As kLayout[] = {
    As::Long,            // 0 State
    As::DateTime,        // 1 CreatedOn
    As::DateTime,        // 2 FinishedOn
    As::DateTime,        // 3 AcknowledgedOn
    As::TextOrNull,      // 4 ResourceID
    As::TextOrNull,      // 5 ResourceType
    As::TextOrNull,      // 6 ResourceName
    As::TextOrNull,      // 7 Subject
    As::LongTextOrNull,  // 8 Note
    As::Long,            // 9 FKActivityInstanceID
    As::Long,            // 10 FKProcInstanceID
    As::Long,            // 11 TaskIndex
    As::DateTime,        // 12 StartedOn
    As::Long,            // 13 WorkitemActivityInstanceType
    As::DateTime,        // 14 ScheduledStartTime
    As::DateTime,        // 15 ScheduledEndTime
    As::DateTime,        // 16 ScheduledTimeout
    As::Long,            // 17 Priority
    As::Long,            // 18 DisplayMask
};

// Positions in the order of the column list.
constexpr std::size_t kInsertOrder[] = {4, 5, 6,  7,  8,  0,  9,  13, 10, 3,
                                        2, 1, 12, 11, 14, 15, 16, 17, 18};

constexpr dp::Assignment kSet[] = {
    {" `ResourceID` = ", 4},
    {" ,`ResourceType` = ", 5},
    {" ,`ResourceName` = ", 6},
    {" ,`Subject` = ", 7},
    {" ,`Note` = ", 8},
    {" ,`State` = ", 0},
    {" ,`FKActivityInstanceID` = ", 9},
    {" ,`WorkitemActivityInstanceType` = ", 13},
    {" ,`FKProcInstanceID` = ", 10},
    {" ,`AcknowledgedOn` = ", 3},
    {" ,`FinishedOn` = ", 2},
    {" ,`CreatedOn` = ", 1},
    {" ,`StartedOn` = ", 12},
    {" ,`TaskIndex` = ", 11},
    {" ,`ScheduledStartTime` = ", 14},
    {" ,`ScheduledEndTime` = ", 15},
    {" ,`ScheduledTimeout` = ", 16},
    {" ,`Priority` = ", 17},
    {" ,`DisplayMask` = ", 18},
};

// Starting stamps the start and the acknowledgement at once.
constexpr std::string_view kStartedAndAcknowledged[] = {" ,StartedOn = ", " ,AcknowledgedOn = "};

constexpr dp::StampRule kStamps[] = {
    {.current_not_zero = true, .value_bits = runtime::kStart, .stamps = kStartedAndAcknowledged},
    {.current_bits = runtime::kClosed, .stamps = runtime::kFinishedOn},
};

constexpr dp::KeyedTable kTable{
    .locations = {.add = "CWorkitemsDP: IWorkitemsDP_Add Function (",
                  .update = "CWorkitemsDP: IWorkitemsDP_Update Function (",
                  .remove = "CWorkitemsDP: IWorkitemsDP_Delete Function (",
                  .by_key = "CWorkitemsDP:IWorkitemsDP_GetWorkItemByID Function (",
                  .by_owner = "CWorkitemsDP:IWorkitemsDP_GetWorkItemsForATask Function (",
                  .load = "CWorkitemsDP:IWorkitemsDP_Load Function (",
                  .current_state = "CWorkitemsDP:IWorkitemsDP_GetCurrentState Function (",
                  .change_state = "CWorkitemsDP: IWorkitemsDP_ChangeWorkitemState Function ("},
    .connection_on_91 = true,
    .select =
        "SELECT WorkitemID,ResourceID,ResourceType,resourceName,Subject,Note,"
        "tblWorkitems.State,FKActivityInstanceID,WorkitemActivityInstanceType,"
        "tblWorkitems.FKProcInstanceID,AcknowledgedOn,tblWorkitems.FinishedOn,"
        "tblWorkitems.CreatedOn,tblWorkitems.StartedOn,TaskIndex,tblWorkitems.Priority,"
        "tblWorkitems.ScheduledStartTime,tblWorkitems.ScheduledEndTime,"
        "tblWorkitems.ScheduledTimeout,tblWorkitems.DisplayMask,"
        "tblActivityInstance.FKActivityID FROM tblWorkitems INNER JOIN tblActivityInstance "
        "ON tblWorkitems.FKActivityInstanceID = tblActivityInstance.ActivityInstanceID ",
    .by_key = " WHERE WorkitemID = ",
    .by_owner = " WHERE FKActivityInstanceID = ",
    .entity_type_code = -10,
    .insert_head =
        " INSERT INTO tblWorkitems "
        " (WorkitemID,`ResourceID`,`ResourceType`,`ResourceName`,`Subject`,`Note`,`State`,"
        "`FKActivityInstanceID`,WorkitemActivityInstanceType,`FKProcInstanceID`,`AcknowledgedOn`,"
        "`FinishedOn`,`Createdon`,`StartedOn`,`TaskIndex`,ScheduledStartTime,ScheduledEndTime,"
        "ScheduledTimeout,`Priority`,DisplayMask) VALUES (",
    .add_layout = kLayout,
    .insert_order = kInsertOrder,
    .insert_separator = ", ",
    .update_head = " UPDATE tblWorkitems SET ",
    .update_layout = kLayout,
    .update_set = kSet,
    .update_where = " WHERE WorkitemID = ",
    .delete_one = "DELETE FROM tblWorkitems WHERE WorkitemID = ",
    .filter = &ParseWorkitemFilter,
    .filter_gives_statement = true,
    .state_read = "SELECT State FROM tblWorkitems WHERE WorkitemID = ",
    .state_set = "UPDATE tblWorkitems SET `State` = ",
    .state_add = "UPDATE tblWorkitems SET `State` = `State` + ",
    .stamp_rules = kStamps,
};

}  // namespace

// IWorkitemsDP

bool CWorkitemsDP::Add(const FieldArray& fields) {
  return AddRow(kTable, fields) != -1;
}

bool CWorkitemsDP::Update(int32_t workitem_id, const FieldArray& fields) {
  UpdateRow(kTable, workitem_id, fields);
  return true;
}

bool CWorkitemsDP::Delete(int32_t workitem_id) {
  DeleteRows(kTable, workitem_id, 0);
  return true;
}

bool CWorkitemsDP::ChangeWorkitemState(int32_t workitem_id, int32_t current, int32_t value,
                                       bool add) {
  return ChangeStateWord(kTable, workitem_id, value, add, current);
}

int32_t CWorkitemsDP::GetCurrentState(int32_t workitem_id) {
  return CurrentState(kTable, workitem_id);
}

std::shared_ptr<IListIterator> CWorkitemsDP::GetWorkItemByID(int32_t workitem_id) {
  return RowsByKey(kTable, workitem_id);
}

std::shared_ptr<IListIterator> CWorkitemsDP::GetWorkItemsForAProcess(int32_t proc_instance_id) {
  // Qualified: both joined tables have FKProcInstanceID.
  return detail::Guard({"CWorkitemsDP:IWorkitemsDP_GetWorkItemsForAProcess Function (", true}, [&] {
    return RowsWhere(kTable.select, " WHERE tblWorkitems.FKProcInstanceID = ", proc_instance_id);
  });
}

std::shared_ptr<IListIterator> CWorkitemsDP::GetWorkItemsForATask(int32_t activity_instance_id) {
  return RowsByOwner(kTable, activity_instance_id);
}

std::shared_ptr<IListIterator> CWorkitemsDP::Load(const std::string& filter) {
  return RowsLoad(kTable, filter);
}

}  // namespace orvmysql
