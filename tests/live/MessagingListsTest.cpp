// Lists of messages and recipients through query documents: an inbox, sent
// items, a recipient list, and the filters a recipient list refuses.

#include <string>
#include <vector>

#include "live/MessagingFixture.h"
#include "orvmysql/Query.h"

namespace orvtest {
namespace {

using namespace orvmysql;

std::shared_ptr<CCondition> Where(const std::string& attribute, const Variant& value) {
  return std::make_shared<CCondition>(attribute, dcoEqualto, value);
}

std::string Filter(const std::string& entity, std::vector<std::shared_ptr<CCondition>> conditions,
                   const std::string& order_by = "", int32_t max_rows = -1) {
  CQuery query;
  query.SetEntityName(entity);
  auto all = std::make_shared<CConditionExpression>(dloAnd);
  for (auto& c : conditions) all->Conditions()->Add(c);
  query.SetCriteria(all);
  if (!order_by.empty()) {
    query.OrderBy()->Add(std::make_shared<COrderExpression>(order_by, dsDescending));
  }
  query.SetMaxRows(max_rows);
  return query.ToXML();
}

class MessageLists : public MessagingTest {
 protected:
  void SetUp() override {
    MessagingTest::SetUp();
    if (first_ != 0) return;
    first_ = AddAddressedMessage("first");
    second_ = AddAddressedMessage("second");
    const int32_t to_bob = messages_->Add(MessageFields("to bob only"));
    messages_->AddReceipent(to_bob, Recipient("bob", "Bob"));
    messages_->SendMessage(first_);
    messages_->SendMessage(second_);
    messages_->SendMessage(to_bob);
  }
  static std::vector<std::string> Subjects(const std::shared_ptr<IListIterator>& rows) {
    std::vector<std::string> subjects;
    for (const auto& row : Read(rows, {"Subject"})) subjects.push_back(row.at("Subject"));
    return subjects;
  }
  static int32_t first_, second_;
};
int32_t MessageLists::first_ = 0;
int32_t MessageLists::second_ = 0;

TEST_F(MessageLists, InboxShowsTheIncomingCopiesFromTheRecipientsPointOfView) {
  const auto inbox = Read(
      messages_->Load(Filter("tblReceivedMessages",
                             {Where("RecepientID", "ann"), Where("Direction", 0)}, "MessageID")),
      {"Subject", "MessageID", "MessageOID", "DisplayMask"});
  ASSERT_EQ(inbox.size(), 2u);
  EXPECT_EQ(inbox[0].at("Subject"), "second");
  EXPECT_EQ(inbox[1].at("Subject"), "first");
  // MessageID is ann's party in the copy; reading it back gives the same message.
  const int32_t party = std::stoi(inbox[0].at("MessageID"));
  EXPECT_NE(inbox[0].at("MessageID"), inbox[0].at("MessageOID"));
  EXPECT_EQ(inbox[0].at("DisplayMask"), "0");
  ExpectOneRow(messages_->GetMessageById(-party),
               {{"MessageOID", inbox[0].at("MessageOID")}, {"Direction", "0"}});
  // MaxRows limits.
  EXPECT_EQ(Subjects(messages_->Load(Filter("tblReceivedMessages", {Where("RecepientID", "bob")},
                                            "MessageID", 2)))
                .size(),
            2u);
}

TEST_F(MessageLists, SentItemsAreThePlainOutgoingMessagesOfTheSender) {
  EXPECT_EQ(
      Subjects(messages_->Load(Filter(
          "", {Where("SenderID", "u-1"), Where("Direction", 1), Where("State", 1)}, "MessageID"))),
      (std::vector<std::string>{"to bob only", "second", "first"}));
  // A condition on a recipient column joins the recipients, each message once.
  EXPECT_EQ(Subjects(messages_->Load(
                Filter("", {Where("RecepientType", "user"), Where("Direction", 1)}, "MessageID"))),
            (std::vector<std::string>{"to bob only", "second", "first"}));
}

TEST_F(MessageLists, RecipientListsTakeRecipientColumnsOnly) {
  const auto rows =
      Read(messages_->LoadReceipent(Filter("", {Where("RecepientName", "Ann")}, "PartyID", 3)),
           {"RecepientID", "FKMessageID", "DisplayMask"});
  ASSERT_EQ(rows.size(), 3u);  // two originals and two copies, the newest three
  EXPECT_EQ(rows[0].at("DisplayMask"), "0");
  EXPECT_EQ(rows[2].at("DisplayMask"), "1");

  for (const std::string& filter : {Filter("", {Where("Subject", "first")}),
                                    Filter("", {Where("RecepientID", "ann")}, "MessageDate")}) {
    const Error e = Raised([&] { messages_->LoadReceipent(filter); });
    EXPECT_EQ(e.Number(), kObjectErrorBase | kMsgUnknownAttribute);
    EXPECT_NE(e.Description().find("Unknown attribute"), std::string::npos) << e.Description();
  }
  const Error bad = Raised([&] { messages_->Load(Filter("", {Where("NoSuchColumn", 1)})); });
  EXPECT_EQ(bad.Number(), kObjectErrorBase | kMsgUnknownAttribute);
  EXPECT_NE(bad.Source().find("CMessageDP:IMessageDP_Load Function ("), std::string::npos);
}

}  // namespace
}  // namespace orvtest
