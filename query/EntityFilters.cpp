#include "query/EntityFilters.h"

#include <span>

#include "access/ErrorHandling.h"
#include "orvmysql/ConditionBuilder.h"
#include "orvmysql/Query.h"
#include "query/TextUtil.h"

namespace orvmysql {

namespace {

// One attribute: alias, schema name (the column and the key), the name a
// filter uses (the schema name when empty) and the data type code.
struct AttributeRow {
  std::string_view alias;
  std::string_view schema;
  int32_t type;
  std::string_view name = {};
};

constexpr std::string_view kProcessInstance = "tblProcessInstance";
constexpr std::string_view kActivityInstance = "tblActivityInstance";
constexpr std::string_view kWorkitems = "tblWorkitems";
constexpr std::string_view kMessages = "tblMessages";
constexpr std::string_view kRecipients = "tblMsgReceipent";

constexpr AttributeRow kProcInstanceRows[] = {
    {kProcessInstance, "ProcInstanceID", kAttrPrimaryKey},
    {kProcessInstance, "FinishedOn", kAttrDateTime},
    {kProcessInstance, "CreatedOn", kAttrDateTime},
    {kProcessInstance, "StartedOn", kAttrDateTime},
    {kProcessInstance, "ScheduledStartTime", kAttrDateTime},
    {kProcessInstance, "ScheduledEndTime", kAttrDateTime},
    {kProcessInstance, "ScheduledTimeout", kAttrDateTime},
    {kProcessInstance, "State", kAttrBitMask},
    {kProcessInstance, "Priority", kAttrSmallNumber},
    {kProcessInstance, "Note", kAttrLongText},
    {kProcessInstance, "ProcInstanceName", kAttrText},
    {kProcessInstance, "CreatorID", kAttrText},
    {kProcessInstance, "CreatorType", kAttrText},
    {kProcessInstance, "CreatorName", kAttrText},
    {kProcessInstance, "GUID", kAttrText},
    {kProcessInstance, "TreeID", kAttrText},
    {kProcessInstance, "FKProcDefID", kAttrForeignKey},
    {kProcessInstance, "FKParentProcInstanceID", kAttrForeignKey},
};

constexpr AttributeRow kActivityInstanceRows[] = {
    {kActivityInstance, "ActivityInstanceID", kAttrPrimaryKey},
    {kActivityInstance, "State", kAttrBitMask},
    {kActivityInstance, "ScheduledStartTime", kAttrDateTime},
    {kActivityInstance, "ScheduledEndTime", kAttrDateTime},
    {kActivityInstance, "ScheduledTimeout", kAttrDateTime},
    {kActivityInstance, "FinishedOn", kAttrDateTime},
    {kActivityInstance, "CreatedOn", kAttrDateTime},
    {kActivityInstance, "StartedOn", kAttrDateTime},
    {kActivityInstance, "DisplayName", kAttrText},
    {kActivityInstance, "Threshold", kAttrText},
    {kActivityInstance, "ActivityInstanceIndex", kAttrText},
    {kActivityInstance, "FKThreadInstanceID", kAttrText},
    {kActivityInstance, "FKActivityProcDefID", kAttrText},
    {kActivityInstance, "FKActivityID", kAttrForeignKey},
    {kActivityInstance, "FKProcInstanceID", kAttrForeignKey},
    {kActivityInstance, "FKPathInstanceID", kAttrForeignKey},
    {kActivityInstance, "FKSplitInstanceID", kAttrForeignKey},
    {kActivityInstance, "ActivityType", kAttrSmallNumber},
    {kActivityInstance, "ActivityHandlerType", kAttrSmallNumber},
    {kActivityInstance, "Trigger", kAttrSmallNumber},
    {kActivityInstance, "Priority", kAttrSmallNumber},
    {kActivityInstance, "ExtendedAttributes", kAttrLongText},
    {kActivityInstance, "ResourceSet", kAttrLongText},
    {kActivityInstance, "ActivityNote", kAttrLongText},
    {"tblActivities", "ActivityName", kAttrText},
};

constexpr AttributeRow kMessageRows[] = {
    {kMessages, "MessageID", kAttrPrimaryKey},    {kMessages, "Subject", kAttrText},
    {kMessages, "Message", kAttrLongText},        {kMessages, "SenderID", kAttrText},
    {kMessages, "SenderType", kAttrText},         {kMessages, "SenderName", kAttrText},
    {kMessages, "SenderEmailID", kAttrText},      {kMessages, "MessageToken", kAttrText},
    {kMessages, "MessageType", kAttrSmallNumber}, {kMessages, "MessageDate", kAttrDateTime},
    {kMessages, "HasAttachments", kAttrBoolean},  {kMessages, "Direction", kAttrSmallNumber},
    {kMessages, "Priority", kAttrSmallNumber},    {kMessages, "State", kAttrBitMask},
    {kRecipients, "PartyID", kAttrPrimaryKey},    {kRecipients, "RecepientID", kAttrText},
    {kRecipients, "RecepientType", kAttrText},    {kRecipients, "RecepientName", kAttrText},
    {kRecipients, "RecepientEmailID", kAttrText}, {kRecipients, "FKMessageID", kAttrForeignKey},
    {kRecipients, "DisplayMask", kAttrBitMask},
};

constexpr AttributeRow kWorkitemRows[] = {
    {kWorkitems, "WorkitemID", kAttrPrimaryKey},
    {kWorkitems, "ResourceID", kAttrText},
    {kWorkitems, "ResourceType", kAttrText},
    {kWorkitems, "ResourceName", kAttrText},
    {kWorkitems, "Subject", kAttrText},
    {kWorkitems, "Note", kAttrLongText},
    {kWorkitems, "State", kAttrBitMask},
    {kWorkitems, "FKActivityInstanceID", kAttrForeignKey},
    {kWorkitems, "WorkitemActivityInstanceType", kAttrSmallNumber},
    {kWorkitems, "FKProcInstanceID", kAttrForeignKey},
    {kWorkitems, "AcknowledgedOn", kAttrDateTime},
    {kWorkitems, "FinishedOn", kAttrDateTime},
    {kWorkitems, "CreatedOn", kAttrDateTime},
    {kWorkitems, "StartedOn", kAttrDateTime},
    {kWorkitems, "TaskIndex", kAttrSmallNumber},
    {kWorkitems, "ScheduledStartTime", kAttrDateTime},
    {kWorkitems, "ScheduledEndTime", kAttrDateTime},
    {kWorkitems, "ScheduledTimeout", kAttrDateTime},
    {kWorkitems, "Priority", kAttrSmallNumber},
    {kWorkitems, "DisplayMask", kAttrBitMask},
    {kActivityInstance, "FKActivityID", kAttrForeignKey},
    // The process view's columns.
    {kProcessInstance, "ProcInstanceName", kAttrText},
    {kProcessInstance, "CreatorID", kAttrText},
    {kProcessInstance, "CreatorType", kAttrText},
    {kProcessInstance, "CreatorName", kAttrText},
    // Found under DisplayName; the name ActivityName is carried along.
    {kActivityInstance, "DisplayName", kAttrText, "ActivityName"},
};

std::shared_ptr<CAttributes> BuildMap(std::span<const AttributeRow> rows,
                                      std::string_view location) {
  return detail::Guard({location}, [&] {
    auto map = std::make_shared<CAttributes>();
    for (const AttributeRow& row : rows) {
      map->Add(std::string(row.alias), std::string(row.schema),
               std::string(row.name.empty() ? row.schema : row.name), row.type);
    }
    return map;
  });
}

const std::shared_ptr<CAttributes>& Cached(std::shared_ptr<CAttributes>& cache,
                                           std::shared_ptr<CAttributes> (*build)()) {
  if (!cache) cache = build();
  return cache;
}

// The condition text and the order text, joined by a blank.
std::string Tail(const CQuery& query, const std::shared_ptr<CAttributes>& map,
                 std::string_view location) {
  std::string condition;
  if (query.Criteria()) {
    std::string where = CConditionToStringBuilder().ToString(query.Criteria(), map);
    if (!detail::TrimBlanks(where).empty()) condition = " WHERE " + where;
  }
  std::string order;
  for (const auto& key : *query.OrderBy()) {
    const auto attribute = map->Item(key->AttributeName());
    if (!attribute) {
      detail::RaiseError(kMsgUnknownAttribute, location, {Variant(key->AttributeName())});
    }
    order += ',' + attribute->EntityAlias() + '.' + attribute->SchemaName() +
             (key->SortOrder() != dsAscending ? " DESC" : " ASC");
  }
  if (!order.empty()) order.replace(0, 1, " ORDER BY ");
  return condition + " " + order;
}

// Reads the document and renders its tail against the map.
template <class Finish>
auto ParseFilter(std::string_view filter, std::shared_ptr<CAttributes>& attributes,
                 std::shared_ptr<CAttributes> (*build)(), std::string_view location,
                 Finish&& finish) {
  return detail::Guard({location}, [&] {
    CQuery query;
    query.FromXML(filter);
    const auto& map = Cached(attributes, build);
    return finish(query, map, Tail(query, map, location));
  });
}

// Work-item columns around Note, which the process view must qualify.
constexpr std::string_view kWorkitemColumnsLead =
    "WorkitemID,ResourceID,ResourceType,resourceName,Subject,";
constexpr std::string_view kWorkitemColumnsTail =
    ",tblWorkitems.State,FKActivityInstanceID,WorkitemActivityInstanceType,"
    "tblWorkitems.FKProcInstanceID,AcknowledgedOn,tblWorkitems.FinishedOn,tblWorkitems.CreatedOn,"
    "tblWorkitems.StartedOn,TaskIndex,tblWorkitems.Priority,tblWorkitems.ScheduledStartTime,"
    "tblWorkitems.ScheduledEndTime,tblWorkitems.ScheduledTimeout,tblWorkitems.DisplayMask,"
    "tblActivityInstance.FKActivityID";
constexpr std::string_view kWorkitemFrom =
    " FROM tblWorkitems INNER JOIN tblActivityInstance ON tblWorkitems.FKActivityInstanceID = "
    "tblActivityInstance.ActivityInstanceID ";
constexpr std::string_view kProcessViewColumns =
    "tblProcessInstance.ProcInstanceName,tblProcessInstance.CreatorID,"
    "tblProcessInstance.CreatorType,tblProcessInstance.CreatorName,"
    "tblActivityInstance.DisplayName AS ActivityName,";
constexpr std::string_view kProcessViewJoin =
    " INNER JOIN tblProcessInstance ON tblWorkitems.FKProcInstanceID = "
    "tblProcessInstance.ProcInstanceID ";

std::string WorkitemHead(const std::string& entity) {
  std::string head = "SELECT ";
  if (entity.empty() || detail::SameText(entity, kWorkitems)) {
    head += kWorkitemColumnsLead;
    head += "Note";
    head += kWorkitemColumnsTail;
    head += kWorkitemFrom;
  } else if (detail::SameText(entity, "vWorkitemsProcess")) {
    head += kProcessViewColumns;
    head += kWorkitemColumnsLead;
    head += "tblWorkitems.Note";
    head += kWorkitemColumnsTail;
    head += kWorkitemFrom;
    head += kProcessViewJoin;
  } else {
    ThrowRuntimeError(kErrInvalidCall, "unknown work-item entity '" + entity + "'");
  }
  return head;
}

constexpr std::string_view kMessageColumnsTail =
    ", tblMessages.MessageID AS MessageOID,tblMessages.Subject,tblMessages.Message,"
    "tblMessages.SenderID,tblMessages.SenderType,tblMessages.SenderName,tblMessages.SenderEmailID,"
    "tblMessages.MessageType,tblMessages.MessageToken,tblMessages.MessageDate,"
    "tblMessages.HasAttachments,tblMessages.Direction,tblMessages.Priority,tblMessages.State";

// The first attribute name among the conditions and sort keys of the query
// whose column belongs to the table of the alias; "" when there is none.
std::string FirstNamedIn(const CConditionExpression& expression, const CAttributes& map,
                         std::string_view alias) {
  for (const auto& nested : *expression.ConditionExpressions()) {
    std::string name = FirstNamedIn(*nested, map, alias);
    if (!name.empty()) return name;
  }
  for (const auto& condition : *expression.Conditions()) {
    const auto attribute = map.Item(condition->AttributeName());
    if (attribute && attribute->EntityAlias() == alias) return condition->AttributeName();
  }
  return {};
}

std::string FirstNamedIn(const CQuery& query, const CAttributes& map, std::string_view alias) {
  if (query.Criteria()) {
    std::string name = FirstNamedIn(*query.Criteria(), map, alias);
    if (!name.empty()) return name;
  }
  for (const auto& key : *query.OrderBy()) {
    const auto attribute = map.Item(key->AttributeName());
    if (attribute && attribute->EntityAlias() == alias) return key->AttributeName();
  }
  return {};
}

bool ReachesRecipients(const CQuery& query, const CAttributes& map) {
  return detail::SameText(query.EntityName(), "tblReceivedMessages") ||
         !FirstNamedIn(query, map, kRecipients).empty();
}

}  // namespace

std::shared_ptr<CAttributes> WorkitemAttributes() {
  return BuildMap(kWorkitemRows, "CWorkitemsDP:GetAttributes Ln ");
}

std::shared_ptr<CAttributes> ProcInstanceAttributes() {
  return BuildMap(kProcInstanceRows, "CProcInstanceDP:GetAttributes Ln ");
}

std::shared_ptr<CAttributes> ActivityInstanceAttributes() {
  return BuildMap(kActivityInstanceRows, "CActivityInstanceDP:GetAttributes Ln ");
}

std::shared_ptr<CAttributes> MessageAttributes() {
  return BuildMap(kMessageRows, "CMessageDP:GetAttributes Ln ");
}

std::string ParseWorkitemFilter(std::string_view filter, std::shared_ptr<CAttributes>& attributes) {
  return ParseFilter(filter, attributes, &WorkitemAttributes, "CWorkitemsDP:ParseFilter Ln ",
                     [](const CQuery& query, const auto&, std::string tail) {
                       return WorkitemHead(query.EntityName()) + " " + tail;
                     });
}

std::string ParseProcInstanceFilter(std::string_view filter,
                                    std::shared_ptr<CAttributes>& attributes) {
  return ParseFilter(filter, attributes, &ProcInstanceAttributes, "CProcInstanceDP:ParseFilter Ln ",
                     [](const CQuery&, const auto&, std::string tail) { return tail; });
}

std::string ParseActivityInstanceFilter(std::string_view filter,
                                        std::shared_ptr<CAttributes>& attributes) {
  return ParseFilter(filter, attributes, &ActivityInstanceAttributes,
                     "CActivityInstanceDP:ParseFilter Ln ",
                     [](const CQuery&, const auto&, std::string tail) { return tail; });
}

MessageFilter ParseMessageFilter(std::string_view filter,
                                 std::shared_ptr<CAttributes>& attributes) {
  return ParseFilter(
      filter, attributes, &MessageAttributes, "CMessageDP:ParseFilter Ln ",
      [](const CQuery& query, const std::shared_ptr<CAttributes>& map, std::string tail) {
        MessageFilter parts;
        parts.condition = std::move(tail);
        parts.limit = query.MaxRows() > 0 ? query.MaxRows() : -1;
        parts.message_attribute = FirstNamedIn(query, *map, kMessages);
        const bool recipients = ReachesRecipients(query, *map);
        parts.from = recipients ? "FROM tblMessages INNER JOIN tblMsgReceipent ON "
                                  "tblMessages.MessageId = tblMsgReceipent.FKMessageId"
                                : "FROM tblMessages ";
        parts.distinct = recipients || query.Distinct() ? "DISTINCT" : "";
        parts.columns =
            detail::SameText(query.EntityName(), "tblReceivedMessages")
                ? "tblMsgReceipent.DisplayMask AS DisplayMask,tblMsgReceipent.PartyID AS MessageID"
                : "0 AS DisplayMask,tblMessages.MessageID AS MessageID";
        parts.columns += kMessageColumnsTail;
        return parts;
      });
}

}  // namespace orvmysql
