#include "definitions/CTransitionsDP.h"

namespace orvmysql {

namespace {

using defs::As;

constexpr As kLayout[] = {
    As::Long,            // 0 FKFromNodeID
    As::Long,            // 1 FromNodeType
    As::Long,            // 2 FKToNodeID
    As::Long,            // 3 ToNodeType
    As::LongTextOrNull,  // 4 TransitionCondition
    As::Long,            // 5 FKProcDefinitionID
    As::Text,            // 6 TransitionProcDefID
};

constexpr defs::Assignment kSet[] = {
    {"FKFromNodeID = ", 0},          {" ,FromNodeType = ", 1},
    {" ,FKToNodeID = ", 2},          {" ,ToNodeType = ", 3},
    {" ,TransitionCondition = ", 4}, {" ,FKProcDefinitionID = ", 5},
    {" ,TransitionProcDefID = ", 6},
};

constexpr defs::KeyedTable kTable{
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

// ITransitionsDP

int32_t CTransitionsDP::Add(const FieldArray& fields) {
  return AddRow(kTable, fields);
}

bool CTransitionsDP::Update(int32_t transition_id, const FieldArray& fields) {
  return UpdateRow(kTable, transition_id, fields) > 0;
}

bool CTransitionsDP::Delete(int32_t transition_id, int32_t definition_id) {
  DeleteRows(kTable, transition_id, definition_id);
  return true;
}

std::shared_ptr<IListIterator> CTransitionsDP::GetByID(int32_t transition_id) {
  return RowsByKey(kTable, transition_id);
}

std::shared_ptr<IListIterator> CTransitionsDP::GetForProcess(int32_t definition_id) {
  return RowsByOwner(kTable, definition_id);
}

std::shared_ptr<IListIterator> CTransitionsDP::Load(const std::string& filter) {
  return RowsLoad(kTable, filter);
}

}  // namespace orvmysql
