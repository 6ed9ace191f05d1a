#include "runtime/CActivityInstanceDataDP.h"

#include "runtime/InstanceDataLayouts.h"

namespace orvmysql {

namespace {

// Positions 0 to 11; the value's NumericValue follows them at 12.
constexpr std::size_t kNumericValue = 12;

constexpr std::size_t kInsertOrder[] = {0, 1, 2, 3, 4, 5, 6, 7, kNumericValue, 11, 8, 9, 10};

constexpr dp::Assignment kSet[] = {
    {" FKActivityInstanceID = ", 0},
    {" ,ParameterName = ", 1},
    {" ,TextValue = ", 2},
    {" ,DataType = ", 3},
    {" ,`Attributes` = ", 4},
    {" ,`Min` = ", 5},
    {" ,`Max` = ", 6},
    {" ,ParameterType = ", 7},
    {" ,NumericValue = ", kNumericValue},
    {" ,TaskIndex = ", 11},
    {" ,LookupTypeCode = ", 8},
    {" ,ListAttribute = ", 9},
    {" ,Relevance = ", 10},
};

constexpr std::string_view kHead =
    "SELECT tblActivityParamBag.ActivityParameterID,tblActivityParamBag.FKActivityID,"
    "tblActivityParamBag.ParameterName,tblActivityParamBag.DisplayName,"
    "tblActivityParamBag.DataType,tblActivityParamBag.`Value` AS DefaultValue,"
    "tblActivityParamBag.`Attributes` AS TemplateAttributes,tblActivityParamBag.ParameterType,"
    "tblActivityParamBag.`Min`,tblActivityParamBag.`Max`,tblActivityParamBag.CreatorType,"
    "tblActivityParamBag.ExtendedAttributes,tblActivityParamBag.Relevance,"
    "tblActivityParamBag.LookupTypeCode,tblActivityParamBag.ListAttribute,"
    "tblActivityParamBag.Mapping";
constexpr std::string_view kValues =
    ",tblActivityInstance.ActivityInstanceID AS ActivityInstanceID,"
    "tblActivityInstanceData.AIParameterID AS AIParameterID,tblActivityInstanceData.TaskIndex AS "
    "TaskIndex,tblActivityInstanceData.TextValue AS TextValue,tblActivityInstanceData.NumericValue "
    "AS NumericValue,tblActivityInstanceData.`Attributes` AS `Attributes`";

constexpr std::string_view kBagOfInstance =
    " FROM (tblActivityParamBag INNER JOIN tblActivityInstance ON "
    "tblActivityParamBag.FKActivityID=tblActivityInstance.FKActivityID) ";
constexpr std::string_view kInnerValues = "INNER JOIN tblActivityInstanceData ON (";
constexpr std::string_view kOuterValues = "LEFT JOIN tblActivityInstanceData ON (";
// A value row matches its declaration by name and belongs to the instance.
constexpr std::string_view kValueOfInstance =
    "tblActivityInstanceData.ParameterName=tblActivityParamBag.ParameterName AND "
    "tblActivityInstance.ActivityInstanceID=tblActivityInstanceData.FKActivityInstanceID";
constexpr std::string_view kCloseInner = ") ";

constexpr BagValuesDP::TemplateJoin kJoin{
    .head = kHead,
    .values = kValues,
    .no_values =
        ",NULL AS ActivityInstanceID,NULL AS AIParameterID,NULL AS TaskIndex,NULL AS "
        "TextValue,NULL AS NumericValue,NULL AS `Attributes`",
    .declarations = " FROM tblActivityParamBag WHERE tblActivityParamBag.FKActivityID = ",
    .join = dp::Concat<kBagOfInstance, kOuterValues, kValueOfInstance>,
    .and_activity = " AND tblActivityParamBag.FKActivityID = ",
};

constexpr dp::KeyedTable kTable{
    .locations = {.add = "CActivityInstanceDataDP:ITaskParamsDP_Add Function (",
                  .update = "CActivityInstanceDataDP:ITaskParamsDP_Update Function (",
                  .remove = "CActivityInstanceDataDP:ITaskParamsDP_Delete Function (",
                  .by_key = "CActivityInstanceDataDP:ITaskParamsDP_GetParameterByID Function (",
                  .load = "CActivityInstanceDataDP:ITaskParamsDP_Load Function ("},
    .select =
        dp::Concat<kHead, kValues, kBagOfInstance, kInnerValues, kValueOfInstance, kCloseInner>,
    .by_key = " WHERE tblActivityInstanceData.AIParameterID = ",
    .entity_type_code = -9,
    .insert_head =
        "INSERT INTO tblActivityInstanceData "
        " (AIParameterID,FKActivityInstanceID,ParameterName,TextValue,"
        " DataType,`Attributes`,`Min`,`Max`,ParameterType,NumericValue,TaskIndex,LookupTypeCode,"
        "ListAttribute,Relevance)"
        " VALUES "
        "(",
    .add_layout = runtime::kParameterValueLayout,
    .insert_order = kInsertOrder,
    .update_head = "UPDATE tblActivityInstanceData SET ",
    .update_layout = runtime::kParameterValueLayout,
    .update_set = kSet,
    .update_where = " WHERE AIParameterID = ",
    .delete_one = "DELETE FROM tblActivityInstanceData WHERE AIParameterID = ",
    .delete_all = "DELETE FROM tblActivityInstanceData WHERE FKActivityInstanceID = ",
};

std::string OfTask(int32_t task_index) {
  return " AND tblActivityInstanceData.TaskIndex = " + std::to_string(task_index);
}

}  // namespace

// ITaskParamsDP

int32_t CActivityInstanceDataDP::Add(const FieldArray& fields) {
  return AddRow(kTable, fields);
}

bool CActivityInstanceDataDP::Update(int32_t parameter_id, const FieldArray& fields) {
  return UpdateRow(kTable, parameter_id, fields) > 0;
}

bool CActivityInstanceDataDP::Delete(int32_t parameter_id, int32_t activity_instance_id) {
  DeleteRows(kTable, parameter_id, activity_instance_id);
  return true;
}

bool CActivityInstanceDataDP::ParameterExist(const std::string& name, int32_t activity_instance_id,
                                             int32_t task_index) {
  return detail::Guard({"CActivityInstanceDataDP:ITaskParamsDP_ParameterExist Function ("}, [&] {
    return RowExists("tblActivityInstanceData",
                     "FKActivityInstanceID = " + std::to_string(activity_instance_id) +
                         " AND TaskIndex = " + std::to_string(task_index) +
                         " AND ParameterName LIKE '" + dp::LiteralPattern(name) + "'");
  });
}

std::shared_ptr<IListIterator> CActivityInstanceDataDP::GetParameterByID(int32_t parameter_id) {
  return RowsByKey(kTable, parameter_id);
}

std::shared_ptr<IListIterator> CActivityInstanceDataDP::GetParameterForTask(
    int32_t activity_instance_id, int32_t task_index) {
  return DeclarationsWithValues(
      "CActivityInstanceDataDP:ITaskParamsDP_GetParameterForTask Function (", kJoin, -1,
      activity_instance_id, OfTask(task_index));
}

std::shared_ptr<IListIterator> CActivityInstanceDataDP::Load(const std::string& condition) {
  return RowsLoad(kTable, condition);
}

std::shared_ptr<IListIterator> CActivityInstanceDataDP::LoadTaskParams(int32_t activity_id,
                                                                       int32_t activity_instance_id,
                                                                       int32_t task_index) {
  return DeclarationsWithValues("CActivityInstanceDataDP:ITaskParamsDP_LoadTaskParams Function (",
                                kJoin, activity_id, activity_instance_id, OfTask(task_index));
}

}  // namespace orvmysql
