#include "runtime/CAIPropertyDataDP.h"

namespace orvmysql {

namespace {

using dp::As;

// The positions of the parameter values where the columns are the same; a
// property has no ParameterType, and its value is one text column.
constexpr As kLayout[] = {
    As::Long,            // 0 FKActivityInstanceID
    As::Text,            // 1 PropertyName
    As::LongTextOrNull,  // 2 Value
    As::Long,            // 3 DataType
    As::Long,            // 4 Attributes
    As::Double,          // 5 Min
    As::Double,          // 6 Max
    As::Unused,          // 7
    As::TextOrNull,      // 8 LookupTypeCode
    As::TextOrNull,      // 9 ListAttribute
    As::TextOrNull,      // 10 Relevance
};

constexpr std::size_t kInsertOrder[] = {0, 1, 2, 3, 4, 5, 6, 8, 9, 10};

constexpr dp::Assignment kSet[] = {
    {" FKActivityInstanceID = ", 0},
    {" ,PropertyName = ", 1},
    {" ,`Value` = ", 2},
    {" ,DataType = ", 3},
    {" ,`Attributes` = ", 4},
    {" ,`Min` = ", 5},
    {" ,`Max` = ", 6},
    {" ,LookupTypeCode = ", 8},
    {" ,ListAttribute = ", 9},
    {" ,Relevance = ", 10},
};

constexpr std::string_view kHead =
    "SELECT tblActivityPropertyBag.ActivityPropertyID,tblActivityPropertyBag.FKActivityID,"
    "tblActivityPropertyBag.PropertyName,tblActivityPropertyBag.DisplayName,"
    "tblActivityPropertyBag.PropertyDescription,tblActivityPropertyBag.DataType,"
    "tblActivityPropertyBag.`Value` AS DefaultValue,tblActivityPropertyBag.`Attributes` AS "
    "TemplateAttributes,tblActivityPropertyBag.`Min`,tblActivityPropertyBag.`Max`,"
    "tblActivityPropertyBag.CreatorType,tblActivityPropertyBag.ExtendedAttributes,"
    "tblActivityPropertyBag.relevance AS Relevance,tblActivityPropertyBag.LookupTypeCode,"
    "tblActivityPropertyBag.ListAttribute,tblActivityPropertyBag.Mapping";
constexpr std::string_view kValues =
    ",tblActivityInstance.ActivityInstanceID AS ActivityInstanceID,tblAIPropertyData.AIPropertyID "
    "AS AIPropertyID,tblAIPropertyData.`Value` AS `Value`,tblAIPropertyData.`Attributes` AS "
    "`Attributes`";

constexpr std::string_view kBagOfInstance =
    " FROM (tblActivityPropertyBag INNER JOIN tblActivityInstance ON "
    "tblActivityPropertyBag.FKActivityID=tblActivityInstance.FKActivityID) ";
constexpr std::string_view kInnerValues = "INNER JOIN tblAIPropertyData ON (";
constexpr std::string_view kOuterValues = "LEFT JOIN tblAIPropertyData ON (";
// A value row matches its declaration by name and belongs to the instance.
constexpr std::string_view kValueOfInstance =
    "tblAIPropertyData.PropertyName=tblActivityPropertyBag.PropertyName AND "
    "tblActivityInstance.ActivityInstanceID=tblAIPropertyData.FKActivityInstanceID";
constexpr std::string_view kCloseInner = ") ";

constexpr BagValuesDP::TemplateJoin kJoin{
    .head = kHead,
    .values = kValues,
    .no_values =
        ",NULL AS ActivityInstanceID,NULL AS AIPropertyID,NULL AS `Value`,NULL AS `Attributes`",
    .declarations = " FROM tblActivityPropertyBag WHERE tblActivityPropertyBag.FKActivityID = ",
    .join = dp::Concat<kBagOfInstance, kOuterValues, kValueOfInstance>,
    .and_activity = " AND tblActivityPropertyBag.FKActivityID = ",
};

constexpr dp::KeyedTable kTable{
    .locations = {.add = "CAIPropertyDataDP:ITaskPropertyDP_Add Function (",
                  .update = "CAIPropertyDataDP:ITaskPropertyDP_Update Function (",
                  .remove = "CAIPropertyDataDP:ITaskPropertyDP_Delete Function (",
                  .by_key = "CAIPropertyDataDP:ITaskPropertyDP_GetPropertyByID Function (",
                  .load = "CAIPropertyDataDP:ITaskPropertyDP_Load Function ("},
    .select =
        dp::Concat<kHead, kValues, kBagOfInstance, kInnerValues, kValueOfInstance, kCloseInner>,
    .by_key = " WHERE tblAIPropertyData.AIPropertyID = ",
    .entity_type_code = -8,
    .insert_head =
        "INSERT INTO tblAIPropertyData "
        " (AIPropertyID,FKActivityInstanceID,PropertyName,`Value`,"
        " DataType,`Attributes`,`Min`,`Max`,LookupTypeCode,ListAttribute,Relevance)"
        " VALUES "
        "(",
    .add_layout = kLayout,
    .insert_order = kInsertOrder,
    .update_head = "UPDATE tblAIPropertyData SET ",
    .update_layout = kLayout,
    .update_set = kSet,
    .update_where = " WHERE AIPropertyID = ",
    .delete_one = "DELETE FROM tblAIPropertyData WHERE AIPropertyID = ",
    .delete_all = "DELETE FROM tblAIPropertyData WHERE FKActivityInstanceID = ",
};

}  // namespace

// ITaskPropertyDP

int32_t CAIPropertyDataDP::Add(const FieldArray& fields) {
  return AddRow(kTable, fields);
}

bool CAIPropertyDataDP::Update(int32_t property_id, const FieldArray& fields) {
  return UpdateRow(kTable, property_id, fields) > 0;
}

bool CAIPropertyDataDP::Delete(int32_t property_id, int32_t activity_instance_id) {
  DeleteRows(kTable, property_id, activity_instance_id);
  return true;
}

bool CAIPropertyDataDP::PropertyExist(const std::string& name, int32_t activity_instance_id) {
  return detail::Guard({"CAIPropertyDataDP:ITaskPropertyDP_PropertyExist Function ("}, [&] {
    return RowExists("tblAIPropertyData",
                     "FKActivityInstanceID = " + std::to_string(activity_instance_id) +
                         " AND PropertyName LIKE '" + dp::LiteralPattern(name) + "'");
  });
}

std::shared_ptr<IListIterator> CAIPropertyDataDP::GetPropertyByID(int32_t property_id) {
  return RowsByKey(kTable, property_id);
}

std::shared_ptr<IListIterator> CAIPropertyDataDP::GetPropertiesForInstance(
    int32_t activity_instance_id) {
  return DeclarationsWithValues(
      "CAIPropertyDataDP:ITaskPropertyDP_GetPropertiesForInstance Function (", kJoin, -1,
      activity_instance_id);
}

std::shared_ptr<IListIterator> CAIPropertyDataDP::Load(const std::string& condition) {
  return RowsLoad(kTable, condition);
}

std::shared_ptr<IListIterator> CAIPropertyDataDP::LoadInstanceProperties(
    int32_t activity_id, int32_t activity_instance_id) {
  return DeclarationsWithValues(
      "CAIPropertyDataDP:ITaskPropertyDP_LoadInstanceProperties Function (", kJoin, activity_id,
      activity_instance_id);
}

}  // namespace orvmysql
