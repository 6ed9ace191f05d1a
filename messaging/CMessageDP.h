#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "access/TableProvider.h"
#include "orvmysql/Attributes.h"
#include "orvmysql/Messaging.h"

namespace orvmysql {

struct MessageCopyStep;  // one table SendMessage copies (CMessageDP.cpp)

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
  // Copies the rows of one table that belong to the message; returns the
  // last key inserted, or -1 when none was.
  int32_t CopyRows(const MessageCopyStep& copy, const std::string& message_id,
                   const std::string& between);

  std::shared_ptr<CAttributes> attributes_;  // of the message filter, built on first use
};

// "MSG:" + the message type + the key left-padded with zeros to 10 digits
// (a longer key is kept whole).
std::string MessageToken(std::string_view message_type, std::string_view key);

}  // namespace orvmysql
