#pragma once

// Engine interfaces of the messaging providers: messages with their
// recipients, and the attachments of messages.
//
// Obtain a provider from the data handler and cast it to its interface:
//   auto messages = std::dynamic_pointer_cast<IMessageDP>(handler.GetDataSource(18));
//
// The schema's own spellings "Receipent" (table and operation names) and
// "Recepient" (column names) are kept everywhere.
//
// Common rules:
// - Add and Update take the entity's values as a FieldArray read by fixed
//   position (the tables below). Every position is read and converted before
//   any statement runs: a short array raises error 9, a value that is not a
//   number in a numeric position raises 13, Null in a text position that takes
//   no NULL raises 94, a text that is not valid UTF-8 raises 5 naming its first
//   bad byte (see Error.h), and nothing is written.
// - "quoted" columns are written as a quoted, escaped SQL text; "quoted 255"
//   cuts the text to 255 characters first. "NULL when empty" columns store
//   NULL for Null or an empty text.
// - A statement larger than the server accepts in one packet (its
//   max_allowed_packet, read once per session) is refused before it is sent:
//   error -2147467259 with native error 1153, a description naming both sizes,
//   nothing written and no key used up.
// - Failures are raised as orvmysql::Error; statements that ran before a
//   failure stay applied (there are no transactions).
//
// Three behaviours differ on purpose from the engine's original providers
// (see "Deliberate departures" in docs/ARCHITECTURE.md): Update refuses a
// message id that is not a plain integer (error 13); SendMessage copies the
// recipients and attachments to the copy it has just inserted when the
// look-up by token finds nothing; LoadReceipent refuses a filter naming a
// message column (error 8194) instead of sending a statement that fails.

#include <cstdint>
#include <memory>
#include <string>

#include "orvmysql/List.h"
#include "orvmysql/Object.h"
#include "orvmysql/Variant.h"

