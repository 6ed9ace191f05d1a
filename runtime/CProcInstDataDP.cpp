#include "runtime/CProcInstDataDP.h"

#include <span>

#include "runtime/InstanceDataLayouts.h"

namespace orvmysql {

namespace {

// Positions 0 to 10; the value's NumericValue follows them at 11.
constexpr std::span<const dp::As> kLayout = std::span(runtime::kParameterValueLayout).first(11);
constexpr std::size_t kNumericValue = 11;

constexpr std::size_t kInsertOrder[] = {0, 1, 2, 3, 4, 5, 6, 7, kNumericValue, 8, 9, 10};

constexpr dp::Assignment kSet[] = {
    {" FKProcInstanceID = ", 0}, {" ,ParameterName = ", 1}, {" ,TextValue = ", 2},
    {" ,DataType = ", 3},        {" ,`Attributes` = ", 4},  {" ,`Min` = ", 5},
    {" ,`Max` = ", 6},           {" ,ParameterType = ", 7}, {" ,NumericValue = ", kNumericValue},
    {" ,LookupTypeCode = ", 8},  {" ,ListAttribute = ", 9}, {" ,Relevance = ", 10},
};

// The declarations of the instance's definition...
constexpr std::string_view kHead =
    "SELECT tblProcessParams.ParameterID,tblProcessParams.FKProcDefID,"
    "tblProcessParams.ParameterName,tblProcessParams.DisplayName,tblProcessParams.DataType,"
    "tblProcessParams.DefaultValue,tblProcessParams.`Attributes` AS TemplateAttributes,"
    "tblProcessParams.ParameterType,tblProcessParams.`Min`,tblProcessParams.`Max`,"
    "tblProcessParams.CreatorType,tblProcessParams.ExtendedAttributes,tblProcessParams.Relevance,"
    "tblProcessParams.LookupTypeCode,tblProcessParams.ListAttribute";
// ...with the instance's values, or without any.
constexpr std::string_view kValues =
    ",tblProcessInstance.ProcInstanceID AS ProcInstanceID,tblProcInstanceData.ProcInstanceDataID "
    "AS ProcInstanceDataID, tblProcInstanceData.TextValue AS TextValue, "
    "tblProcInstanceData.NumericValue AS NumericValue, tblProcInstanceData.`Attributes` AS "
    "`Attributes`";
constexpr std::string_view kNoValues =
    ",NULL AS ProcInstanceID,NULL AS ProcInstanceDataID,NULL AS TextValue,NULL AS "
    "NumericValue,NULL AS `Attributes`";

// Value rows join their declaration by name and their own instance by its
// id; joined by name alone, every instance of the definition would supply
// values for every other.
constexpr std::string_view kInner =
    " FROM (tblProcessParams INNER JOIN tblProcessInstance ON "
    "tblProcessParams.FKProcDefID=tblProcessInstance.FKProcDefID) INNER JOIN tblProcInstanceData "
    "ON (tblProcInstanceData.ParameterName=tblProcessParams.ParameterName AND "
    "tblProcessInstance.ProcInstanceID=tblProcInstanceData.FKProcInstanceID) ";
constexpr std::string_view kOuter =
    " FROM (tblProcessParams LEFT JOIN tblProcessInstance ON "
    "tblProcessParams.FKProcDefID=tblProcessInstance.FKProcDefID) LEFT JOIN tblProcInstanceData "
    "ON (tblProcInstanceData.ParameterName=tblProcessParams.ParameterName AND "
    "tblProcessInstance.ProcInstanceID=tblProcInstanceData.FKProcInstanceID) ";
constexpr std::string_view kOuterUnnamed =
    " FROM (tblProcessParams LEFT JOIN tblProcessInstance ON "
    "tblProcessParams.FKProcDefID=tblProcessInstance.FKProcDefID) LEFT JOIN tblProcInstanceData "
    "ON ((tblProcInstanceData.ParameterName=tblProcessParams.ParameterName OR "
    "tblProcInstanceData.ParameterName IS NULL) AND "
    "tblProcessInstance.ProcInstanceID=tblProcInstanceData.FKProcInstanceID) ";

constexpr std::string_view kWhere = " WHERE ";
constexpr std::string_view kOwnInstanceOrNone =
    "(tblProcessInstance.ProcInstanceID=tblProcInstanceData.FKProcInstanceID OR "
    "tblProcInstanceData.FKProcInstanceID IS NULL)";
constexpr std::string_view kAndInstance = " AND tblProcessInstance.ProcInstanceID = ";

constexpr dp::KeyedTable kTable{
    .locations = {.add = "CProcInstDataDP:Add Function (",
                  .update = "CProcInstDataDP:Update Function (",
                  .remove = "CProcInstDataDP:Delete Function (",
                  .by_key = "CProcInstDataDP:GetParameterByID Function (",
                  .by_owner = "CProcInstDataDP:GetParameterForProcess Function (",
                  .load = "CProcInstDataDP:Load Function ("},
    .select = dp::Concat<kHead, kValues, kInner>,
    .by_key = " WHERE ProcInstanceDataID = ",
    .by_owner = dp::Concat<kWhere, kOwnInstanceOrNone, kAndInstance>,
    .owner_select = dp::Concat<kHead, kValues, kOuter>,
    .load_restriction = "(tblProcessInstance.ProcInstanceID=tblProcInstanceData.FKProcInstanceID)",
    .entity_type_code = -22,
    .insert_head =
        "INSERT INTO tblProcInstanceData "
        " (ProcInstanceDataID,FKProcInstanceID,ParameterName,TextValue,"
        " DataType,`Attributes`,`Min`,`Max`,ParameterType,NumericValue,LookupTypeCode,"
        "ListAttribute,Relevance)"
        " VALUES "
        "(",
    .add_layout = kLayout,
    .insert_order = kInsertOrder,
    .update_head = "UPDATE tblProcInstanceData SET ",
    .update_layout = kLayout,
    .update_set = kSet,
    .update_where = " WHERE ProcInstanceDataID = ",
    .delete_one = "DELETE FROM tblProcInstanceData WHERE ProcInstanceDataID = ",
    .delete_all = "DELETE FROM tblProcInstanceData WHERE FKProcInstanceID = ",
};

}  // namespace

// IProcInstanceParamsDP

bool CProcInstDataDP::Add(const FieldArray& fields) {
  AddRow(kTable, fields);
  return true;
}

bool CProcInstDataDP::Update(int32_t data_id, const FieldArray& fields) {
  UpdateRow(kTable, data_id, fields);
  return true;
}

bool CProcInstDataDP::Delete(int32_t data_id, int32_t process_instance_id) {
  DeleteRows(kTable, data_id, process_instance_id);
  return true;
}

bool CProcInstDataDP::ParameterExist(const std::string& name, int32_t process_instance_id) {
  return detail::Guard({"CProcInstDataDP:ParameterExist Function ("}, [&] {
    return RowExists("tblProcInstanceData",
                     "FKProcInstanceID = " + std::to_string(process_instance_id) +
                         " AND ParameterName LIKE '" + dp::LiteralPattern(name) + "'");
  });
}

std::shared_ptr<IListIterator> CProcInstDataDP::GetParameterByID(int32_t data_id) {
  return RowsByKey(kTable, data_id);
}

std::shared_ptr<IListIterator> CProcInstDataDP::GetParameterForProcess(
    int32_t process_instance_id) {
  return RowsByOwner(kTable, process_instance_id);
}

std::shared_ptr<IListIterator> CProcInstDataDP::Load(const std::string& condition) {
  return RowsLoad(kTable, condition);
}

std::shared_ptr<IListIterator> CProcInstDataDP::LoadProcessInstanceParams(
    int32_t definition_id, int32_t process_instance_id) {
  return detail::Guard({"CProcInstDataDP:LoadProcessInstanceParams Function ("}, [&] {
    std::string sql(kHead);
    if (process_instance_id == -1) {
      sql += kNoValues;
      sql += " FROM tblProcessParams  WHERE tblProcessParams.FKProcDefID = ";
      sql += std::to_string(definition_id);
      return Rows(sql);
    }
    sql += kValues;
    sql += kOuterUnnamed;
    sql += definition_id == -1
               ? " WHERE tblProcessInstance.ProcInstanceID = "
               : " WHERE tblProcessParams.FKProcDefID = " + std::to_string(definition_id) +
                     std::string(kAndInstance);
    sql += std::to_string(process_instance_id);
    sql += " AND ";
    sql += kOwnInstanceOrNone;
    return Rows(sql);
  });
}

}  // namespace orvmysql
