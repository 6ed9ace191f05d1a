#include "messaging/CAttachmentDP.h"

namespace orvmysql {

namespace {

using dp::As;

constexpr As kAddLayout[] = {
    As::Long,            // 0 FKMessageID
    As::LongTextOrNull,  // 1 Body, never cut
    As::TextOrNull,      // 2 FileName
    As::TextOrNull,      // 3 MimeType
    As::Long,            // 4 AttachmentNumber
};
// An attachment never moves to another message: Update requires position 0
// but does not read it.
constexpr As kUpdateLayout[] = {As::Unused, As::LongTextOrNull, As::TextOrNull, As::TextOrNull,
                                As::Long};
// The column list runs FKMessageID, AttachmentNumber, MimeType, FileName, Body.
constexpr std::size_t kInsertOrder[] = {0, 4, 3, 2, 1};

constexpr dp::Assignment kSet[] = {
    {" AttachmentNumber = ", 4},
    {" ,MimeType = ", 3},
    {" ,FileName = ", 2},
    {" ,Body = ", 1},
};

constexpr dp::KeyedTable kTable{
    .locations = {.add = "CAttachmentDP: Add Function (",
                  .update = "CAttachmentDP: Update Function (",
                  .remove = "CAttachmentDP: IAttachmentDP_Delete Function (",
                  .by_owner = "CAttachmentDP:IAttachmentDP_GetAttachmentsForAMessage Function (",
                  .load = "CAttachmentDP:IAttachmentDP_Load Function ("},
    .select = "SELECT * FROM tblAttachments ",
    .by_owner = " WHERE FKMessageID = ",
    .owner_order = " ORDER BY tblAttachments.AttachmentNumber ASC",
    .entity_type_code = -19,
    .insert_head =
        " INSERT INTO tblAttachments (AttachmentID,FKMessageID,AttachmentNumber,MimeType,FileName,"
        "Body) VALUES (",
    .add_layout = kAddLayout,
    .insert_order = kInsertOrder,
    .update_head = " UPDATE tblAttachments SET ",
    .update_layout = kUpdateLayout,
    .update_set = kSet,
    .update_where = " WHERE AttachmentID = ",
    .delete_one = "DELETE FROM tblAttachments WHERE AttachmentID = ",
};

}  // namespace

// IAttachmentDP

int32_t CAttachmentDP::Add(const FieldArray& fields) {
  return AddRow(kTable, fields);
}

std::shared_ptr<IListIterator> CAttachmentDP::GetAttachmentsForAMessage(int32_t message_id) {
  return RowsByOwner(kTable, message_id);
}

std::shared_ptr<IListIterator> CAttachmentDP::Load(const std::string& condition) {
  return RowsLoad(kTable, condition);
}

bool CAttachmentDP::DeleteAttachmentsForAMessage(int32_t message_id) {
  return detail::Guard(
      {"CAttachmentDP: IAttachmentDP_DeleteAttachmentsForAMessage Function ("}, [&] {
        NonQuery("DELETE FROM tblAttachments WHERE FKMessageID = " + std::to_string(message_id));
        return true;
      });
}

bool CAttachmentDP::Delete(int32_t attachment_id) {
  DeleteRows(kTable, attachment_id, 0);
  return true;
}

bool CAttachmentDP::Update(int32_t /*unused*/, int32_t attachment_id, const FieldArray& fields) {
  UpdateRow(kTable, attachment_id, fields);
  return true;
}

}  // namespace orvmysql
