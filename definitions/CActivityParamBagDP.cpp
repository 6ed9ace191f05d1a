#include "definitions/CActivityParamBagDP.h"

namespace orvmysql {

namespace {

using dp::As;

constexpr As kAddLayout[] = {
    As::Long,            // 0 FKActivityID
    As::Text,            // 1 ParameterName
    As::TextOrNull,      // 2 DisplayName
    As::LongTextOrNull,  // 3 Value
    As::Long,            // 4 DataType
    As::Long,            // 5 Attributes
    As::Double,          // 6 Min
    As::Double,          // 7 Max
    As::Long,            // 8 ParameterType
    As::LongTextOrNull,  // 9 ExtendedAttributes
    As::TextOrNull,      // 10 Mapping
    As::TextOrNull,      // 11 Relevance
    As::TextOrNull,      // 12 LookupTypeCode
    As::TextOrNull,      // 13 ListAttribute
    As::Long,            // 14 CreatorType
};

// Update has no display name, so everything after the name moves up by one;
// the display name and the creator type stay as Add wrote them.
constexpr As kUpdateLayout[] = {
    As::Long,            // 0 FKActivityID
    As::Text,            // 1 ParameterName
    As::LongTextOrNull,  // 2 Value
    As::Long,            // 3 DataType
    As::Long,            // 4 Attributes
    As::Double,          // 5 Min
    As::Double,          // 6 Max
    As::Long,            // 7 ParameterType
    As::LongTextOrNull,  // 8 ExtendedAttributes
    As::TextOrNull,      // 9 Mapping
    As::TextOrNull,      // 10 Relevance
    As::TextOrNull,      // 11 LookupTypeCode
    As::TextOrNull,      // 12 ListAttribute
    As::Unused,          // 13
    As::Unused,          // 14
};

constexpr dp::Assignment kSet[] = {
    {" FKActivityID = ", 0},    {" ,`ParameterName` = ", 1}, {" ,`Value` = ", 2},
    {" ,`DataType` = ", 3},     {" ,`Attributes` = ", 4},    {" ,`Min` = ", 5},
    {" ,`Max` = ", 6},          {" ,`ParameterType` = ", 7}, {" ,`ExtendedAttributes` = ", 8},
    {" ,Mapping = ", 9},        {" ,Relevance = ", 10},      {" ,LookupTypeCode = ", 11},
    {" ,ListAttribute = ", 12},
};

constexpr dp::KeyedTable kTable{
    .locations = {.add = "CActivityParamBagDP: IParameterValueDP_Add Function (",
                  .update = "CActivityParamBagDP: IParameterValueDP_Update Function (",
                  .remove = "CActivityParamBagDP: IParameterValueDP_Delete Function (",
                  .by_key = "CActivityParamBagDP:IParameterValueDP_GetParameterByID Function (",
                  .by_owner =
                      "CActivityParamBagDP:IParameterValueDP_GetParameterForEntity Function (",
                  .load = "CActivityParamBagDP:IParameterValueDP_Load Function ("},
    .select =
        "SELECT ActivityParameterID,FKActivityID,ParameterName,DisplayName,`Value`,DataType,"
        "Attributes,`Min`,`Max`,ParameterType,ExtendedAttributes,CreatorType,Mapping,"
        "relevance,LookupTypeCode,ListAttribute FROM tblActivityParamBag ",
    .by_key = " WHERE ActivityParameterID = ",
    .by_owner = " WHERE FKActivityID = ",
    .entity_type_code = -20,
    .insert_head =
        "INSERT INTO tblActivityParamBag "
        " (ActivityParameterID,FKActivityID,`ParameterName`,`DisplayName`,`Value`,"
        " `DataType`,`Attributes`,`Min`,`Max`,`ParameterType`,`ExtendedAttributes`,"
        "Mapping,Relevance,LookupTypeCode,ListAttribute,CreatorType)"
        " VALUES "
        "(",
    .add_layout = kAddLayout,
    .update_head = "UPDATE tblActivityParamBag SET ",
    .update_layout = kUpdateLayout,
    .update_set = kSet,
    .update_where = " WHERE ActivityParameterID = ",
    .delete_one = "DELETE FROM tblActivityParamBag WHERE ActivityParameterID = ",
    .delete_all = "DELETE FROM tblActivityParamBag WHERE FKActivityID = ",
};

}  // namespace

// IParameterValueDP

std::shared_ptr<IListIterator> CActivityParamBagDP::GetParameterForEntity(int32_t activity_id) {
  return RowsByOwner(kTable, activity_id);
}

std::shared_ptr<IListIterator> CActivityParamBagDP::GetParameterByID(int32_t parameter_id) {
  return RowsByKey(kTable, parameter_id);
}

std::shared_ptr<IListIterator> CActivityParamBagDP::Load(const std::string& condition) {
  return RowsLoad(kTable, condition);
}

Variant CActivityParamBagDP::Add(const FieldArray& fields) {
  return AddRow(kTable, fields);
}

bool CActivityParamBagDP::Update(int32_t parameter_id, const FieldArray& fields) {
  UpdateRow(kTable, parameter_id, fields);
  return true;
}

bool CActivityParamBagDP::Delete(int32_t parameter_id, int32_t activity_id) {
  DeleteRows(kTable, parameter_id, activity_id);
  return true;
}

}  // namespace orvmysql
