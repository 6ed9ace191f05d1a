#include "runtime/CSplitInstanceDP.h"

namespace orvmysql {

namespace {

using dp::As;

constexpr As kLayout[] = {
    As::Long,  // 0 ParentID
    As::Text,  // 1 FKThreadInstanceID
    As::Long,  // 2 FKPathInstanceID
    As::Long,  // 3 FKProcInstanceID
    As::Long,  // 4 State
    As::Long,  // 5 SplitType
};

constexpr dp::Assignment kSet[] = {
    {"ParentID = ", 0},           {" ,FKThreadInstanceID = ", 1},
    {" ,FKPathInstanceID = ", 2}, {" ,FKProcInstanceID = ", 3},
    {" ,`State` = ", 4},          {" ,SplitType = ", 5},
};

constexpr dp::KeyedTable kTable{
    .locations = {.add = "CSplitInstanceDP: ISplitInstanceDP_Add Function (",
                  .update = "CSplitInstanceDP: ISplitInstanceDP_Update Function (",
                  .remove = "CSplitInstanceDP: ISplitInstanceDP_Delete Function (",
                  .by_key = "CSplitInstanceDP:ISplitInstanceDP_GetByID Function (",
                  .by_owner = "CSplitInstanceDP:ISplitInstanceDP_GetForProcess Function (",
                  .load = "CSplitInstanceDP:ISplitInstanceDP_Load Function (",
                  .current_state = "CSplitInstanceDP:ISplitInstanceDP_GetCurrentState Function (",
                  .change_state = "CSplitInstanceDP: ISplitInstanceDP_ChangeState Function ("},
    .connection_on_91 = true,
    .select =
        "SELECT SplitInstanceID,ParentID,FKThreadInstanceID,FKPathInstanceID,FKProcInstanceID,"
        "State,SplitType FROM tblProcSplitInstance ",
    .by_key = " WHERE SplitInstanceID = ",
    .by_owner = " WHERE FKProcInstanceID = ",
    .entity_type_code = -15,
    .insert_head =
        "INSERT INTO tblProcSplitInstance (SplitInstanceID,ParentID,FKThreadInstanceID,"
        "FKPathInstanceID,FKProcInstanceID,`State`,SplitType) VALUES (",
    .add_layout = kLayout,
    .update_head = "UPDATE tblProcSplitInstance SET ",
    .update_layout = kLayout,
    .update_set = kSet,
    .update_where = " WHERE SplitInstanceID = ",
    .delete_one = "DELETE FROM tblProcSplitInstance WHERE SplitInstanceID = ",
    .state_read = "SELECT State FROM tblProcSplitInstance WHERE SplitInstanceID = ",
    .state_set = "UPDATE tblProcSplitInstance SET `State` = ",
    .state_add = "UPDATE tblProcSplitInstance SET `State` = `State` + ",
};

}  // namespace

CSplitInstanceDP::CSplitInstanceDP() : RoutingRowsDP(kTable) {}

}  // namespace orvmysql
