#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "access/TableProvider.h"
#include "orvmysql/Attributes.h"
#include "orvmysql/Messaging.h"

namespace orvmysql {

// Messages (tblMessages) with their recipients (tblMsgReceipent); copies
// attachments (tblAttachments) when a message is sent.
class CMessageDP : public TableProvider, public IMessageDP {
 public:
  // IMessageDP
  int32_t Add(const FieldArray& fields) override;
  int32_t AddReceipent(int32_t message_id, const FieldArray& fields) override;
  bool DeleteReceipent(int32_t message_id, const std::string& name) override;
  std::shared_ptr<IListIterator> GetReceipentsForAMessage(int32_t message_id) override;
  std::shared_ptr<IListIterator> GetMessageById(int32_t id) override;
  std::shared_ptr<IListIterator> Load(const std::string& filter) override;
  bool Delete(int32_t id) override;
  std::shared_ptr<IListIterator> LoadReceipent(const std::string& filter) override;
  bool SendMessage(int32_t message_id) override;
  bool Update(const std::string& message_id, const FieldArray& fields) override;

 private:
  // Copies the recipients and attachments of the message to its copy.
  void CopyParties(const std::string& message_id, const std::string& copy_id);

  std::shared_ptr<CAttributes> attributes_;  // of the message filter, built on first use
};

// "MSG:" + the message type + the key left-padded with zeros to 10 digits
// (a longer key is kept whole).
std::string MessageToken(std::string_view message_type, std::string_view key);

}  // namespace orvmysql
