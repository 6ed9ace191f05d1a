#include "runtime/CProcInstanceDP.h"

#include "access/General.h"
#include "query/EntityFilters.h"
#include "runtime/StateStamps.h"

namespace orvmysql {

namespace {

using dp::As;

constexpr As kLayout[] = {
    As::Text,            // 0 ProcInstanceName
    As::Long,            // 1 FKProcDefID
    As::DateTime,        // 2 ScheduledStartTime
    As::TextOrNull,      // 3 CreatorID
    As::DateTime,        // 4 ScheduledEndTime
    As::Long,            // 5 State
    As::Long,            // 6 Priority
    As::DateOnly,        // 7 ScheduledTimeOut
    As::Text,            // 8 Guid
    As::Long,            // 9 FKParentProcInstanceID
    As::TextOrNull,      // 10 CreatorType
    As::TextOrNull,      // 11 CreatorName
    As::DateTime,        // 12 CreatedOn
    As::DateTime,        // 13 StartedOn
    As::DateTime,        // 14 FinishedOn
    As::LongTextOrNull,  // 15 Note
};
constexpr std::size_t kParent = 9;

// The VALUES list after the key: these positions, the TreeID, then the rest.
constexpr std::size_t kBeforeTree[] = {0, 1, 2, 3, 10, 11, 4, 5, 6, 7, 8, 9};
constexpr std::size_t kAfterTree[] = {12, 13, 14, 15};

constexpr dp::Assignment kSet[] = {
    {" `ProcInstanceName` = ", 0},
    {" ,`FKProcDefID` = ", 1},
    {" ,`ScheduledStartTime` = ", 2},
    {" ,`CreatorID` = ", 3},
    {" ,`CreatorType` = ", 10},
    {" ,`CreatorName` = ", 11},
    {" ,`ScheduledEndTime` = ", 4},
    {" ,`State` = ", 5},
    {" ,`Priority` = ", 6},
    {" ,`ScheduledTimeOut` = ", 7},
    {" ,`Guid` = ", 8},
    {" ,FKParentProcInstanceID = ", 9},
    {" ,CreatedOn = ", 12},
    {" ,StartedOn = ", 13},
    {" ,FinishedOn = ", 14},
    {" ,`Note` = ", 15},
};

constexpr dp::StampRule kStamps[] = {
    {.current_bits = runtime::kOpen, .value_bits = runtime::kStart, .stamps = runtime::kStartedOn},
};

constexpr dp::KeyedTable kTable{
    .locations = {.add = "CProcInstanceDP: IProcInstanceDP_Add Function (",
                  .update = "CProcInstanceDP: IProcInstanceDP_Update Function (",
                  .remove = "CProcInstanceDP: IProcInstanceDP_Delete Function (",
                  .by_key = "CProcInstanceDP:IProcInstanceDP_GetProcessByID Function (",
                  .load = "CProcInstanceDP:IProcInstanceDP_Load Function (",
                  .current_state = "CProcInstanceDP:IProcInstanceDP_GetCurrentState Function (",
                  .change_state = "CProcInstanceDP: IProcInstanceDP_ChangeWIState Function ("},
    .connection_on_91 = true,
    .select =
        "SELECT ProcInstanceID , ProcInstanceName, FKProcDefID, ScheduledStartTime, "
        "ScheduledEndTime, ScheduledTimeOut, CreatorID, CreatorType, CreatorName, "
        "State,Priority, `GUID`, FKParentProcInstanceID, CreatedOn, StartedOn, "
        "FinishedOn,`Note` FROM tblProcessInstance ",
    .by_key = " WHERE ProcInstanceID = ",
    .entity_type_code = -11,
    .insert_head =
        "INSERT INTO tblProcessInstance "
        " (ProcInstanceID,`ProcInstanceName`,`FKProcDefID`,`ScheduledStartTime`,"
        "`CreatorID`,`CreatorType`,`CreatorName`,`ScheduledEndTime`,`State`,"
        "`Priority`,`ScheduledTimeOut`,`Guid`,FKParentProcInstanceID,TreeID,CreatedOn,"
        "StartedOn,FinishedOn,`Note`) VALUES (",
    .add_layout = kLayout,
    .update_head = "UPDATE tblProcessInstance SET ",
    .update_layout = kLayout,
    .update_set = kSet,
    .update_where = " WHERE ProcInstanceID = ",
    .delete_one = "DELETE FROM tblProcessInstance WHERE ProcInstanceID = ",
    .filter = &ParseProcInstanceFilter,
    .state_read = "SELECT State FROM tblProcessInstance WHERE ProcInstanceID = ",
    .state_set = "UPDATE tblProcessInstance SET `State` = ",
    .state_add = "UPDATE tblProcessInstance SET `State` = `State` + ",
    .stamp_rules = kStamps,
    .state_in_session = true,
};

}  // namespace

std::string CProcInstanceDP::TreeLiteral(int32_t parent_id) {
  if (parent_id <= 0) return "'" + GetGUID() + "'";
  // The parent's TreeID, quoted. A missing parent (or one without a tree)
  // leaves the place empty, so that the INSERT fails rather than join every
  // orphan into one tree.
  const std::string tree =
      GetQuotedString(Scalar("SELECT TreeID FROM tblProcessInstance WHERE ProcInstanceID = " +
                                 std::to_string(parent_id),
                             ""),
                      true);
  return tree.empty() ? tree : "'" + tree + "'";
}

// IProcInstanceDP

bool CProcInstanceDP::Add(const FieldArray& fields) {
  return detail::Guard({kTable.locations.add, true}, [&] {
    const auto v = dp::FormatFields(fields, kLayout);
    const std::string tree = TreeLiteral(fields[kParent].ToLong());
    InsertWithNewKey(kTable.entity_type_code, [&](const std::string& key) {
      return std::string(kTable.insert_head) + key + "," + dp::Joined(v, kBeforeTree) + "," + tree +
             "," + dp::Joined(v, kAfterTree) + ")";
    });
    return true;
  });
}

bool CProcInstanceDP::Delete(int32_t proc_instance_id) {
  DeleteRows(kTable, proc_instance_id, 0);
  return true;
}

int32_t CProcInstanceDP::GetCurrentState(int32_t proc_instance_id) {
  return CurrentState(kTable, proc_instance_id);
}

std::shared_ptr<IListIterator> CProcInstanceDP::GetProcessByID(int32_t proc_instance_id) {
  return RowsByKey(kTable, proc_instance_id);
}

std::shared_ptr<IListIterator> CProcInstanceDP::Load(const std::string& filter) {
  return RowsLoad(kTable, filter);
}

bool CProcInstanceDP::Update(int32_t proc_instance_id, const FieldArray& fields) {
  UpdateRow(kTable, proc_instance_id, fields);
  return true;
}

bool CProcInstanceDP::ChangeWIState(int32_t proc_instance_id, int32_t current, int32_t value,
                                    bool add) {
  return ChangeStateWord(kTable, proc_instance_id, value, add, current);
}

}  // namespace orvmysql
