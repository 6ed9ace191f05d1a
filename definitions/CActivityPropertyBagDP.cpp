#include "definitions/CActivityPropertyBagDP.h"

namespace orvmysql {

namespace {

using dp::As;

constexpr As kLayout[] = {
    As::Long,            // 0 FKActivityID
    As::Text,            // 1 PropertyName
    As::Text,            // 2 DisplayName
    As::Text,            // 3 PropertyDescription
    As::Long,            // 4 DataType
    As::LongTextOrNull,  // 5 Value
    As::Long,            // 6 Attributes
    As::Double,          // 7 Min
    As::Double,          // 8 Max
    As::LongTextOrNull,  // 9 ExtendedAttributes
    As::TextOrNull,      // 10 Mapping
    As::TextOrNull,      // 11 relevance
    As::TextOrNull,      // 12 LookupTypeCode
    As::TextOrNull,      // 13 ListAttribute
    As::Long,            // 14 CreatorType
};

// The value goes before the data type and the creator type after the extended
// attributes, as the columns stand in the table.
constexpr std::size_t kInsertOrder[] = {0, 1, 2, 3, 5, 4, 6, 7, 8, 9, 14, 10, 11, 12, 13};

constexpr dp::Assignment kSet[] = {
    {" FKActivityID = ", 0},
    {" ,`PropertyName` = ", 1},
    {" ,`DisplayName` = ", 2},
    {" ,`PropertyDescription` = ", 3},
    {" ,`Value` = ", 5},
    {" ,`DataType` = ", 4},
    {" ,`Attributes` = ", 6},
    {" ,`Min` = ", 7},
    {" ,`Max` = ", 8},
    {" ,`ExtendedAttributes` = ", 9},
    {" ,`CreatorType` = ", 14},
    {" ,`Mapping` = ", 10},
    {" ,`relevance` = ", 11},
    {" ,`LookupTypeCode` = ", 12},
    {" ,`ListAttribute` = ", 13},
};

constexpr dp::KeyedTable kTable{
    .locations = {.add = "CActivityPropertyBagDP: IPropertyValueDP_Add Function (",
                  .update = "CActivityPropertyBagDP: IPropertyValueDP_Update Function (",
                  .remove = "CActivityPropertyBagDP: IPropertyValueDP_Delete Function (",
                  .by_key = "CActivityPropertyBagDP:IPropertyValueDP_GetPropertyByID Function (",
                  .by_owner =
                      "CActivityPropertyBagDP:IPropertyValueDP_GetPropertiesForEntity Function (",
                  .load = "CActivityPropertyBagDP:IPropertyValueDP_Load Function ("},
    .select =
        "SELECT ActivityPropertyID,FKActivityID,PropertyName,DisplayName,PropertyDescription,"
        "`Value`,DataType,Attributes,`Min`,`Max`,ExtendedAttributes,CreatorType,Mapping,"
        "relevance,LookupTypeCode,ListAttribute FROM tblActivityPropertyBag ",
    .by_key = " WHERE ActivityPropertyID = ",
    .by_owner = " WHERE FKActivityID = ",
    .entity_type_code = -23,
    .insert_head =
        "INSERT INTO tblActivityPropertyBag "
        " (ActivityPropertyID,FKActivityID,`PropertyName`,`DisplayName`,PropertyDescription,"
        "`Value`,"
        " `DataType`,`Attributes`,`Min`,`Max`,ExtendedAttributes,CreatorType,Mapping,relevance,"
        "LookupTypeCode,ListAttribute)"
        " VALUES "
        " (",
    .add_layout = kLayout,
    .insert_order = kInsertOrder,
    .update_head = "UPDATE tblActivityPropertyBag SET ",
    .update_layout = kLayout,
    .update_set = kSet,
    .update_where = " WHERE ActivityPropertyID = ",
    .delete_one = "DELETE FROM tblActivityPropertyBag WHERE ActivityPropertyID = ",
    .delete_all = "DELETE FROM tblActivityPropertyBag WHERE FKActivityID = ",
};

}  // namespace

// IPropertyValueDP

std::shared_ptr<IListIterator> CActivityPropertyBagDP::GetPropertiesForEntity(int32_t activity_id) {
  return RowsByOwner(kTable, activity_id);
}

std::shared_ptr<IListIterator> CActivityPropertyBagDP::GetPropertyByID(int32_t property_id) {
  return RowsByKey(kTable, property_id);
}

std::shared_ptr<IListIterator> CActivityPropertyBagDP::Load(const std::string& condition) {
  return RowsLoad(kTable, condition);
}

int32_t CActivityPropertyBagDP::Add(const FieldArray& fields) {
  return AddRow(kTable, fields);
}

bool CActivityPropertyBagDP::Update(int32_t property_id, const FieldArray& fields) {
  UpdateRow(kTable, property_id, fields);
  return true;
}

bool CActivityPropertyBagDP::Delete(int32_t property_id, int32_t activity_id) {
  DeleteRows(kTable, property_id, activity_id);
  return true;
}

}  // namespace orvmysql
