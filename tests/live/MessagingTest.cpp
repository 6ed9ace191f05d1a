// Messages, recipients and attachments written through the providers and read
// back: both views of a message, its token, deleting, updating, sending, and
// bodies up to and beyond what the server takes in one statement.

#include <functional>
#include <string>
#include <vector>

#include "access/Connection.h"
#include "live/MessagingFixture.h"

namespace orvtest {
namespace {

using orvmysql::FieldArray;

class Messaging : public MessagingTest {};

std::string Padded(int32_t id) {
  std::string digits = std::to_string(id);
  return std::string(10 - digits.size(), '0') + digits;
}

TEST_F(Messaging, AddedMessageReadsBackInBothViewsWithItsToken) {
  FieldArray fields = MessageFields("");
  fields[2] = "";  // no body
  fields[4] = "";  // no sender name: an empty text, not NULL
  const int32_t id = messages_->Add(fields);
  ASSERT_GT(id, 0);
  const int32_t ann = messages_->AddReceipent(id, Recipient("ann", "Ann O'Hara", 5));
  EXPECT_EQ(messages_->AddReceipent(id, Recipient("bob", "Bob")), ann + 1);
  const Expected message = {{"Subject", "NULL"},
                            {"Message", "NULL"},
                            {"SenderID", "u-1"},
                            {"SenderName", ""},
                            {"SenderEmailID", "ann@x"},
                            {"MessageType", "3"},
                            {"MessageToken", "MSG:3" + Padded(id)},
                            {"MessageDate", "2024-05-02 09:30:00"},
                            {"HasAttachments", "1"},
                            {"Direction", "1"},
                            {"Priority", "2"},
                            {"State", "0"}};
  Expected plain = message;
  plain.insert({{"DisplayMask", "0"},
                {"MessageID", std::to_string(id)},
                {"MessageOID", std::to_string(id)}});
  ExpectOneRow(messages_->GetMessageById(id), plain);
  Expected seen_by_ann = message;
  seen_by_ann.insert({{"DisplayMask", "5"},
                      {"MessageID", std::to_string(ann)},
                      {"MessageOID", std::to_string(id)}});
  ExpectOneRow(messages_->GetMessageById(-ann), seen_by_ann);
  EXPECT_TRUE(Read(messages_->GetMessageById(-(ann + 100)), {"MessageID"}).empty());

  const auto recipients =
      Read(messages_->GetReceipentsForAMessage(id), {"RecepientName", "RecepientEmailID"});
  ASSERT_EQ(recipients.size(), 2u);
  EXPECT_TRUE(messages_->DeleteReceipent(id, "Ann O'Hara"));
  ExpectOneRow(messages_->GetReceipentsForAMessage(id),
               {{"RecepientID", "bob"}, {"RecepientType", "user"}, {"DisplayMask", "1"}});
}

TEST_F(Messaging, AttachmentsKeepLongBodiesAndCutLongFileNames) {
  const int32_t id = messages_->Add(MessageFields("bodies"));
  const std::string body(100000, 'b');
  const std::string quoted_body = std::string(50000, '\'') + "\\ end \xC3\xBC";
  const int32_t second = attachments_->Add(Attachment(id, 2, body, std::string(300, 'f')));
  const int32_t first = attachments_->Add(Attachment(id, 1, quoted_body));
  EXPECT_EQ(attachments_->Add({id, "", "", "", 3}), first + 1);
  const auto rows = Read(attachments_->GetAttachmentsForAMessage(id),
                         {"AttachmentID", "Body", "FileName", "MimeType", "AttachmentNumber"});
  ASSERT_EQ(rows.size(), 3u);
  EXPECT_EQ(rows[0].at("Body"), quoted_body);
  EXPECT_EQ(rows[1].at("AttachmentID"), std::to_string(second));
  EXPECT_EQ(rows[1].at("Body"), body);
  EXPECT_EQ(rows[1].at("FileName"), std::string(255, 'f'));
  EXPECT_EQ(rows[2].at("Body") + rows[2].at("FileName") + rows[2].at("MimeType"), "NULLNULLNULL");

  // Update rewrites every column but the message; position 0 is not read.
  EXPECT_TRUE(attachments_->Update(0, second, {"ignored", body + "!", "", "text/csv", 9}));
  ExpectOneRow(attachments_->Load("WHERE AttachmentID = " + std::to_string(second)),
               {{"FKMessageID", std::to_string(id)},
                {"Body", body + "!"},
                {"FileName", "NULL"},
                {"MimeType", "text/csv"},
                {"AttachmentNumber", "9"}});
  EXPECT_TRUE(attachments_->Delete(second));
  EXPECT_EQ(Read(attachments_->GetAttachmentsForAMessage(id), {"AttachmentID"}).size(), 2u);
  EXPECT_TRUE(attachments_->DeleteAttachmentsForAMessage(id));
  EXPECT_EQ(RowsOf(id), "1 0 0");

  // A message body is not cut either.
  FieldArray long_message = MessageFields("long");
  long_message[2] = body;
  const int32_t long_id = messages_->Add(long_message);
  EXPECT_EQ(Read(messages_->GetMessageById(long_id), {"Message"}).at(0).at("Message"), body);
}

TEST_F(Messaging, StatementsBeyondTheServerLimitAreRefusedBeforeAnythingIsWritten) {
  // A limit of 1 MiB for this test (new connections take the global value).
  constexpr std::size_t kPacket = 1 << 20;
  const std::string saved = Db().Scalar("SELECT @@global.max_allowed_packet");
  Db().Exec("SET GLOBAL max_allowed_packet = " + std::to_string(kPacket));
  struct Restore {
    std::string value;
    ~Restore() { Db().Exec("SET GLOBAL max_allowed_packet = " + value); }
  } restore{saved};

  const int32_t id = messages_->Add(MessageFields("limits"));
  const int32_t attachment = attachments_->Add(Attachment(id, 1, "small"));
  const std::string too_big(kPacket, 'x');
  FieldArray big_message = MessageFields("too big");
  big_message[2] = too_big;
  FieldArray big_update = big_message;
  big_update.push_back(0);

  handler_->StartSession();  // a refusal leaves the session's connection usable
  const std::string keys = Keys();
  for (const auto& call : std::vector<std::function<void()>>{
           [&] { attachments_->Add(Attachment(id, 2, too_big)); },
           [&] { attachments_->Update(0, attachment, Attachment(id, 1, too_big)); },
           [&] { messages_->Add(big_message); },
           [&] { messages_->Update(std::to_string(id), big_update); }}) {
    const orvmysql::Error e = Raised(call);
    EXPECT_EQ(e.Number(), orvmysql::kErrDatabase);
    EXPECT_EQ(e.NativeError(), 1153u);
    EXPECT_NE(e.Description().find("(max_allowed_packet 1048576)"), std::string::npos)
        << e.Description().substr(0, 300);
    EXPECT_LT(e.Description().size(), 300u);  // the statement is not repeated
  }
  EXPECT_EQ(Keys(), keys);
  EXPECT_EQ(RowsOf(id), "1 0 1");
  EXPECT_EQ(Read(attachments_->GetAttachmentsForAMessage(id), {"Body"}).at(0).at("Body"), "small");
  EXPECT_EQ(Read(messages_->GetMessageById(id), {"Subject"}).at(0).at("Subject"), "limits");
  handler_->EndSession();

  // The largest statement the limit allows is taken (outside a session too).
  const std::size_t overhead = std::string(
                                   " UPDATE tblAttachments SET  AttachmentNumber = 1 "
                                   ",MimeType = 'text/plain' ,FileName = 'a.txt' ,Body = "
                                   "'' WHERE AttachmentID = " +
                                   std::to_string(attachment))
                                   .size();
  const std::size_t largest = kPacket - 2 - overhead;
  EXPECT_EQ(Raised([&] {
              attachments_->Update(0, attachment, Attachment(id, 1, std::string(largest + 1, 'z')));
            }).NativeError(),
            1153u);
  EXPECT_TRUE(attachments_->Update(0, attachment, Attachment(id, 1, std::string(largest, 'y'))));
  EXPECT_EQ(Db().Count("tblAttachments", "CHAR_LENGTH(Body) = " + std::to_string(largest)), 1);
}

TEST_F(Messaging, DeleteThroughARecipientViewRemovesTheWholeMessage) {
  const int32_t id = AddAddressedMessage("delete via ann");
  const int32_t other = AddAddressedMessage("stays");
  EXPECT_EQ(RowsOf(id), "1 2 1");
  EXPECT_TRUE(messages_->Delete(-PartyOf(id, "Ann")));
  EXPECT_EQ(RowsOf(id), "0 0 0");
  EXPECT_EQ(RowsOf(other), "1 2 1");
  EXPECT_TRUE(messages_->Delete(other));
  EXPECT_EQ(RowsOf(other), "0 0 0");
  EXPECT_TRUE(messages_->Delete(-999999));  // no such recipient: nothing happens
}

TEST_F(Messaging, UpdateTouchesTheRecipientOnlyForIncomingMessages) {
  const int32_t id = AddAddressedMessage("update");
  const int32_t bob = PartyOf(id, "Bob");
  auto fields = [&](int32_t direction, int32_t mask) {
    FieldArray f = MessageFields("updated", direction, 1);
    f.push_back(mask);
    f.push_back(bob);
    return f;
  };
  auto mask = [&] {
    return Db().Scalar("SELECT DisplayMask FROM tblMsgReceipent WHERE PartyID = " +
                       std::to_string(bob));
  };
  EXPECT_TRUE(messages_->Update(std::to_string(id), fields(1, 8)));
  EXPECT_EQ(mask(), "1");
  ExpectOneRow(messages_->GetMessageById(id),
               {{"Subject", "updated"}, {"State", "1"}, {"MessageToken", "draft"}});
  EXPECT_TRUE(messages_->Update(" " + std::to_string(id) + " ", fields(0, 8)));
  EXPECT_EQ(mask(), "8");
  EXPECT_EQ(Read(messages_->GetMessageById(id), {"Direction"}).at(0).at("Direction"), "0");

  // An id that is not a plain integer changes nothing.
  const std::string before = Db().Scalar("SELECT GROUP_CONCAT(Subject) FROM tblMessages");
  EXPECT_EQ(ErrorOf([&] { messages_->Update("0 OR 1=1", fields(0, 2)); }),
            orvmysql::kErrTypeMismatch);
  EXPECT_EQ(Db().Scalar("SELECT GROUP_CONCAT(Subject) FROM tblMessages"), before);
  EXPECT_EQ(mask(), "8");
}

class SendMessage : public MessagingTest {
 protected:
  // The number of incoming copies of the message with this subject.
  static long long CopiesOf(const std::string& subject) {
    return Db().Count("tblMessages", "Direction = 0 AND Subject = '" + subject + "'");
  }
  // The newest incoming copy of the message with this subject, as texts.
  Expected CopyOf(const std::string& subject) const {
    const std::string copy =
        Db().Scalar("SELECT MAX(MessageID) FROM tblMessages WHERE Direction = 0 AND Subject = '" +
                    subject + "'");
    Expected row =
        Read(messages_->GetMessageById(std::stoi(copy)), {"State", "MessageToken", "Message"})
            .at(0);
    row["rows"] = RowsOf(std::stoi(copy));
    row["masks"] = Db().Scalar(
        "SELECT GROUP_CONCAT(DisplayMask, RecepientName ORDER BY PartyID) FROM tblMsgReceipent "
        "WHERE FKMessageID = " +
        copy);
    row["body"] = Db().Scalar("SELECT Body FROM tblAttachments WHERE FKMessageID = " + copy);
    return row;
  }
};

TEST_F(SendMessage, MarksTheOriginalSentAndCreatesAnIncomingCopy) {
  const int32_t id = AddAddressedMessage("send");
  const std::string token = "MSG:3" + Padded(id);
  auto connection = std::dynamic_pointer_cast<orvmysql::CConnection>(handler_->Connection());
  ASSERT_NE(connection, nullptr);
  handler_->StartSession();
  EXPECT_TRUE(messages_->SendMessage(id));
  EXPECT_EQ(connection->SessionDepth(), 0);  // it ends the session it was given
  EXPECT_EQ(Read(messages_->GetMessageById(id), {"State"}).at(0).at("State"), "1");
  ASSERT_EQ(CopiesOf("send"), 1);
  EXPECT_EQ(CopyOf("send"), (Expected{{"State", "1"},
                                      {"MessageToken", token},
                                      {"Message", "Please approve"},
                                      {"rows", "1 2 1"},
                                      {"masks", "0Ann,0Bob"},
                                      {"body", "order.pdf as text"}}));
  EXPECT_EQ(Db().Count("tblMessages",
                       "Subject = 'send' AND Direction = 0 AND MessageDate >= "
                       "NOW() - INTERVAL 1 MINUTE"),
            1);

  // Already sent, and incoming: nothing more is copied.
  EXPECT_FALSE(messages_->SendMessage(id));
  const int32_t incoming = messages_->Add(MessageFields("incoming", 0));
  EXPECT_FALSE(messages_->SendMessage(incoming));
  EXPECT_FALSE(messages_->SendMessage(999999));
  EXPECT_EQ(CopiesOf("send"), 1);
  EXPECT_EQ(Read(messages_->GetMessageById(incoming), {"State"}).at(0).at("State"), "0");
}

TEST_F(SendMessage, AMessageWithoutATokenStillGetsItsRecipientsCopied) {
  const int32_t id = AddAddressedMessage("no token");
  FieldArray fields = MessageFields("no token");
  fields[7] = "";
  fields.push_back(0);
  ASSERT_TRUE(messages_->Update(std::to_string(id), fields));
  EXPECT_TRUE(messages_->SendMessage(id));
  ASSERT_EQ(CopiesOf("no token"), 1);
  const Expected copy = CopyOf("no token");
  EXPECT_EQ(copy.at("MessageToken"), "NULL");
  EXPECT_EQ(copy.at("rows"), "1 2 1");
}

}  // namespace
}  // namespace orvtest
