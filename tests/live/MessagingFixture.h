#pragma once

// Shared by the live tests of the messaging providers: both providers on one
// handler, complete field arrays with recognisable values, and counts of the
// rows that belong to a message. The row readers come from the definitions'
// fixture.

#include <memory>
#include <string>

#include "live/DefinitionsFixture.h"
#include "orvmysql/Messaging.h"

namespace orvtest {

class MessagingTest : public DefinitionsTest {
 protected:
  void SetUp() override;

  // An outgoing, new message of type 3 from u-1 with the given subject.
  static orvmysql::FieldArray MessageFields(const std::string& subject, int32_t direction = 1,
                                            int32_t state = 0);
  static orvmysql::FieldArray Recipient(const std::string& id, const std::string& name,
                                        int32_t display_mask = 1);
  static orvmysql::FieldArray Attachment(int32_t message_id, int32_t number,
                                         const std::string& body,
                                         const std::string& file_name = "a.txt");

  // A message with recipients ann and bob and one attachment; returns its id.
  int32_t AddAddressedMessage(const std::string& subject);
  // The party id of the message's recipient of that name.
  int32_t PartyOf(int32_t message_id, const std::string& recipient_name) const;
  // Rows of the three tables that belong to the message, as "messages
  // recipients attachments".
  static std::string RowsOf(int32_t message_id);
  // The last keys handed out, one per entity type code, as one text.
  static std::string Keys();

  std::shared_ptr<orvmysql::IMessageDP> messages_;
  std::shared_ptr<orvmysql::IAttachmentDP> attachments_;
};

}  // namespace orvtest
