#include "definitions/CTransitionsDP.h"

namespace orvmysql {

namespace {

using dp::As;

constexpr As kLayout[] = {
    As::Long,            // 0 FKFromNodeID
    As::Long,            // 1 FromNodeType
    As::Long,            // 2 FKToNodeID
    As::Long,            // 3 ToNodeType
    As::LongTextOrNull,  // 4 TransitionCondition
    As::Long,            // 5 FKProcDefinitionID
    As::Text,            // 6 TransitionProcDefID
};

constexpr dp::Assignment kSet[] = {
    {"FKFromNodeID = ", 0},          {" ,FromNodeType = ", 1},
    {" ,FKToNodeID = ", 2},          {" ,ToNodeType = ", 3},
    {" ,TransitionCondition = ", 4}, {" ,FKProcDefinitionID = ", 5},
    {" ,TransitionProcDefID = ", 6},
};

constexpr dp::KeyedTable kTable{
    .locations = {.add = "CTransitionsDP: ITransitionsDP_Add Function (",
                  .update = "CTransitionsDP: ITransitionsDP_Update Function (",
                  .remove = "CTransitionsDP: ITransitionsDP_Delete Function (",
                  .by_key = "CTransitionsDP:ITransitionsDP_GetByID Function (",
                  .by_owner = "CTransitionsDP:ITransitionsDP_GetForProcess Function (",
                  .load = "CTransitionsDP:ITransitionsDP_Load Function ("},
    .connection_on_91 = true,
    .select =
        "SELECT TransitionID,FKFromNodeID,FromNodeType,FKToNodeID,ToNodeType,"
        "TransitionCondition,FKProcDefinitionID,TransitionProcDefID FROM tblTransitions ",
    .by_key = " WHERE TransitionID = ",
    .by_owner = " WHERE FKProcDefinitionID = ",
    .entity_type_code = -5,
    .insert_head =
        "INSERT INTO tblTransitions (TransitionID,FKFromNodeID,FromNodeType,FKToNodeID,"
        "ToNodeType,TransitionCondition,FKProcDefinitionID,TransitionProcDefID) VALUES (",
    .add_layout = kLayout,
    .update_head = "UPDATE tblTransitions SET ",
    .update_layout = kLayout,
    .update_set = kSet,
    .update_where = " WHERE TransitionID = ",
    .delete_one = "DELETE FROM tblTransitions WHERE TransitionID = ",
    .delete_all = "DELETE FROM tblTransitions WHERE FKProcDefinitionID = ",
};

}  // namespace

CTransitionsDP::CTransitionsDP() : GraphRowsDP(kTable) {}

}  // namespace orvmysql
