// The messaging providers against a recording connection: the exact text of
// every statement, one case per line of the table, the session calls, and the
// input that is refused before anything runs. What the database stores is
// proved by the live tests.

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "QueryTestSupport.h"
#include "messaging/CAttachmentDP.h"
#include "messaging/CMessageDP.h"
#include "support/ErrorCapture.h"
#include "support/RecordingConnection.h"

namespace orvtest {
namespace {

using orvmysql::CAttachmentDP;
using orvmysql::CMessageDP;
using orvmysql::Date;
using orvmysql::FieldArray;
using orvmysql::Null;

const std::string kPlainColumns =
    "0 AS DisplayMask,tblMessages.MessageID AS MessageID, tblMessages.MessageID AS MessageOID,"
    "tblMessages.Subject,tblMessages.Message,tblMessages.SenderID,tblMessages.SenderType,"
    "tblMessages.SenderName,tblMessages.SenderEmailID,tblMessages.MessageType,"
    "tblMessages.MessageToken,tblMessages.MessageDate,tblMessages.HasAttachments,"
    "tblMessages.Direction,tblMessages.Priority,tblMessages.State";
const std::string kReceivedColumns =
    "tblMsgReceipent.DisplayMask AS DisplayMask,tblMsgReceipent.PartyID AS MessageID, "
    "tblMessages.MessageID AS MessageOID,tblMessages.Subject,tblMessages.Message,"
    "tblMessages.SenderID,tblMessages.SenderType,tblMessages.SenderName,"
    "tblMessages.SenderEmailID,tblMessages.MessageType,tblMessages.MessageToken,"
    "tblMessages.MessageDate,tblMessages.HasAttachments,tblMessages.Direction,"
    "tblMessages.Priority,tblMessages.State";
const std::string kJoin =
    "FROM tblMessages INNER JOIN tblMsgReceipent ON tblMessages.MessageId = "
    "tblMsgReceipent.FKMessageId";
const std::string kViewColumns =
    "Subject,Message,SenderID,SenderType,SenderName,SenderEmailID,MessageType,MessageToken,"
    "MessageDate,HasAttachments,Direction,Priority,State";

FieldArray Message(int32_t direction, const orvmysql::Variant& party = 0) {
  return {
      "u-1", "",        "", "user", "", "ann@x", 2, "tok", Date::FromParts(2024, 5, 2, 9, 30, 0),
      true,  direction, 3,  0,      4,  party};
}

std::string Query(const std::string& entity, std::shared_ptr<orvmysql::CConditionExpression> where,
                  int32_t max_rows) {
  orvmysql::CQuery query;
  query.SetEntityName(entity);
  query.SetCriteria(std::move(where));
  query.SetMaxRows(max_rows);
  return query.ToXML();
}

Date FixedNow() {
  return Date::FromParts(2024, 6, 1, 12, 0, 0);
}

struct Case {
  std::string what;
  std::function<void(RecordingConnection&)> script;  // answers, before the call
  std::function<void(CMessageDP&, CAttachmentDP&)> call;
  std::vector<std::string> expected;  // without the key generator's statements
};

class MessagingStatements : public ::testing::Test {
 protected:
  void SetUp() override { orvmysql::SetClockForTesting(&FixedNow); }
  void TearDown() override { orvmysql::SetClockForTesting(nullptr); }

