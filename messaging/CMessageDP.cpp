#include "messaging/CMessageDP.h"

#include <cstdint>
#include <span>

#include "access/General.h"
#include "access/NumberText.h"
#include "access/SqlValues.h"
#include "query/EntityFilters.h"

namespace orvmysql {

namespace {

using dp::As;

// The message array: positions 0 to 12 are the message's columns (Add reads
// these), 13 and 14 the DisplayMask and PartyID of a recipient row (Update).
constexpr As kMessageLayout[] = {
    As::Text,            // 0 SenderID
    As::TextOrNull,      // 1 Subject
    As::LongTextOrNull,  // 2 Message, never cut
    As::Text,            // 3 SenderType
    As::Text,            // 4 SenderName
    As::Text,            // 5 SenderEmailID
    As::Long,            // 6 MessageType
    As::Text,            // 7 MessageToken
    As::DateTime,        // 8 MessageDate
    As::Boolean,         // 9 HasAttachments
    As::Long,            // 10 Direction
    As::Long,            // 11 Priority
    As::Long,            // 12 State
    As::Long,            // 13 recipient DisplayMask
};
constexpr std::size_t kMessageColumns = 13;
constexpr std::size_t kType = 6, kDirection = 10, kDisplayMask = 13, kPartyID = 14;

constexpr dp::Assignment kSet[] = {
    {" SenderID = ", 0},       {",Subject = ", 1},      {",Message = ", 2},
    {",SenderType = ", 3},     {",SenderName = ", 4},   {",SenderEmailID = ", 5},
    {",MessageType = ", 6},    {",MessageToken = ", 7}, {",MessageDate = ", 8},
    {",HasAttachments = ", 9}, {",Direction = ", 10},   {",Priority = ", 11},
    {",State = ", 12},
};

constexpr As kRecipientLayout[] = {
    As::Text,  // 0 RecepientID
    As::Text,  // 1 RecepientType
    As::Text,  // 2 RecepientName
    As::Text,  // 3 RecepientEmailID
    As::Long,  // 4 DisplayMask
};

constexpr std::string_view kInsertMessage =
    " INSERT INTO tblMessages (MessageID,SenderID,Subject,Message,SenderType,SenderName,"
    "SenderEmailID,MessageType,MessageToken,MessageDate,HasAttachments,Direction,Priority,State)"
    " VALUES (";
constexpr std::string_view kInsertRecipient =
    " INSERT INTO tblMsgReceipent (PartyID,RecepientID,RecepientType,RecepientName,"
    "RecepientEmailID,FKMessageID,DisplayMask) VALUES (";

constexpr std::string_view kMessageById =
    "SELECT 0 AS DisplayMask,tblMessages.MessageID AS MessageID, tblMessages.MessageID AS "
    "MessageOID,Subject,Message,SenderID,SenderType,SenderName,SenderEmailID,MessageType,"
    "MessageToken,MessageDate,HasAttachments,Direction,Priority,State  FROM tblMessages   WHERE "
    "tblMessages.MessageId = ";
constexpr std::string_view kMessageByParty =
    "SELECT tblMsgReceipent.DisplayMask AS DisplayMask,tblMsgReceipent.PartyID AS MessageID, "
    "tblMessages.MessageID AS MessageOID,Subject,Message,SenderID,SenderType,SenderName,"
    "SenderEmailID,MessageType,MessageToken,MessageDate,HasAttachments,Direction,Priority,State"
    " FROM tblMessages INNER JOIN tblMsgReceipent ON tblMessages.MessageId = "
    "tblMsgReceipent.FKMessageId WHERE tblMsgReceipent.PartyID = ";

constexpr std::string_view kRecipients = "SELECT tblMsgReceipent.* FROM tblMsgReceipent ";

// The columns SendMessage reads from the message and how the copy writes
// each of them, in the order of the copy's column list after its direction.
struct CopiedColumn {
  const char* name;
  std::string (*write)(const Variant& v);
};
std::string Text255OrNull(const Variant& v) {
  return sql::TextOrNull(v, true);
}
std::string LongTextOrNull(const Variant& v) {
  return sql::TextOrNull(v, false);
}
constexpr CopiedColumn kCopiedColumns[] = {
    {"Subject", &Text255OrNull},       {"Message", &LongTextOrNull},
    {"SenderID", &Text255OrNull},      {"SenderType", &Text255OrNull},
    {"SenderName", &Text255OrNull},    {"SenderEmailID", &Text255OrNull},
    {"MessageType", &sql::LongOrNull}, {"MessageToken", &Text255OrNull},
    {"HasAttachments", &sql::Boolean}, {"Priority", &sql::LongOrNull},
    {"State", &sql::LongOrNull},
};

std::string TextOrEmpty255(const Variant& v) {
  return sql::TextOrEmpty(v, true);
}
std::string LongTextOrEmpty(const Variant& v) {
  return sql::TextOrEmpty(v, false);
}
// The copies of a recipient and of an attachment read NULL as empty text.
constexpr CopiedColumn kCopiedRecipient[] = {
    {"RecepientID", &TextOrEmpty255},
    {"RecepientType", &TextOrEmpty255},
    {"RecepientName", &TextOrEmpty255},
    {"RecepientEmailID", &TextOrEmpty255},
};
constexpr CopiedColumn kCopiedAttachment[] = {
    {"AttachmentNumber", &sql::LongOrNull},
    {"MimeType", &TextOrEmpty255},
    {"FileName", &TextOrEmpty255},
    {"Body", &LongTextOrEmpty},
};

}  // namespace

// What SendMessage copies of one table: the rows the select finds for the
// message, each inserted as head + new key + the text between + its values +
// tail.
struct MessageCopyStep {
  std::string_view select;
  std::span<const CopiedColumn> columns;
  int32_t entity_type_code;
  std::string_view insert_head;
  std::string_view tail;
};

namespace {

constexpr MessageCopyStep kMessageCopy{
    " SELECT Subject,Message,SenderID,SenderType,SenderName,SenderEmailID,MessageType,"
    "MessageToken,HasAttachments,Priority,State FROM tblMessages WHERE MessageId = ",
    kCopiedColumns, -18,
    " INSERT INTO tblMessages (MessageID,MessageDate,Direction,Subject,Message,SenderID,"
    "SenderType,SenderName,SenderEmailID,MessageType,MessageToken,HasAttachments,Priority,"
    "State ) VALUES (",
    ")"};
constexpr MessageCopyStep kRecipientCopy{
    " SELECT RecepientID,RecepientType,RecepientName,RecepientEmailID FROM tblMsgReceipent "
    "WHERE FKMessageID = ",
    kCopiedRecipient, -25,
    " INSERT INTO tblMsgReceipent (PartyID,FKMessageID,RecepientID,RecepientType,"
    "RecepientName,RecepientEmailID,DisplayMask) VALUES (",
    ",0)"};
constexpr MessageCopyStep kAttachmentCopy{
    " SELECT AttachmentNumber,MimeType,FileName,Body FROM tblAttachments WHERE FKMessageID = ",
    kCopiedAttachment, -19,
    " INSERT INTO tblAttachments (AttachmentID,FKMessageID,AttachmentNumber,MimeType,FileName,"
    "Body) VALUES (",
    ")"};

// Values of the row's columns, formatted and joined by ",".
std::string RowValues(IListItem& row, std::span<const CopiedColumn> columns) {
  std::string values;
  for (const CopiedColumn& column : columns) {
    if (!values.empty()) values += ',';
    values += column.write(row.GetValue(column.name));
  }
  return values;
}

std::string LimitText(const MessageFilter& filter, std::string_view lead) {
  return filter.limit != -1 ? std::string(lead) + std::to_string(filter.limit) : std::string();
}

}  // namespace

std::string MessageToken(std::string_view message_type, std::string_view key) {
  std::string token = "MSG:";
  token += message_type;
  if (!key.empty() && key.front() == '-') {
    token += '-';
    key.remove_prefix(1);
  }
  if (key.size() < 10) token.append(10 - key.size(), '0');
  token += key;
  return token;
}

// IMessageDP

int32_t CMessageDP::Add(const FieldArray& fields) {
  return detail::Guard({"CMessageDP: Add Function ("}, [&] {
    const auto v = dp::FormatFields(fields, std::span(kMessageLayout).first(kMessageColumns));
    const std::string values = dp::Joined(v, 0, v.size());
    return InsertWithNewKey(
        -18,
        [&](const std::string& key) {
          return std::string(kInsertMessage) + key + "," + values + ")";
        },
        [&](const std::string& key) {
          NonQuery(" UPDATE tblMessages SET MessageToken = '" + MessageToken(v[kType], key) +
                   "' WHERE MessageID = " + key);
        });
  });
}

int32_t CMessageDP::AddReceipent(int32_t message_id, const FieldArray& fields) {
  return detail::Guard({"CMessageDP: IMessageDP_AddReceipent Function ("}, [&] {
    const auto v = dp::FormatFields(fields, kRecipientLayout);
    const std::string tail =
        "," + dp::Joined(v, 0, 4) + "," + std::to_string(message_id) + "," + v[4] + ")";
    return InsertWithNewKey(
        -25, [&](const std::string& key) { return std::string(kInsertRecipient) + key + tail; });
  });
}

bool CMessageDP::DeleteReceipent(int32_t message_id, const std::string& name) {
  return detail::Guard({"CMessageDP: IMessageDP_DeleteReceipent Function ("}, [&] {
    // Quoted before the session opens, so that a refused name costs no connect.
    const std::string recipient = sql::Text(Variant(name));
    return InSession([&] {
      NonQuery("DELETE FROM tblMsgReceipent WHERE FKMessageID = " + std::to_string(message_id) +
               " AND RecepientName = " + recipient);
      return true;
    });
  });
}

std::shared_ptr<IListIterator> CMessageDP::GetReceipentsForAMessage(int32_t message_id) {
  return detail::Guard({"CMessageDP:IMessageDP_GetReceipentsForAMessage Function ("},
                       [&] { return RowsWhere(kRecipients, " WHERE FKMessageID = ", message_id); });
}

std::shared_ptr<IListIterator> CMessageDP::GetMessageById(int32_t id) {
  return detail::Guard({"CMessageDP:IMessageDP_GetMessageById Function ("}, [&] {
    if (id >= 0) return Rows(std::string(kMessageById) + std::to_string(id));
    return Rows(std::string(kMessageByParty) + std::to_string(-static_cast<int64_t>(id)));
  });
}

std::shared_ptr<IListIterator> CMessageDP::Load(const std::string& filter) {
  return detail::Guard({"CMessageDP:IMessageDP_Load Function ("}, [&] {
    const MessageFilter parts = ParseMessageFilter(filter, attributes_);
    return Rows("SELECT " + parts.distinct + " " + parts.columns + " " + parts.from + " " +
                parts.condition + " " + LimitText(parts, " LIMIT "));
  });
}

bool CMessageDP::Delete(int32_t id) {
  return detail::Guard({"CMessageDP: IMessageDP_Delete Function ("}, [&] {
    return InSession([&] {
      int32_t message = id;
      int32_t recipients = 0;
      std::string party;
      if (id < 0) {
        party = std::to_string(-static_cast<int64_t>(id));
        message =
            Variant(Scalar("SELECT FKMessageID FROM tblMsgReceipent WHERE PartyID = " + party, "0"))
                .ToLong();
        recipients = Variant(Scalar("SELECT COUNT(*) FROM tblMsgReceipent WHERE FKMessageID = " +
                                        std::to_string(message),
                                    "0"))
                         .ToLong();
      }
      // A recipient view whose row exists names its message, and the whole
      // message goes, whoever else it was addressed to.
      if (message > 0 || recipients <= 1) {
        const std::string key = std::to_string(message);
        NonQuery("DELETE FROM tblAttachments WHERE FKMessageID = " + key);
        NonQuery("DELETE FROM tblMsgReceipent WHERE FKMessageID = " + key);
        NonQuery("DELETE FROM tblMessages WHERE MessageID = " + key);
      } else {
        NonQuery("DELETE FROM tblMsgReceipent WHERE PartyID = " + party);
      }
      return true;
    });
  });
}

std::shared_ptr<IListIterator> CMessageDP::LoadReceipent(const std::string& filter) {
  return detail::Guard({"CMessageDP:IMessageDP_LoadReceipent Function ("}, [&] {
    const MessageFilter parts = ParseMessageFilter(filter, attributes_);
    // The statement reads the recipient table alone.
    if (!parts.message_attribute.empty()) {
      detail::RaiseError(kMsgUnknownAttribute, "CMessageDP:IMessageDP_LoadReceipent",
                         {Variant(parts.message_attribute)});
    }
    return Rows(std::string(kRecipients) + " " + parts.condition + " " +
                LimitText(parts, "LIMIT "));
  });
}

bool CMessageDP::SendMessage(int32_t message_id) {
  return detail::Guard({"CMessageDP:IMessageDP_SendMessage Function ("}, [&] {
    const std::string id = std::to_string(message_id);
    const bool sent = NonQuery("UPDATE tblMessages SET State = 1 WHERE MessageID = " + id +
                               " AND State = 0 AND Direction = 1") > 0;
    if (sent) {
      const std::string now = ConvertDateTimeIntoSQLFormat(Date::Now());
      const int32_t inserted = CopyRows(kMessageCopy, id, "," + now + ",0,");
      const std::string token =
          Scalar(" SELECT MessageToken FROM tblMessages WHERE MessageID = " + id, "");
      int32_t copy = Variant(Scalar(" SELECT MessageID FROM tblMessages WHERE MessageToken = '" +
                                        GetQuotedString(token, true) +
                                        "' AND MessageDate = " + now + " AND Direction = 0",
                                    "-1"))
                         .ToLong();
      // A message without a token gives its copy a NULL token, which the
      // look-up by token cannot find: the copy is then the row just inserted.
      if (copy == -1) copy = inserted;
      if (copy != -1) {
        const std::string owner = "," + std::to_string(copy) + ",";
        CopyRows(kRecipientCopy, id, owner);
        CopyRows(kAttachmentCopy, id, owner);
      }
    }
    EndSession();
    return sent;
  });
}

int32_t CMessageDP::CopyRows(const MessageCopyStep& copy, const std::string& message_id,
                             const std::string& between) {
  int32_t last = -1;
  auto rows = Rows(std::string(copy.select) + message_id);
  while (rows->GetNext()) {
    const std::string values = RowValues(*rows->CurrentItem(), copy.columns);
    const std::string key = NextID(copy.entity_type_code);
    NonQuery(std::string(copy.insert_head) + key + between + values + std::string(copy.tail));
    last = Variant(key).ToLong();
  }
  return last;
}

bool CMessageDP::Update(const std::string& message_id, const FieldArray& fields) {
  return detail::Guard({"CMessageDP: Update Function ("}, [&] {
    // The id is pasted as the caller wrote it, so it must be a whole number.
    if (!IsDecimalNumber(message_id, true)) {
      ThrowRuntimeError(kErrTypeMismatch, "the message id '" + message_id + "' is not a number");
    }
    const auto v = dp::FormatFields(fields, kMessageLayout);
    // The recipient row matters only for an incoming message.
    const int32_t party = v[kDirection] == "0" ? sql::At(fields, kPartyID).ToLong() : 0;
    NonQuery(" UPDATE tblMessages SET " + dp::Assignments(kSet, v) +
             " WHERE MessageID = " + message_id);
    if (party > 0) {
      NonQuery(" UPDATE tblMsgReceipent SET  DisplayMask = " + v[kDisplayMask] +
               " WHERE PartyID = " + std::to_string(party));
    }
    return true;
  });
}

}  // namespace orvmysql