namespace orvmysql {

// Messages, tblMessages, and their recipients, tblMsgReceipent (data-source
// code 18, CMessageDP). Sending is copying: an outgoing message (Direction 1)
// is marked sent (State 1) and an incoming copy (Direction 0) is created with
// its own recipients and attachments. A message is addressed either by its
// MessageID (a positive number) or, from a recipient's point of view, by the
// negated PartyID of its recipient row.
//
// Message field array of Add (positions 0 to 12) and Update (0 to 14):
//
// | Pos | Column                   | Written as                     |
// |-----|--------------------------|--------------------------------|
// | 0   | SenderID                 | quoted 255                     |
// | 1   | Subject                  | quoted 255, NULL when empty    |
// | 2   | Message                  | quoted, NULL when empty        |
// | 3   | SenderType               | quoted 255                     |
// | 4   | SenderName               | quoted 255                     |
// | 5   | SenderEmailID            | quoted 255                     |
// | 6   | MessageType              | integer                        |
// | 7   | MessageToken             | quoted 255 (Add replaces it)   |
// | 8   | MessageDate              | date and time (NULL when Empty or Null) |
// | 9   | HasAttachments           | boolean, 1 or 0                |
// | 10  | Direction                | integer: 1 outgoing, 0 incoming |
// | 11  | Priority                 | integer                        |
// | 12  | State                    | integer: 0 new, 1 sent         |
// | 13  | recipient DisplayMask    | integer (Update only)          |
// | 14  | recipient PartyID        | integer (Update only; read only when Direction is 0) |
//
// Recipient field array of AddReceipent (5 positions), all texts quoted 255:
//
// | Pos | Column           | Written as |
// |-----|------------------|------------|
// | 0   | RecepientID      | quoted 255 |
// | 1   | RecepientType    | quoted 255 |
// | 2   | RecepientName    | quoted 255 |
// | 3   | RecepientEmailID | quoted 255 |
// | 4   | DisplayMask      | integer    |
//
// Message rows (GetMessageById, Load) carry DisplayMask, MessageID,
// MessageOID and the message columns. In the plain view MessageID and
// MessageOID both hold the message's id and DisplayMask is 0; in the
// recipient view MessageID holds the recipient's PartyID, MessageOID the
// message's id and DisplayMask the recipient's.
class ORVMYSQL_EXPORT IMessageDP : public virtual IObject {
 public:
  // Inserts a message with a new key, then replaces its token by "MSG:" +
  // MessageType + the key zero-padded to 10 digits (type 2, key 123:
  // "MSG:20000000123"; a longer key is never cut). Returns the key, or -1
  // when no row was inserted.
  virtual int32_t Add(const FieldArray& fields) = 0;
  // Inserts a recipient of the message; returns its new PartyID, or -1.
  virtual int32_t AddReceipent(int32_t message_id, const FieldArray& fields) = 0;
  // Deletes the message's recipients of this name (matched by name, not by
  // id). Always true.
  virtual bool DeleteReceipent(int32_t message_id, const std::string& name) = 0;
  virtual std::shared_ptr<IListIterator> GetReceipentsForAMessage(int32_t message_id) = 0;
  // The message (id >= 0) or the message of recipient row -id (id < 0), in
  // the view the sign selects; one row or none.
  virtual std::shared_ptr<IListIterator> GetMessageById(int32_t id) = 0;
  // Messages through a query document. Its entity "tblReceivedMessages" gives
  // the recipient view (one row per recipient); a condition or sort key on a
  // recipient column joins the recipients, with DISTINCT; MaxRows limits.
  virtual std::shared_ptr<IListIterator> Load(const std::string& filter) = 0;
  // Deletes the message with its attachments and all its recipients. Given a
  // recipient view (id < 0) whose row exists, the whole message still goes,
  // for every recipient. Always true.
  virtual bool Delete(int32_t id) = 0;
  // Recipient rows through a query document; only its criteria, sort keys
  // and MaxRows are used. A condition or sort key naming a message column
  // raises 8194 for that attribute, before any statement runs.
  virtual std::shared_ptr<IListIterator> LoadReceipent(const std::string& filter) = 0;
  // Sends an outgoing new message: marks it sent, then creates the incoming
  // copy dated now, with a copy of each recipient (DisplayMask 0) and of each
  // attachment. False, with nothing copied, for a message that is incoming,
  // already sent or missing. The copy is found again by token, date and
  // direction; when that finds nothing (a message without a token), the copy
  // just inserted receives the recipients and attachments.
  // SendMessage starts no session but ends one when it returns: call it inside
  // a session opened for it (StartSession on the handler), or outside any.
  // On failure no session is ended, and the message may stay marked sent with
  // a partial copy.
  virtual bool SendMessage(int32_t message_id) = 0;
  // Writes positions 0 to 12 to the message, and position 13 as the
  // DisplayMask of recipient row [14] when Direction is 0 and [14] > 0.
  // The id is text and must be a decimal integer (blanks around it allowed),
  // else error 13 before any statement. Always true.
  virtual bool Update(const std::string& message_id, const FieldArray& fields) = 0;
};

// Attachments of messages, tblAttachments (data-source code 19,
// CAttachmentDP). The body is text, stored whole (a binary body must be
// encoded to text by the caller).
//
// Field array of Add and Update (5 positions):
//
// | Pos | Column           | Written as                  |
// |-----|------------------|-----------------------------|
// | 0   | FKMessageID      | integer (Add only; Update requires the position but ignores it) |
// | 1   | Body             | quoted, NULL when empty     |
// | 2   | FileName         | quoted 255, NULL when empty |
// | 3   | MimeType         | quoted 255, NULL when empty |
// | 4   | AttachmentNumber | integer                     |
class ORVMYSQL_EXPORT IAttachmentDP : public virtual IObject {
 public:
  // Inserts an attachment with a new key; returns the key, or -1.
  virtual int32_t Add(const FieldArray& fields) = 0;
  // The message's attachments by AttachmentNumber, ascending.
  virtual std::shared_ptr<IListIterator> GetAttachmentsForAMessage(int32_t message_id) = 0;
  // Attachments matching the caller's trusted SQL tail, which carries its own
  // WHERE. The tail is raw SQL: never from an end user.
  virtual std::shared_ptr<IListIterator> Load(const std::string& condition) = 0;
  virtual bool DeleteAttachmentsForAMessage(int32_t message_id) = 0;
  virtual bool Delete(int32_t attachment_id) = 0;
  // Writes the number, MIME type, file name and body; the message an
  // attachment belongs to never changes. The first argument is not used.
  // Always true.
  virtual bool Update(int32_t unused, int32_t attachment_id, const FieldArray& fields) = 0;
};

}  // namespace orvmysql