  static void Run(const std::vector<Case>& cases) {
    for (const Case& c : cases) {
      auto connection = std::make_shared<RecordingConnection>();
      if (c.script) c.script(*connection);
      c.call(*On<CMessageDP>(connection), *On<CAttachmentDP>(connection));
      EXPECT_EQ(connection->Written(), c.expected) << c.what;
    }
  }
};

TEST_F(MessagingStatements, MessagesAndRecipients) {
  const std::string by_id =
      "SELECT 0 AS DisplayMask,tblMessages.MessageID AS MessageID, "
      "tblMessages.MessageID AS MessageOID," +
      kViewColumns + "  FROM tblMessages   WHERE tblMessages.MessageId = ";
  const std::string by_party =
      "SELECT tblMsgReceipent.DisplayMask AS DisplayMask,tblMsgReceipent.PartyID AS MessageID, "
      "tblMessages.MessageID AS MessageOID," +
      kViewColumns + " " + kJoin + " WHERE tblMsgReceipent.PartyID = ";
  const std::string deletes_of_9[] = {"DELETE FROM tblAttachments WHERE FKMessageID = 9",
                                      "DELETE FROM tblMsgReceipent WHERE FKMessageID = 9",
                                      "DELETE FROM tblMessages WHERE MessageID = 9"};
  const std::string party_of_5 = "SELECT FKMessageID FROM tblMsgReceipent WHERE PartyID = 5";
  const auto ann = Cond("RecepientID", orvmysql::dcoEqualto, "ann");
  Run({
      {"Add",
       nullptr,
       [](auto& m, auto&) { EXPECT_EQ(m.Add(Message(1)), 42); },
       {" INSERT INTO tblMessages (MessageID,SenderID,Subject,Message,SenderType,SenderName,"
        "SenderEmailID,MessageType,MessageToken,MessageDate,HasAttachments,Direction,Priority,"
        "State) VALUES (42,'u-1',NULL,NULL,'user','','ann@x',2,'tok', '2024-05-02 09:30:00' ,1,1,"
        "3,0)",
        " UPDATE tblMessages SET MessageToken = 'MSG:20000000042' WHERE MessageID = 42"}},
      {"Add changing no row",
       [](auto& c) {
         c.affected = {{"INSERT", 0}};
       },
       [](auto& m, auto&) { EXPECT_EQ(m.Add(Message(1)), -1); },
       {" INSERT INTO tblMessages (MessageID,SenderID,Subject,Message,SenderType,SenderName,"
        "SenderEmailID,MessageType,MessageToken,MessageDate,HasAttachments,Direction,Priority,"
        "State) VALUES (42,'u-1',NULL,NULL,'user','','ann@x',2,'tok', '2024-05-02 09:30:00' ,1,1,"
        "3,0)"}},
      {"AddReceipent",
       nullptr,
       [](auto& m, auto&) {
         m.AddReceipent(7, {"ann", "user", "Ann O'Hara", "", 3});
       },
       {" INSERT INTO tblMsgReceipent (PartyID,RecepientID,RecepientType,RecepientName,"
        "RecepientEmailID,FKMessageID,DisplayMask) VALUES (42,'ann','user','Ann O''Hara','',7,3)"}},
      {"DeleteReceipent",
       nullptr,
       [](auto& m, auto&) { m.DeleteReceipent(7, "O'Hara"); },
       {"DELETE FROM tblMsgReceipent WHERE FKMessageID = 7 AND RecepientName = 'O''Hara'"}},
      {"GetReceipentsForAMessage",
       nullptr,
       [](auto& m, auto&) { m.GetReceipentsForAMessage(7); },
       {"SELECT tblMsgReceipent.* FROM tblMsgReceipent  WHERE FKMessageID = 7"}},
      {"GetMessageById, plain",
       nullptr,
       [](auto& m, auto&) { m.GetMessageById(7); },
       {by_id + "7"}},
      {"GetMessageById, recipient",
       nullptr,
       [](auto& m, auto&) { m.GetMessageById(-5); },
       {by_party + "5"}},
      {"GetMessageById, lowest id",
       nullptr,
       [](auto& m, auto&) { m.GetMessageById(INT32_MIN); },
       {by_party + "2147483648"}},
      {"Load, no criteria",
       nullptr,
       [](auto& m, auto&) { m.Load(Query("", nullptr, -1)); },
       {"SELECT  " + kPlainColumns + " FROM tblMessages    "}},
      {"Load, inbox",
       nullptr,
       [&](auto& m, auto&) {
         m.Load(Query("tblReceivedMessages", Group(orvmysql::dloAnd, {ann}), 20));
       },
       {"SELECT DISTINCT " + kReceivedColumns + " " + kJoin +
        "  WHERE  (tblMsgReceipent.`RecepientID` = 'ann')    LIMIT 20"}},
      {"LoadReceipent",
       nullptr,
       [&](auto& m, auto&) { m.LoadReceipent(Query("", Group(orvmysql::dloAnd, {ann}), 5)); },
       {"SELECT tblMsgReceipent.* FROM tblMsgReceipent   WHERE  (tblMsgReceipent.`RecepientID` = "
        "'ann')   LIMIT 5"}},
      {"Delete",
       nullptr,
       [](auto& m, auto&) { m.Delete(9); },
       {deletes_of_9[0], deletes_of_9[1], deletes_of_9[2]}},
      {"Delete through a recipient: the whole message",
       [](auto& c) {
         c.scalars = {{"PartyID = 5", "9"}, {"COUNT(*)", "3"}};
       },
       [](auto& m, auto&) { m.Delete(-5); },
       {party_of_5, "SELECT COUNT(*) FROM tblMsgReceipent WHERE FKMessageID = 9", deletes_of_9[0],
        deletes_of_9[1], deletes_of_9[2]}},
      {"Delete through a missing recipient",
       [](auto& c) {
         c.scalars = {{"COUNT(*)", "2"}};
       },
       [](auto& m, auto&) { m.Delete(-5); },
       {party_of_5, "SELECT COUNT(*) FROM tblMsgReceipent WHERE FKMessageID = 0",
        "DELETE FROM tblMsgReceipent WHERE PartyID = 5"}},
      {"Update, incoming",
       nullptr,
       [](auto& m, auto&) { m.Update("7", Message(0, 5)); },
       {" UPDATE tblMessages SET  SenderID = 'u-1',Subject = NULL,Message = NULL,SenderType = "
        "'user',SenderName = '',SenderEmailID = 'ann@x',MessageType = 2,MessageToken = "
        "'tok',MessageDate =  '2024-05-02 09:30:00' ,HasAttachments = 1,Direction = 0,Priority = "
        "3,State = 0 WHERE MessageID = 7",
        " UPDATE tblMsgReceipent SET  DisplayMask = 4 WHERE PartyID = 5"}},
      {"Update, outgoing: no recipient, id pasted as written",
       nullptr,
       [](auto& m, auto&) { m.Update(" 7 ", Message(1, "not read")); },
       {" UPDATE tblMessages SET  SenderID = 'u-1',Subject = NULL,Message = NULL,SenderType = "
        "'user',SenderName = '',SenderEmailID = 'ann@x',MessageType = 2,MessageToken = "
        "'tok',MessageDate =  '2024-05-02 09:30:00' ,HasAttachments = 1,Direction = 1,Priority = "
        "3,State = 0 WHERE MessageID =  7 "}},
  });
}

TEST_F(MessagingStatements, SendMessageCopiesTheMessageItsRecipientsAndAttachments) {
  const std::string now = " '2024-06-01 12:00:00' ";
  const std::string mark =
      "UPDATE tblMessages SET State = 1 WHERE MessageID = 7 AND State = 0 AND Direction = 1";
  const std::string read =
      " SELECT Subject,Message,SenderID,SenderType,SenderName,SenderEmailID,MessageType,"
      "MessageToken,HasAttachments,Priority,State FROM tblMessages WHERE MessageId = 7";
  const std::string token = " SELECT MessageToken FROM tblMessages WHERE MessageID = 7";
  const std::string lookup =
      " SELECT MessageID FROM tblMessages WHERE MessageToken = "
      "'MSG:10000000007' AND MessageDate = " +
      now + " AND Direction = 0";
  const std::string copy_head =
      " INSERT INTO tblMessages (MessageID,MessageDate,Direction,Subject,Message,SenderID,"
      "SenderType,SenderName,SenderEmailID,MessageType,MessageToken,HasAttachments,Priority,"
      "State ) VALUES (42," +
      now + ",0,";
  const std::string recipients =
      " SELECT RecepientID,RecepientType,RecepientName,RecepientEmailID FROM tblMsgReceipent "
      "WHERE FKMessageID = 7";
  const std::string attachments =
      " SELECT AttachmentNumber,MimeType,FileName,Body FROM tblAttachments WHERE FKMessageID = 7";
  const auto message = [](RecordingConnection& c, const orvmysql::Variant& token) {
    c.rows.push_back(
        {"FROM tblMessages WHERE MessageId",
         {"Subject", "Message", "SenderID", "SenderType", "SenderName", "SenderEmailID",
          "MessageType", "MessageToken", "HasAttachments", "Priority", "State"},
         {{"It's done", Null, "u-1", "user", "  ", "", 1, token, 1, Null, 1}}});
    c.rows.push_back({"FROM tblMsgReceipent",
                      {"RecepientID", "RecepientType", "RecepientName", "RecepientEmailID"},
                      {{"ann", "user", "O'Hara", Null}, {"bob", "user", "Bob", "b@x"}}});
    c.rows.push_back({"FROM tblAttachments",
                      {"AttachmentNumber", "MimeType", "FileName", "Body"},
                      {{1, Null, "a.txt", "x\\y"}}});
  };
  const std::string copied_message =
      copy_head + "'It''s done',NULL,'u-1','user','',NULL,1,'MSG:10000000007',1,NULL,1)";
  const std::vector<std::string> copied_parties = {
      recipients,
      " INSERT INTO tblMsgReceipent (PartyID,FKMessageID,RecepientID,RecepientType,RecepientName,"
      "RecepientEmailID,DisplayMask) VALUES (42,30,'ann','user','O''Hara','',0)",
      " INSERT INTO tblMsgReceipent (PartyID,FKMessageID,RecepientID,RecepientType,RecepientName,"
      "RecepientEmailID,DisplayMask) VALUES (43,30,'bob','user','Bob','b@x',0)",
      attachments,
      " INSERT INTO tblAttachments (AttachmentID,FKMessageID,AttachmentNumber,MimeType,FileName,"
      "Body) VALUES (42,30,1,'','a.txt','x\\\\y')"};
  auto sequence = [&](std::vector<std::string> head) {
    head.insert(head.end(), copied_parties.begin(), copied_parties.end());
    return head;
  };
  Run({
      {"found again by token",
       [&](auto& c) {
         message(c, "MSG:10000000007");
         c.scalars = {{"SELECT MessageToken", "MSG:10000000007"}, {"WHERE MessageToken =", "30"}};
       },
       [](auto& m, auto&) { EXPECT_TRUE(m.SendMessage(7)); },
       sequence({mark, read, copied_message, token, lookup})},
      {"not sendable",
       [](auto& c) {
         c.affected = {{"SET State = 1", 0}};
       },
       [](auto& m, auto&) { EXPECT_FALSE(m.SendMessage(7)); },
       {mark}},
  });

  // Without a token the look-up finds nothing and the copy just inserted (key
  // 42) receives the recipients and the attachment.
  auto connection = std::make_shared<RecordingConnection>();
  message(*connection, Null);
  EXPECT_TRUE(On<CMessageDP>(connection)->SendMessage(7));
  const auto written = connection->Written();
  ASSERT_EQ(written.size(), 10u);
  EXPECT_EQ(written[2], copy_head + "'It''s done',NULL,'u-1','user','',NULL,1,NULL,1,NULL,1)");
  EXPECT_EQ(written[4],
            " SELECT MessageID FROM tblMessages WHERE MessageToken = '' AND "
            "MessageDate = " +
                now + " AND Direction = 0");
  EXPECT_NE(written[6].find("VALUES (42,42,'ann'"), std::string::npos) << written[6];
  EXPECT_NE(written[9].find("VALUES (42,42,1,"), std::string::npos) << written[9];
  // No session is started, and one is ended however the message fared.
  EXPECT_EQ(connection->starts, 0);
  EXPECT_EQ(connection->ends, 1);
}

TEST_F(MessagingStatements, Attachments) {
  Run({
      {"Add",
       nullptr,
       [](auto&, auto& a) {
         EXPECT_EQ(a.Add({7, "it's \\ body", "a.txt", "text/plain", 1}), 42);
       },
       {" INSERT INTO tblAttachments (AttachmentID,FKMessageID,AttachmentNumber,MimeType,FileName,"
        "Body) VALUES (42,7,1,'text/plain','a.txt','it''s \\\\ body')"}},
      {"Add, empty texts",
       nullptr,
       [](auto&, auto& a) {
         a.Add({7, "", "", Null, 2});
       },
       {" INSERT INTO tblAttachments (AttachmentID,FKMessageID,AttachmentNumber,MimeType,FileName,"
        "Body) VALUES (42,7,2,NULL,NULL,NULL)"}},
      {"GetAttachmentsForAMessage",
       nullptr,
       [](auto&, auto& a) { a.GetAttachmentsForAMessage(7); },
       {"SELECT * FROM tblAttachments  WHERE FKMessageID = 7 ORDER BY "
        "tblAttachments.AttachmentNumber ASC"}},
      {"Load",
       nullptr,
       [](auto&, auto& a) { a.Load("WHERE FileName LIKE 'a%'"); },
       {"SELECT * FROM tblAttachments  WHERE FileName LIKE 'a%'"}},
      {"DeleteAttachmentsForAMessage",
       nullptr,
       [](auto&, auto& a) { a.DeleteAttachmentsForAMessage(0); },
       {"DELETE FROM tblAttachments WHERE FKMessageID = 0"}},
      {"Delete",
       nullptr,
       [](auto&, auto& a) { a.Delete(3); },
       {"DELETE FROM tblAttachments WHERE AttachmentID = 3"}},
      {"Update: position 0 is not read",
       nullptr,
       [](auto&, auto& a) {
         a.Update(99, 3, {"not a number", "", "b.txt", "", 2});
       },
       {" UPDATE tblAttachments SET  AttachmentNumber = 2 ,MimeType = NULL ,FileName = 'b.txt' "
        ",Body = NULL WHERE AttachmentID = 3"}},
  });
}

TEST_F(MessagingStatements, BadInputFailsBeforeAnyStatement) {
  const auto subject = Cond("Subject", orvmysql::dcoEqualto, "x");
  FieldArray short_update = Message(0);
  short_update.pop_back();
  FieldArray no_flag = Message(1);
  no_flag[9] = Null;
  struct Refused {
    std::string what;
    std::function<void(CMessageDP&)> call;
    int32_t error;
  };
  const Refused cases[] = {
      {"id with a condition", [](auto& m) { m.Update("1 OR 1=1", Message(1)); }, 13},
      {"id with a fraction", [](auto& m) { m.Update("7.0", Message(1)); }, 13},
      {"empty id", [](auto& m) { m.Update(" ", Message(1)); }, 13},
      {"incoming without a party", [&](auto& m) { m.Update("7", short_update); }, 9},
      {"short message",
       [](auto& m) {
         m.Add({"u-1", "s"});
       },
       9},
      {"flag missing", [&](auto& m) { m.Add(no_flag); }, orvmysql::kErrInvalidUseOfNull},
      {"message column in a recipient list",
       [&](auto& m) { m.LoadReceipent(Query("", Group(orvmysql::dloAnd, {subject}), -1)); },
       orvmysql::kObjectErrorBase | orvmysql::kMsgUnknownAttribute},
  };
  for (const Refused& c : cases) {
    auto connection = std::make_shared<RecordingConnection>();
    EXPECT_EQ(ErrorOf([&] { c.call(*On<CMessageDP>(connection)); }), c.error) << c.what;
    EXPECT_TRUE(connection->statements.empty()) << c.what;
    EXPECT_EQ(connection->starts, 0) << c.what;
  }
  const auto refused = Raised([&] {
    On<CMessageDP>(std::make_shared<RecordingConnection>())
        ->LoadReceipent(Query("", Group(orvmysql::dloAnd, {subject}), -1));
  });
  EXPECT_EQ(refused.Description(), "Unknown attribute 'Subject'.");
  EXPECT_NE(refused.Source().find(" => \r\nCMessageDP:IMessageDP_LoadReceipent Function ("),
            std::string::npos)
      << refused.Source();
}

TEST(MessageToken, PadsTheKeyToTenDigitsAndNeverCutsIt) {
  EXPECT_EQ(orvmysql::MessageToken("2", "123"), "MSG:20000000123");
  EXPECT_EQ(orvmysql::MessageToken("3", "7"), "MSG:30000000007");
  EXPECT_EQ(orvmysql::MessageToken("1", "2147483647"), "MSG:12147483647");
  EXPECT_EQ(orvmysql::MessageToken("1", "123456789012"), "MSG:1123456789012");
  EXPECT_EQ(orvmysql::MessageToken("0", "-5"), "MSG:0-0000000005");
}

}  // namespace
}  // namespace orvtest
