#include "definitions/CProcessParamsDP.h"

namespace orvmysql {

namespace {

using dp::As;

constexpr As kLayout[] = {
    As::Long,            // 0 FKProcDefID
    As::Text,            // 1 ParameterName
    As::Text,            // 2 DisplayName (the name when empty)
    As::Long,            // 3 DataType
    As::TextOrNull,      // 4 DefaultValue
    As::Long,            // 5 Attributes
    As::Long,            // 6 ParameterType
    As::Double,          // 7 Min
    As::Double,          // 8 Max
    As::Long,            // 9 CreatorType
    As::LongTextOrNull,  // 10 ExtendedAttributes
    As::TextOrNull,      // 11 Relevance
    As::TextOrNull,      // 12 LookupTypeCode
    As::TextOrNull,      // 13 ListAttribute
};

constexpr dp::Assignment kSet[] = {
    {" FKProcDefID =", 0},
    {" ,`ParameterName` =", 1},
    {" ,`DisplayName` =", 2},
    {" ,`DataType` =", 3},
    {" ,`DefaultValue` =", 4},
    {" ,`Attributes` =", 5},
    {" ,`ParameterType` =", 6},
    {" ,`Min` =", 7},
    {" ,`Max` =", 8},
    {" ,CreatorType =", 9},
    {" ,ExtendedAttributes =", 10},
    {" ,Relevance = ", 11},
    {" ,LookupTypeCode = ", 12},
    {" ,ListAttribute = ", 13},
};

// A parameter without a display name shows its name.
void NameWhenNoDisplayName(std::vector<std::string>& values) {
  if (values[2] == "''") values[2] = values[1];
}

constexpr dp::KeyedTable kTable{
    .locations = {.add = "CProcessParamsDP: IProcessParamsDP_Add Function (",
                  .update = "CProcessParamsDP: IProcessParamsDP_Update Function (",
                  .remove = "CProcessParamsDP: IProcessParamsDP_Delete Function (",
                  .by_key = "CProcessParamsDP:IProcessParamsDP_GetParameterByID (",
                  .by_owner = "CProcessParamsDP:IProcessParamsDP_GetParameterForProcess Function (",
                  .load = "CProcessParamsDP:IProcessParamsDP_Load Function ("},
    .select =
        "SELECT ParameterID,FKProcDefID,ParameterName,DisplayName,DataType,DefaultValue,"
        "`Attributes`,ParameterType,`Min`,`Max`,CreatorType,ExtendedAttributes,Relevance,"
        "LookupTypeCode,ListAttribute FROM tblProcessParams ",
    .by_key = " WHERE ParameterID = ",
    .by_owner = " WHERE FKProcDefID = ",
    .entity_type_code = -24,
    .insert_head =
        "INSERT INTO tblProcessParams "
        " (ParameterID,FKProcDefID,`ParameterName`,`DisplayName`,"
        " `DataType`,`DefaultValue`,`Attributes`,`ParameterType`,`Min`,`Max`,"
        " CreatorType,ExtendedAttributes,Relevance,LookupTypeCode,ListAttribute) VALUES "
        "(",
    .add_layout = kLayout,
    .update_head = "UPDATE tblProcessParams SET ",
    .update_layout = kLayout,
    .update_set = kSet,
    .update_where = " WHERE ParameterID = ",
    .delete_one = "DELETE FROM tblProcessParams WHERE ParameterID = ",
    .complete = &NameWhenNoDisplayName,
};

}  // namespace

// IProcessParamsDP

std::shared_ptr<IListIterator> CProcessParamsDP::GetParameterByID(int32_t parameter_id) {
  return RowsByKey(kTable, parameter_id);
}

std::shared_ptr<IListIterator> CProcessParamsDP::GetParameterForProcess(int32_t definition_id) {
  return RowsByOwner(kTable, definition_id);
}

std::shared_ptr<IListIterator> CProcessParamsDP::Load(const std::string& condition) {
  return RowsLoad(kTable, condition);
}

bool CProcessParamsDP::ParameterExist(const std::string& name, int32_t definition_id) {
  return detail::Guard({"CProcessParamsDP: IProcessParamsDP_ParameterExist Function ("}, [&] {
    return RowExists("tblProcessParams", "FKProcDefID = " + std::to_string(definition_id) +
                                             " AND ParameterName LIKE '" +
                                             dp::LiteralPattern(name) + "'");
  });
}

bool CProcessParamsDP::Update(int32_t parameter_id, const FieldArray& fields) {
  UpdateRow(kTable, parameter_id, fields);
  return true;
}

int32_t CProcessParamsDP::Add(const FieldArray& fields) {
  return AddRow(kTable, fields);
}

bool CProcessParamsDP::Delete(int32_t parameter_id) {
  DeleteRows(kTable, parameter_id, 0);
  return true;
}

}  // namespace orvmysql
