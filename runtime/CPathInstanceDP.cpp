#include "runtime/CPathInstanceDP.h"

namespace orvmysql {

namespace {

using dp::As;

constexpr As kLayout[] = {
    As::Long,  // 0 FKSplitInstanceID
    As::Long,  // 1 FKProcInstanceID
    As::Long,  // 2 State
};

constexpr dp::Assignment kSet[] = {
    {"FKSplitInstanceID = ", 0},
    {" ,FKProcInstanceID = ", 1},
    {" ,`State` = ", 2},
};

constexpr dp::KeyedTable kTable{
    .locations = {.add = "CPathInstanceDP: IPathInstanceDP_Add Function (",
                  .update = "CPathInstanceDP: IPathInstanceDP_Update Function (",
                  .remove = "CPathInstanceDP: IPathInstanceDP_Delete Function (",
                  .by_key = "CPathInstanceDP:IPathInstanceDP_GetByID Function (",
                  .by_owner = "CPathInstanceDP:IPathInstanceDP_GetForProcess Function (",
                  .load = "CPathInstanceDP:IPathInstanceDP_Load Function (",
                  .current_state = "CPathInstanceDP:IPathInstanceDP_GetCurrentState Function (",
                  .change_state = "CPathInstanceDP: IPathInstanceDP_ChangeState Function ("},
    .connection_on_91 = true,
    .select = "SELECT PathID,FKSplitInstanceID,FKProcInstanceID,State FROM tblProcPathInstance ",
    .by_key = " WHERE PathID = ",
    .by_owner = " WHERE FKProcInstanceID = ",
    .entity_type_code = -16,
    .insert_head =
        "INSERT INTO tblProcPathInstance (PathID,FKSplitInstanceID,FKProcInstanceID,`State`) "
        "VALUES (",
    .add_layout = kLayout,
    .update_head = "UPDATE tblProcPathInstance SET ",
    .update_layout = kLayout,
    .update_set = kSet,
    .update_where = " WHERE PathID = ",
    .delete_one = "DELETE FROM tblProcPathInstance WHERE PathID = ",
    .state_read = "SELECT State FROM tblProcPathInstance WHERE PathID = ",
    .state_set = "UPDATE tblProcPathInstance SET `State` = ",
    .state_add = "UPDATE tblProcPathInstance SET `State` = `State` + ",
};

constexpr std::string_view kBySplit = " WHERE FKSplitInstanceID = ";

// A path is open while its State word carries the open flag 0x4000000.
constexpr std::string_view kCountOpen =
    "SELECT COUNT(*) FROM tblProcPathInstance WHERE (`State` & 67108864) = 67108864 "
    "AND FKSplitInstanceID = ";

}  // namespace

CPathInstanceDP::CPathInstanceDP() : RoutingRowsDP(kTable) {}

// IPathInstanceDP

std::shared_ptr<IListIterator> CPathInstanceDP::GetPathsForSplit(int32_t split_id) {
  return detail::Guard({"CPathInstanceDP:IPathInstanceDP_GetPathsForSplit Function (", true},
                       [&] { return RowsWhere(kTable.select, kBySplit, split_id); });
}

int32_t CPathInstanceDP::GetOpenPathCount(int32_t split_id) {
  return detail::Guard({"CPathInstanceDP:IPathInstanceDP_GetOpenPathCount Function (", true}, [&] {
    return Variant(Scalar(std::string(kCountOpen) + std::to_string(split_id), "0")).ToLong();
  });
}

}  // namespace orvmysql
