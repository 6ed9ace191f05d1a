#include "definitions/CSwitchesDP.h"

namespace orvmysql {

namespace {

using dp::As;

constexpr As kLayout[] = {
    As::Long,        // 0 SwitchType
    As::TextOrNull,  // 1 DisplayName
    As::Long,        // 2 FKProcDefinitionID
    As::Text,        // 3 SwitchProcDefID
};

constexpr dp::Assignment kSet[] = {
    {"SwitchType = ", 0},
    {" ,DisplayName = ", 1},
    {" ,FKProcDefinitionID = ", 2},
    {" ,SwitchProcDefID = ", 3},
};

constexpr dp::KeyedTable kTable{
    .locations = {.add = "CSwitchesDP: ISwitchesDP_Add Function (",
                  .update = "CSwitchesDP: ISwitchesDP_Update Function (",
                  .remove = "CSwitchesDP: ISwitchesDP_Delete Function (",
                  .by_key = "CSwitchesDP:ISwitchesDP_GetByID Function (",
                  .by_owner = "CSwitchesDP:ISwitchesDP_GetForProcess Function (",
                  .load = "CSwitchesDP:ISwitchesDP_Load Function ("},
    .connection_on_91 = true,
    .select =
        "SELECT SwitchID,SwitchType,DisplayName,FKProcDefinitionID,SwitchProcDefID "
        "FROM tblSwitches ",
    .by_key = " WHERE SwitchID = ",
    .by_owner = " WHERE FKProcDefinitionID = ",
    .entity_type_code = -6,
    .insert_head =
        "INSERT INTO tblSwitches (SwitchID,SwitchType,DisplayName,FKProcDefinitionID,"
        "SwitchProcDefID) VALUES (",
    .add_layout = kLayout,
    .update_head = "UPDATE tblSwitches SET ",
    .update_layout = kLayout,
    .update_set = kSet,
    .update_where = " WHERE SwitchID = ",
    .delete_one = "DELETE FROM tblSwitches WHERE SwitchID = ",
    .delete_all = "DELETE FROM tblSwitches WHERE FKProcDefinitionID = ",
};

}  // namespace

CSwitchesDP::CSwitchesDP() : GraphRowsDP(kTable) {}

}  // namespace orvmysql
