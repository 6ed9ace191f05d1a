#include <string_view>

#include "access/SqlValues.h"
#include "runtime/COrvEngineDP.h"

namespace orvmysql {

namespace {

using dp::As;
using dp::Cat;

constexpr std::string_view kProcData = "tblProcInstanceData";
constexpr std::string_view kTaskData = "tblActivityInstanceData";

// The value columns of an instance-data table, as the source queries read them.
std::string DataColumns(std::string_view table) {
  return Cat(" SELECT ", table, ".ParameterName, ", " ", table, ".TextValue, ", table,
             ".DataType, ", " ", table, ".Attributes, ", table, ".Min, ", " ", table, ".Max, ",
             table, ".ParameterType, ", " ", table, ".NumericValue");
}

// The columns of a source row in the order of the INSERT, and how each is
// written.
constexpr std::string_view kSourceColumns[] = {
    "ParameterName", "TextValue",    "DataType",     "Attributes",     "Min",           "Max",
    "ParameterType", "NumericValue", "EID",          "EType",          "IIndex",        "CaseID",
    "ResourceID",    "ResourceType", "ResourceName", "LookupTypeCode", "ListAttribute", "Relevance",
};
constexpr As kCaseLayout[] = {
    As::Text,        As::LongTextOrEmpty, As::Number,      As::Number, As::Number,
    As::Number,      As::Number,          As::Number,      As::Number, As::Number,
    As::Number,      As::Number,          As::Text,        As::Text,   As::Text,
    As::TextOrEmpty, As::TextOrEmpty,     As::TextOrEmpty,
};
static_assert(std::size(kSourceColumns) == std::size(kCaseLayout));

constexpr std::string_view kCaseInsert =
    " INSERT INTO tblPIReleventData (PIReleventDataID, ParameterName,  TextValue, DataType, "
    "Attributes, `Min`, `Max`,  ParameterType, NumericValue, EntityID, EntityType,  "
    "Taskindex,FKProcInstanceID,ResourceID,ResourceType,ResourceName,LookupTypeCode,"
    "ListAttribute,Relevance) VALUES (";

// The rows of entity type «t» that other activity instances of the same
// activity in the same process instance as activity instance «a» left: the
// pieces between the values «t», «t», «a», «t», «a», «a».
constexpr std::string_view kObsoleteData[] = {
    " DELETE "
    " FROM tblPIReleventData USING tblPIReleventData INNER JOIN "
    " (SELECT  PIReleventDataID "
    " FROM  tblPIReleventData INNER JOIN tblActivityInstance ON  tblPIReleventData.EntityID "
    "=  tblActivityInstance.ActivityInstanceID "
    " WHERE tblPIReleventData.EntityType = ",
    " AND  tblActivityInstance.FKActivityID IN ( "
    "                              SELECT  tblActivityInstance.FKActivityID "
    "                              FROM tblPIReleventData INNER JOIN tblActivityInstance ON  "
    "tblPIReleventData.EntityID =  tblActivityInstance.ActivityInstanceID "
    "                              WHERE tblPIReleventData.EntityType = ",
    "                              AND  tblActivityInstance.ActivityInstanceID = ",
    ") "
    " AND tblActivityInstance.FKProcInstanceID IN ( "
    "                            SELECT  tblActivityInstance.FKProcInstanceID "
    "                            FROM tblPIReleventData INNER JOIN tblActivityInstance ON  "
    "tblPIReleventData.EntityID =  tblActivityInstance.ActivityInstanceID "
    "                            WHERE tblPIReleventData.EntityType = ",
    "                            AND  tblActivityInstance.ActivityInstanceID = ",
    ") "
    " AND  tblActivityInstance.ActivityInstanceID <> ",
    ") AS vObseleteData ON vObseleteData.PIReleventDataID = tblPIReleventData.PIReleventDataID",
};

constexpr int32_t kCaseDataKeys = -21;
constexpr int32_t kStartSwitch = 2;

}  // namespace

// IOrvEngineDP

std::shared_ptr<INode> COrvEngineDP::GetStartNodeID(int32_t definition_id) {
  return detail::Guard({"COrvEngineDP: GetStartNodeID Function ("}, [&] {
    const int32_t id =
        Variant(Scalar(Cat(" SELECT SwitchID FROM  tblSwitches ",
                           " WHERE SwitchType = ", std::to_string(kStartSwitch),
                           " AND FKProcDefinitionID = ", std::to_string(definition_id)),
                       "-1"))
            .ToLong();
    if (id == -1) return std::shared_ptr<INode>();
    auto node = std::make_shared<CNode>();
    node->SetNodeID(id);
    node->SetNodeType(kStartSwitch);
    return std::shared_ptr<INode>(node);
  });
}

std::shared_ptr<IListIterator> COrvEngineDP::GetTransitions(int32_t definition_id,
                                                            int32_t from_node_type,
                                                            int32_t from_node_id) {
  return detail::Guard({"COrvEngineDP: StartActivityTransitions Function ("}, [&] {
    return Rows(Cat(" SELECT tblTransitions.* FROM tblTransitions WHERE ",
                    " FKFromNodeID = ", std::to_string(from_node_id),
                    " AND FromNodeType = ", std::to_string(from_node_type),
                    " AND  FKProcDefinitionID = ", std::to_string(definition_id)));
  });
}

bool COrvEngineDP::InsertCaseRelatedData(int32_t case_id, int32_t entity_id, int32_t entity_type,
                                         int32_t task_index, const std::string& resource_id,
                                         const std::string& resource_type,
                                         const std::string& resource_name) {
  return detail::Guard({"COrvEngineDP: InsertCaseRelatedData Function ("}, [&] {
    const std::string entity = std::to_string(entity_id), type = std::to_string(entity_type),
                      task = std::to_string(task_index), case_text = std::to_string(case_id);
    // One task (or the process) takes the resource given; all tasks take
    // their work items' resources.
    const bool all_tasks = entity_type != 0 && task_index < 0;
    const bool one_task = entity_type != 0 && task_index >= 0;
    const auto given = [&](std::string_view table) {
      return Cat(DataColumns(table), ", ", entity, " AS EID, ", type, " AS EType, ", task,
                 " AS IIndex,", case_text, " AS CaseID,", sql::Text(Variant(resource_id)),
                 " AS ResourceID,", sql::Text(Variant(resource_type)), " AS ResourceType,",
                 sql::Text(Variant(resource_name)),
                 " AS ResourceName,LookupTypeCode,ListAttribute,Relevance");
    };
    std::string source;
    if (entity_type == 0) {
      source =
          Cat(given(kProcData), " FROM tblProcInstanceData ", " WHERE FKProcInstanceID = ", entity);
    } else if (all_tasks) {
      source = Cat(DataColumns(kTaskData), ",tblActivityInstanceData.FKActivityInstanceID AS EID, ",
                   type, " AS EType,tblActivityInstanceData.TaskIndex AS IIndex,", case_text,
                   " AS CaseID,tblWorkitems.ResourceID,tblWorkitems.ResourceType,"
                   "tblWorkitems.ResourceName,LookupTypeCode,ListAttribute,Relevance",
                   " FROM tblActivityInstanceData,tblWorkitems ",
                   " WHERE tblActivityInstanceData.FKActivityInstanceID = "
                   "tblWorkitems.FKActivityInstanceID ",
                   " AND tblActivityInstanceData.TaskIndex = tblWorkitems.TaskIndex ",
                   " AND tblActivityInstanceData.FKActivityInstanceID = ", entity);
    } else {
      source = Cat(given(kTaskData), " FROM tblActivityInstanceData  ",
                   " WHERE FKActivityInstanceID = ", entity, " AND TasKIndex = ", task);
    }

    StartSession();
    auto rows = Rows(source);
    while (rows->GetNext()) {
      const auto values =
          dp::FormatFields(dp::RowFields(*rows->CurrentItem(), kSourceColumns), kCaseLayout);
      const std::string key = NextID(kCaseDataKeys);
      NonQuery(Cat(kCaseInsert, key, ",", dp::Joined(values, 0, values.size()), ")"));
    }
    if (one_task) {
      const auto& p = kObsoleteData;
      NonQuery(
          Cat(p[0], type, p[1], type, p[2], entity, p[3], type, p[4], entity, p[5], entity, p[6]));
    }
    EndSession();
    // Success is the absence of an error; the result is always false.
    return false;
  });
}

}  // namespace orvmysql
