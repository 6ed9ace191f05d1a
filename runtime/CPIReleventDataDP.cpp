#include "runtime/CPIReleventDataDP.h"

namespace orvmysql {

namespace {

using dp::As;

constexpr As kLayout[] = {
    As::Long,         // 0 EntityID
    As::Text,         // 1 ParameterName
    As::ValueByType,  // 2 TextValue, and NumericValue at 14
    As::Long,         // 3 DataType
    As::Long,         // 4 Attributes
    As::Double,       // 5 Min
    As::Double,       // 6 Max
    As::Long,         // 7 ParameterType
    As::Long,         // 8 TaskIndex
    As::TextOrNull,   // 9 ResourceID
    As::TextOrNull,   // 10 ResourceType
    As::TextOrNull,   // 11 ResourceName
    As::Long,         // 12 FKProcInstanceID
    As::Long,         // 13 EntityType
};
constexpr std::size_t kNumericValue = 14;

constexpr std::size_t kInsertOrder[] = {12, 1,  2, 3, 4,  5, 6, 7, kNumericValue,
                                        0,  13, 8, 9, 10, 11};

constexpr dp::Assignment kSet[] = {
    {" FKProcInstanceID = ", 12},
    {" ,ParameterName = ", 1},
    {" ,TextValue = ", 2},
    {" ,DataType = ", 3},
    {" ,`Attributes` = ", 4},
    {" ,`Min` = ", 5},
    {" ,`Max` = ", 6},
    {" ,ParameterType = ", 7},
    {" ,NumericValue = ", kNumericValue},
    {" ,EntityID = ", 0},
    {" ,EntityType = ", 13},
    {" ,TaskIndex = ", 8},
    {" ,ResourceID = ", 9},
    {" ,ResourceType = ", 10},
    {" ,ResourceName = ", 11},
};

constexpr dp::KeyedTable kTable{
    .locations = {.add = "CPIReleventDataDP: IParameterValueDP_Add Function (",
                  .update = "CPIReleventDataDP: IParameterValueDP_Update Function (",
                  .remove = "CPIReleventDataDP: IParameterValueDP_Delete Function (",
                  .by_key = "CPIReleventDataDP:IParameterValueDP_GetParameterByID Function (",
                  .by_owner =
                      "CPIReleventDataDP:IParameterValueDP_GetParameterForEntity Function (",
                  .load = "CPIReleventDataDP:IParameterValueDP_Load Function ("},
    // Rows of entity type 0 belong to a process instance: their EntityID is no
    // activity instance's, so they are kept out of the join.
    .select =
        "SELECT  tblPIReleventData.*,tblActivities.ActivityName FROM (tblPIReleventData INNER "
        "JOIN tblActivityInstance ON tblPIReleventData.EntityID = "
        "tblActivityInstance.ActivityInstanceID AND tblPIReleventData.EntityType <> 0) INNER "
        "JOIN tblActivities ON tblActivityInstance.FKActivityID = tblActivities.ActivityID ",
    .by_key = " WHERE PIReleventDataID = ",
    .by_owner = " WHERE tblPIReleventData.FKProcInstanceID = ",
    .entity_type_code = -21,
    .insert_head =
        "INSERT INTO tblPIReleventData "
        " (PIReleventDataID,FKProcInstanceID,ParameterName,TextValue,"
        " DataType,`Attributes`,`Min`,`Max`,ParameterType,NumericValue,EntityID, EntityType, "
        "TaskIndex, ResourceID, ResourceType, ResourceName)"
        " VALUES "
        "(",
    .add_layout = kLayout,
    .insert_order = kInsertOrder,
    .update_head = "UPDATE tblPIReleventData SET ",
    .update_layout = kLayout,
    .update_set = kSet,
    .update_where = " WHERE PIReleventDataID = ",
    .delete_one = "DELETE FROM tblPIReleventData WHERE PIReleventDataID = ",
    // Whatever entity type the rows were stored with, Delete takes those of 1.
    .delete_all = "DELETE FROM tblPIReleventData WHERE EntityID = ",
    .delete_all_tail = " AND EntityType = 1",
};

}  // namespace

// IParameterValueDP

std::shared_ptr<IListIterator> CPIReleventDataDP::GetParameterForEntity(
    int32_t process_instance_id) {
  return RowsByOwner(kTable, process_instance_id);
}

std::shared_ptr<IListIterator> CPIReleventDataDP::GetParameterByID(int32_t data_id) {
  return RowsByKey(kTable, data_id);
}

std::shared_ptr<IListIterator> CPIReleventDataDP::Load(const std::string& condition) {
  return RowsLoad(kTable, condition);
}

Variant CPIReleventDataDP::Add(const FieldArray& fields) {
  AddRow(kTable, fields);
  return true;
}

bool CPIReleventDataDP::Update(int32_t data_id, const FieldArray& fields) {
  UpdateRow(kTable, data_id, fields);
  return true;
}

bool CPIReleventDataDP::Delete(int32_t data_id, int32_t entity_id) {
  DeleteRows(kTable, data_id, entity_id);
  return true;
}

}  // namespace orvmysql
