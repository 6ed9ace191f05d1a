#include "live/MessagingFixture.h"

namespace orvtest {

using orvmysql::Date;
using orvmysql::FieldArray;

void MessagingTest::SetUp() {
  DefinitionsTest::SetUp();
  messages_ = Provider<orvmysql::IMessageDP>(handler_, 18);
  attachments_ = Provider<orvmysql::IAttachmentDP>(handler_, 19);
}

FieldArray MessagingTest::MessageFields(const std::string& subject, int32_t direction,
                                        int32_t state) {
  return {"u-1",  subject,      "Please approve",
          "user", "Ann Author", "ann@x",
          3,      "draft",      Date::FromParts(2024, 5, 2, 9, 30, 0),
          true,   direction,    2,
          state};
}

FieldArray MessagingTest::Recipient(const std::string& id, const std::string& name,
                                    int32_t display_mask) {
  return {id, "user", name, id + "@example.org", display_mask};
}

FieldArray MessagingTest::Attachment(int32_t message_id, int32_t number, const std::string& body,
                                     const std::string& file_name) {
  return {message_id, body, file_name, "text/plain", number};
}

int32_t MessagingTest::AddAddressedMessage(const std::string& subject) {
  const int32_t id = messages_->Add(MessageFields(subject));
  EXPECT_GT(messages_->AddReceipent(id, Recipient("ann", "Ann")), 0);
  EXPECT_GT(messages_->AddReceipent(id, Recipient("bob", "Bob")), 0);
  EXPECT_GT(attachments_->Add(Attachment(id, 1, "order.pdf as text")), 0);
  return id;
}

int32_t MessagingTest::PartyOf(int32_t message_id, const std::string& recipient_name) const {
  const std::string party = Db().Scalar(
      "SELECT PartyID FROM tblMsgReceipent WHERE FKMessageID = " + std::to_string(message_id) +
      " AND RecepientName = '" + recipient_name + "'");
  return party.empty() ? 0 : std::stoi(party);
}

std::string MessagingTest::RowsOf(int32_t message_id) {
  const std::string id = std::to_string(message_id);
  return std::to_string(Db().Count("tblMessages", "MessageID = " + id)) + " " +
         std::to_string(Db().Count("tblMsgReceipent", "FKMessageID = " + id)) + " " +
         std::to_string(Db().Count("tblAttachments", "FKMessageID = " + id));
}

std::string MessagingTest::Keys() {
  return Db().Scalar(
      "SELECT GROUP_CONCAT(LastAllocatedKey ORDER BY EntityTypeCode) FROM tblKeyGen");
}

}  // namespace orvtest
