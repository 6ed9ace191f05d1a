// The four entity filters: statement heads, tails and their failures.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "QueryTestSupport.h"
#include "query/EntityFilters.h"

namespace orvtest {
namespace {

using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::MatchesRegex;
using ::testing::StartsWith;

// A query document from code.
std::string Filter(const std::string& entity, std::shared_ptr<CConditionExpression> criteria,
                   std::initializer_list<std::pair<const char*, SortOrderEnum>> keys = {},
                   int32_t max_rows = 200, bool distinct = false) {
  CQuery query;
  query.SetEntityName(entity);
  query.SetCriteria(std::move(criteria));
  for (const auto& [name, order] : keys) {
    query.OrderBy()->Add(std::make_shared<COrderExpression>(name, order));
  }
  query.SetMaxRows(max_rows);
  query.SetDistinct(distinct);
  return query.ToXML();
}

class QueryFilterTest : public ::testing::Test {
 protected:
  std::shared_ptr<CAttributes> workitems_, processes_, activities_, messages_;
};

TEST_F(QueryFilterTest, WorkItemStatements) {
  EXPECT_EQ(ParseWorkitemFilter(Filter("", nullptr), workitems_), kWorkitemSelect + "  ");
  ASSERT_NE(workitems_, nullptr);  // built on first use and kept
  const auto map = workitems_;
  EXPECT_EQ(
      ParseWorkitemFilter(Filter("tblWorkitems", Group(dloAnd, {Cond("State", dcoContains, 4)}),
                                 {{"Priority", dsDescending}, {"FKActivityID", dsAscending}}),
                          workitems_),
      kWorkitemSelect + "  WHERE  (tblWorkitems.`State` & 4 = 4)  " +
          " ORDER BY tblWorkitems.Priority DESC,tblActivityInstance.FKActivityID ASC");
  EXPECT_EQ(workitems_, map);

  const std::string view = ParseWorkitemFilter(
      Filter("vWorkitemsProcess", Group(dloAnd, {Cond("CreatorName", dcoBeginsWith, "Ann")}),
             {{"DisplayName", dsDescending}}),
      workitems_);
  EXPECT_THAT(view, StartsWith("SELECT tblProcessInstance.ProcInstanceName,"));
  EXPECT_THAT(view, HasSubstr(",Subject,tblWorkitems.Note,tblWorkitems.State,"));
  EXPECT_THAT(view, HasSubstr("tblActivityInstance.ActivityInstanceID  INNER JOIN "
                              "tblProcessInstance ON tblWorkitems.FKProcInstanceID = "
                              "tblProcessInstance.ProcInstanceID   WHERE  "
                              "(tblProcessInstance.`CreatorName` LIKE 'Ann%')  "));
  EXPECT_THAT(view, EndsWith(" ORDER BY tblActivityInstance.DisplayName DESC"));

  // ActivityName is carried as a name but is not a key.
  Error unknown_key = Raised([&] {
    ParseWorkitemFilter(Filter("vWorkitemsProcess", nullptr, {{"ActivityName", dsAscending}}),
                        workitems_);
  });
  EXPECT_EQ(unknown_key.Number(), OwnError(kMsgUnknownAttribute));
  EXPECT_EQ(unknown_key.Description(), "Unknown attribute 'ActivityName'.");
  EXPECT_THAT(unknown_key.Source(), HasSubstr(" => \r\nCWorkitemsDP:ParseFilter Ln "));
  EXPECT_EQ(workitems_->Item("displayname")->Name(), "ActivityName");

  EXPECT_EQ(Raised([&] { ParseWorkitemFilter(Filter("tblOther", nullptr), workitems_); }).Number(),
            kErrInvalidCall);
}

TEST_F(QueryFilterTest, ProcessAndActivityInstanceTails) {
  EXPECT_EQ(ParseProcInstanceFilter(Filter("", nullptr), processes_), " ");
  EXPECT_EQ(
      ParseProcInstanceFilter(
          Filter("", Group(dloOr, {Cond("Priority", dcoGreaterThan, 2), Cond("Note", dcoNull)}),
                 {{"CreatedOn", dsDescending}, {"guid", dsAscending}}),
          processes_),
      " WHERE  (tblProcessInstance.`Priority` > 2 OR (tblProcessInstance.`Note` = '' OR "
      "tblProcessInstance.`Note` IS NULL) )   ORDER BY tblProcessInstance.CreatedOn DESC,"
      "tblProcessInstance.GUID ASC");
  EXPECT_EQ(
      ParseActivityInstanceFilter(Filter("",
                                         Group(dloAnd, {Cond("ActivityName", dcoEqualto, "Review"),
                                                        Cond("Trigger", dcoEqualto, 1)}),
                                         {{"Trigger", dsAscending}}),
                                  activities_),
      " WHERE  (tblActivities.`ActivityName` = 'Review' AND tblActivityInstance.`Trigger` = "
      "1)   ORDER BY tblActivityInstance.Trigger ASC");

  Error unknown = Raised([&] {
    ParseActivityInstanceFilter(Filter("", Group(dloAnd, {Cond("Subject", dcoEqualto, "x")})),
                                activities_);
  });
  EXPECT_EQ(unknown.Number(), OwnError(kMsgUnknownAttribute));
  EXPECT_THAT(unknown.Source(), HasSubstr("CActivityInstanceDP:ParseFilter Ln "));
  Error bad = Raised([&] { ParseProcInstanceFilter("<query", processes_); });
  EXPECT_EQ(bad.Number(), kErrInvalidCall);
  EXPECT_THAT(bad.Source(), MatchesRegex(".* => \r\nCProcInstanceDP:ParseFilter Ln [0-9]+"));
}

TEST_F(QueryFilterTest, MessagePartsFollowTheColumnsTheQueryReaches) {
  const MessageFilter plain = ParseMessageFilter(
      Filter("", Group(dloAnd, {Cond("HasAttachments", dcoEqualto, "yes")})), messages_);
  EXPECT_EQ(plain.condition, " WHERE  (tblMessages.`HasAttachments` = 1)  ");
  EXPECT_EQ(plain.limit, 200);
  EXPECT_EQ(plain.from, "FROM tblMessages ");
  EXPECT_EQ(plain.distinct, "");
  EXPECT_EQ(
      plain.columns,
      "0 AS DisplayMask,tblMessages.MessageID AS MessageID, tblMessages.MessageID AS "
      "MessageOID,tblMessages.Subject,tblMessages.Message,tblMessages.SenderID,"
      "tblMessages.SenderType,tblMessages.SenderName,tblMessages.SenderEmailID,"
      "tblMessages.MessageType,tblMessages.MessageToken,tblMessages.MessageDate,"
      "tblMessages.HasAttachments,tblMessages.Direction,tblMessages.Priority,tblMessages.State");

  const std::string join =
      "FROM tblMessages INNER JOIN tblMsgReceipent ON tblMessages.MessageId = "
      "tblMsgReceipent.FKMessageId";
  const MessageFilter by_recipient = ParseMessageFilter(
      Filter("", Group(dloAnd, {}, {Group(dloOr, {Cond("RecepientName", dcoEqualto, "ann")})}), {},
             -1),
      messages_);
  EXPECT_EQ(by_recipient.from, join);
  EXPECT_EQ(by_recipient.distinct, "DISTINCT");
  EXPECT_EQ(by_recipient.limit, -1);
  EXPECT_THAT(by_recipient.columns, StartsWith("0 AS DisplayMask,"));

  const MessageFilter sorted =
      ParseMessageFilter(Filter("", nullptr, {{"DisplayMask", dsDescending}}, 10, true), messages_);
  EXPECT_EQ(sorted.from, join);
  EXPECT_EQ(sorted.condition, "  ORDER BY tblMsgReceipent.DisplayMask DESC");
  EXPECT_EQ(sorted.limit, 10);

  const MessageFilter received =
      ParseMessageFilter(Filter("tblReceivedMessages", nullptr), messages_);
  EXPECT_EQ(received.from, join);
  EXPECT_EQ(received.distinct, "DISTINCT");
  EXPECT_THAT(received.columns, StartsWith("tblMsgReceipent.DisplayMask AS DisplayMask,"
                                           "tblMsgReceipent.PartyID AS MessageID, "
                                           "tblMessages.MessageID AS MessageOID,"));

  // The query's own distinct flag is honoured without the join.
  const MessageFilter distinct = ParseMessageFilter(Filter("", nullptr, {}, 200, true), messages_);
  EXPECT_EQ(distinct.from, "FROM tblMessages ");
  EXPECT_EQ(distinct.distinct, "DISTINCT");
}

}  // namespace
}  // namespace orvtest
