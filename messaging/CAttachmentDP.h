#pragma once

#include "access/TableProvider.h"
#include "orvmysql/Messaging.h"

namespace orvmysql {

// Attachments of messages (tblAttachments).
class CAttachmentDP : public TableProvider, public IAttachmentDP {
 public:
  // IAttachmentDP
  int32_t Add(const FieldArray& fields) override;
  std::shared_ptr<IListIterator> GetAttachmentsForAMessage(int32_t message_id) override;
  std::shared_ptr<IListIterator> Load(const std::string& condition) override;
  bool DeleteAttachmentsForAMessage(int32_t message_id) override;
  bool Delete(int32_t attachment_id) override;
  bool Update(int32_t unused, int32_t attachment_id, const FieldArray& fields) override;
};

}  // namespace orvmysql
