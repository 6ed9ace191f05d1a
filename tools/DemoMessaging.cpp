// Demo section: the approval step of a purchase order sends a message with an
// attachment to two approvers, lists ann's inbox through a filter document,
// and shows the sent original beside ann's incoming copy.

#include <iomanip>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "orvmysql/orvmysql.h"
#include "tools/Demo.h"

namespace orvdemo {

namespace {

using namespace orvmysql;

// This demo's engine codes: message type 1 is an approval request; the
// process instance is a plain number standing for the running purchase order.
constexpr int32_t kApprovalRequest = 1;
constexpr int32_t kProcessInstance = 1042;
constexpr int32_t kOutgoing = 1;
constexpr int32_t kIncoming = 0;

std::map<std::string, std::string> FirstRow(const std::shared_ptr<IListIterator>& list,
                                            const std::vector<std::string>& columns) {
  std::map<std::string, std::string> row;
  if (!list->GetNext()) throw std::runtime_error("no row");
  for (const auto& c : columns) {
    const Variant v = list->CurrentItem()->GetValue(c);
    row[c] = v.IsNull() ? "NULL" : v.ToText();
  }
  return row;
}

// The inbox filter the engine sends: ann's incoming messages, newest first.
std::string InboxFilter(const std::string& recipient) {
  CQuery query;
  query.SetEntityName("tblReceivedMessages");
  auto all = std::make_shared<CConditionExpression>(dloAnd);
  all->Conditions()->Add(std::make_shared<CCondition>("RecepientID", dcoEqualto, recipient));
  all->Conditions()->Add(std::make_shared<CCondition>("Direction", dcoEqualto, kIncoming));
  query.SetCriteria(all);
  query.OrderBy()->Add(std::make_shared<COrderExpression>("MessageDate", dsDescending));
  query.SetMaxRows(20);
  return query.ToXML();
}

}  // namespace

void DemoMessaging(CMYSqlDP& handler, std::ostream& out) {
  out << "\n== Messaging\n";
  auto messages = Source<IMessageDP>(handler, kDsMessage);
  auto attachments = Source<IAttachmentDP>(handler, kDsAttachment);

  // The approval step of process instance 1042 writes its request.
  const std::string subject = "Approve purchase order " + std::to_string(kProcessInstance);
  const int32_t id = messages->Add({"u-100", subject,
                                    "Twelve chairs for the new office, 1,068.00 in total. "
                                    "Please approve or reject in the work list.",
                                    "user", "Pat Purchaser", "pat@example.org", kApprovalRequest,
                                    "", Date::Now(), true, kOutgoing, 2, 0});
  messages->AddReceipent(id, {"ann", "user", "Ann Approver", "ann@example.org", 1});
  messages->AddReceipent(id, {"bob", "user", "Bob Budget", "bob@example.org", 1});
  attachments->Add({id, "Item;Qty;Price\nOffice chair;12;89.00\n", "po-1042.csv", "text/csv", 1});
  out << "Process instance " << kProcessInstance << ", step \"Approve\": message " << id << " \""
      << subject << "\" to ann and bob, with po-1042.csv\n";

  // SendMessage ends the session it is called in, so it gets one of its own.
  handler.StartSession();
  const bool sent = messages->SendMessage(id);
  out << "  sent: " << (sent ? "yes" : "no")
      << "; sending again: " << (messages->SendMessage(id) ? "yes" : "no (already sent)") << "\n";

  const std::string filter = InboxFilter("ann");
  out << "\nann's inbox, asked for with this filter document:\n" << filter << "\n";
  auto inbox = messages->Load(filter);
  int32_t ann_party = 0;
  while (inbox->GetNext()) {
    auto row = inbox->CurrentItem();
    if (ann_party == 0) ann_party = row->GetValue("MessageID").ToLong();
    out << "  " << row->GetValue("MessageDate").ToText() << "  from "
        << row->GetValue("SenderName").ToText() << ": " << row->GetValue("Subject").ToText()
        << " (as seen by ann: MessageID " << row->GetValue("MessageID").ToText() << ", message "
        << row->GetValue("MessageOID").ToText() << ")\n";
  }

  // The original beside ann's view of the copy.
  const std::vector<std::string> columns = {"MessageID", "MessageOID",   "DisplayMask", "Direction",
                                            "State",     "MessageToken", "MessageDate", "Subject"};
  auto original = FirstRow(messages->GetMessageById(id), columns);
  auto copy = FirstRow(messages->GetMessageById(-ann_party), columns);
  const int32_t copy_id = std::stoi(copy.at("MessageOID"));
  auto count = [](const std::shared_ptr<IListIterator>& list) {
    return std::to_string(list->Count());
  };
  original["recipients"] = count(messages->GetReceipentsForAMessage(id));
  copy["recipients"] = count(messages->GetReceipentsForAMessage(copy_id));
  original["attachments"] = count(attachments->GetAttachmentsForAMessage(id));
  copy["attachments"] = count(attachments->GetAttachmentsForAMessage(copy_id));

  out << "\n  " << std::left << std::setw(14) << "" << std::setw(30) << "sent original"
      << "ann's incoming copy\n";
  for (const char* c : {"MessageID", "MessageOID", "DisplayMask", "Direction", "State",
                        "MessageToken", "MessageDate", "recipients", "attachments"}) {
    out << "  " << std::setw(14) << c << std::setw(30) << original.at(c) << copy.at(c) << "\n";
  }
  out << "  (in ann's view MessageID is her recipient row; MessageOID is the message)\n";
}

}  // namespace orvdemo
