// The four entity filters against the real schema: every statement they
// produce for every attribute and every operator its type takes (with a value
// and without), every sort key, and grouped queries, runs without error; a few
// of them are checked for the rows they find.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "query/DateRanges.h"
#include "query/EntityFilters.h"
#include "support/LiveDb.h"
#include "unit/QueryTestSupport.h"

using namespace orvmysql;
using orvtest::Cond;
using orvtest::Group;

namespace {

// How one provider turns a filter into the statement its list operation runs.
struct Entity {
  std::string name;
  std::shared_ptr<CAttributes> (*attributes)();
  std::function<std::string(const std::string& filter)> statement;
};

const std::string kProcessHead =
    "SELECT ProcInstanceID , ProcInstanceName, FKProcDefID, ScheduledStartTime, "
    "ScheduledEndTime, ScheduledTimeOut, CreatorID, CreatorType, CreatorName, "
    "State,Priority, `GUID`, FKParentProcInstanceID, CreatedOn, StartedOn, FinishedOn,`Note` "
    "FROM tblProcessInstance ";
const std::string kActivityHead =
    "SELECT tblActivityInstance.*,tblActivities.ActivityName  FROM tblActivityInstance INNER "
    "JOIN tblActivities ON tblActivityInstance.FKActivityID = tblActivities.ActivityID ";

std::string WorkitemStatement(const std::string& filter) {
  std::shared_ptr<CAttributes> map;
  return ParseWorkitemFilter(filter, map);
}

std::string MessageStatement(const std::string& filter) {
  std::shared_ptr<CAttributes> map;
  const MessageFilter parts = ParseMessageFilter(filter, map);
  const std::string limit = parts.limit != -1 ? " LIMIT " + std::to_string(parts.limit) : "";
  return "SELECT " + parts.distinct + " " + parts.columns + " " + parts.from + " " +
         parts.condition + " " + limit;
}

std::vector<Entity> Entities() {
  return {
      {"tblWorkitems", &WorkitemAttributes, &WorkitemStatement},
      {"vWorkitemsProcess", &WorkitemAttributes, &WorkitemStatement},
      {"", &ProcInstanceAttributes,
       [](const std::string& filter) {
         std::shared_ptr<CAttributes> map;
         return kProcessHead + " " + ParseProcInstanceFilter(filter, map);
       }},
      {"", &ActivityInstanceAttributes,
       [](const std::string& filter) {
         std::shared_ptr<CAttributes> map;
         return kActivityHead + " " + ParseActivityInstanceFilter(filter, map);
       }},
      {"", &MessageAttributes, &MessageStatement},
      {"tblReceivedMessages", &MessageAttributes, &MessageStatement},
  };
}

// A value the attribute's type reads for the operator.
Variant SampleValue(const CAttribute& attribute, int32_t op) {
  if (detail::IsCountOperator(op)) return 3;
  switch (attribute.DataType()) {
    case kAttrLongText:
    case kAttrText:
      return "a'b%_\\";
    case kAttrDateTime:
    case kAttrDate:
    case kAttrTime:
      return "2024-02-29 10:00:00";
    case kAttrBoolean:
      return "yes";
    default:
      return 4;
  }
}

std::string Document(const std::string& entity, std::shared_ptr<CConditionExpression> criteria,
                     const std::vector<std::shared_ptr<COrderExpression>>& keys = {}) {
  CQuery query;
  query.SetEntityName(entity);
  query.SetCriteria(std::move(criteria));
  for (const auto& key : keys) query.OrderBy()->Add(key);
  return query.ToXML();
}

class FilterLive : public orvtest::LiveTest {
 protected:
  static void SetUpTestSuite() {
    LiveTest::SetUpTestSuite();
    Db().Exec(
        "INSERT INTO tblProcessInstance (ProcInstanceID, ProcInstanceName, FKProcDefID, State, "
        "Priority, CreatorName, Note, CreatedOn) VALUES "
        "(1, 'Alpha', 1, 67108868, 2, 'Ann', 'first', '2024-05-15 10:00:00'),"
        "(2, 'O''Brien', 1, 134217729, 5, 'Bob', '', '2024-05-14 10:00:00'),"
        "(3, NULL, 2, 67108864, NULL, NULL, NULL, NULL)");
    Db().Exec(
        "INSERT INTO tblActivities (ActivityID, ActivityName) VALUES (1, 'Review'), (2, "
        "'Approve')");
    Db().Exec(
        "INSERT INTO tblActivityInstance (ActivityInstanceID, State, DisplayName, FKActivityID, "
        "FKProcInstanceID, `Trigger`, CreatedOn) VALUES "
        "(1, 67108864, 'Review it', 1, 1, 0, '2024-05-15 11:00:00'),"
        "(2, 134217729, 'Approve it', 2, 2, 1, '2024-04-30 23:59:59')");
    Db().Exec(
        "INSERT INTO tblWorkitems (WorkitemID, ResourceID, ResourceType, ResourceName, Subject, "
        "Note, State, FKActivityInstanceID, FKProcInstanceID, Priority, DisplayMask, CreatedOn) "
        "VALUES (1, 'ann', 'user', 'Ann', 'Check', 'n', 67108864, 1, 1, 1, 0, "
        "'2024-05-15 12:00:00'), (2, 'bob', 'user', 'Bob', 'Sign', NULL, 134217729, 2, 2, 3, 4, "
        "NULL)");
    Db().Exec(
        "INSERT INTO tblMessages (MessageID, SenderID, Subject, Message, MessageType, MessageDate, "
        "HasAttachments, Direction, Priority, State) VALUES "
        "(1, 'sam', 'Hello', 'body', 1, '2024-05-15 09:00:00', 1, 1, 2, 0),"
        "(2, 'sam', 'Later', NULL, 1, '2024-05-01 09:00:00', 0, 0, 2, 1)");
    Db().Exec(
        "INSERT INTO tblMsgReceipent (PartyID, FKMessageID, RecepientID, RecepientType, "
        "RecepientName, DisplayMask) VALUES (1, 1, 'ann', 'user', 'Ann', 4), "
        "(2, 1, 'bob', 'user', 'Bob', 0), (3, 2, 'ann', 'user', 'Ann', 0)");
  }

  void SetUp() override {
    connection_ = Db().NewConnection();
    connection_->StartSession();
  }
  void TearDown() override { connection_->EndSession(); }

  // Runs the statement; a failure names it.
  int32_t Rows(const std::string& sql) {
    try {
      return connection_->Execute(sql)->Count();
    } catch (const Error& e) {
      ADD_FAILURE() << e.Description();
      return -1;
    }
  }

  orvtest::FixedClock clock_{Date::FromParts(2024, 5, 15, 15, 30, 0)};
  std::shared_ptr<IConnection> connection_;
};

TEST_F(FilterLive, EveryAttributeWithEveryOperatorItsTypeTakes) {
  int statements = 0;
  for (const Entity& entity : Entities()) {
    const auto map = entity.attributes();
    for (const auto& attribute : *map) {
      // The plain work-item statement has no process columns.
      if (entity.name == "tblWorkitems" && attribute->EntityAlias() == "tblProcessInstance") {
        continue;
      }
      for (int32_t op = dcoEqualto; op <= dcoIn; ++op) {
        for (const bool with_value : {true, false}) {
          const auto condition =
              Cond(attribute->SchemaName(), static_cast<ConditionOperatorEnum>(op),
                   with_value ? SampleValue(*attribute, op) : Variant());
          std::string sql;
          try {
            sql = entity.statement(Document(entity.name, Group(dloAnd, {condition})));
          } catch (const Error& e) {
            // Operators the type does not take, and "last X" without its X.
            const bool expected = e.Number() == orvtest::OwnError(kMsgInvalidOperator) ||
                                  (!with_value && e.Number() == kErrTypeMismatch);
            EXPECT_TRUE(expected) << attribute->SchemaName() << " " << op << ": "
                                  << e.Description();
            continue;
          }
          EXPECT_GE(Rows(sql), 0) << sql;
          ++statements;
        }
      }
    }
  }
  RecordProperty("statements", statements);
  EXPECT_GT(statements, 3000);
}

TEST_F(FilterLive, EverySortKeyAndGroupedQueries) {
  for (const Entity& entity : Entities()) {
    std::vector<std::shared_ptr<COrderExpression>> keys;
    const auto map = entity.attributes();
    for (const auto& attribute : *map) {
      if (entity.name == "tblWorkitems" && attribute->EntityAlias() == "tblProcessInstance") {
        continue;
      }
      keys.push_back(std::make_shared<COrderExpression>(
          attribute->SchemaName(), keys.size() % 2 ? dsDescending : dsAscending));
    }
    const auto first = *map->begin();
    const auto second = *std::next(map->begin());
    const auto leaf = [&](const std::shared_ptr<CAttribute>& a, ConditionOperatorEnum op) {
      return Cond(a->SchemaName(), op, SampleValue(*a, op));
    };
    auto root = Group(dloOr, {leaf(first, dcoNotNull), leaf(second, dcoNull)},
                      {Group(dloAnd, {leaf(first, dcoEqualto)},
                             {Group(dloNot, {leaf(second, dcoNotNull)}),
                              Group(dloNotSet, {leaf(first, dcoNull)})})});
    EXPECT_GE(Rows(entity.statement(Document(entity.name, root, keys))), 0);
    EXPECT_GE(Rows(entity.statement(Document(entity.name, nullptr, keys))), 0);
    EXPECT_GE(Rows(entity.statement(Document(entity.name, nullptr))), 0);
  }
}

TEST_F(FilterLive, StatementsFindTheRowsTheyDescribe) {
  const auto processes = [&](std::shared_ptr<CConditionExpression> criteria) {
    std::shared_ptr<CAttributes> map;
    return Rows(kProcessHead + " " + ParseProcInstanceFilter(Document("", criteria), map));
  };
  EXPECT_EQ(processes(Group(dloAnd, {Cond("ProcInstanceName", dcoEqualto, "O'Brien")})), 1);
  // "Not equal" and "does not begin with" count NULL columns in.
  EXPECT_EQ(processes(Group(dloAnd, {Cond("ProcInstanceName", dconotequalto, "Alpha")})), 2);
  EXPECT_EQ(processes(Group(dloAnd, {Cond("ProcInstanceName", dcoDoesNotBeginWith, "O'")})), 2);
  EXPECT_EQ(processes(Group(dloAnd, {Cond("Note", dcoNull)})), 2);
  EXPECT_EQ(processes(Group(dloAnd, {Cond("State", dcoContains, 4)})), 1);
  EXPECT_EQ(processes(Group(dloAnd, {Cond("Priority", dcoGreaterThan)})), 2);
  EXPECT_EQ(processes(Group(dloAnd, {Cond("CreatedOn", dcoToday)})), 1);
  EXPECT_EQ(processes(Group(dloAnd, {Cond("CreatedOn", dcoYesterday)})), 1);
  EXPECT_EQ(processes(Group(dloAnd, {Cond("CreatedOn", dcoEqualto, "2024-05-14")})), 1);
  EXPECT_EQ(processes(Group(
                dloOr, {Cond("CreatedOn", dcoLastXDays, 1), Cond("FKProcDefID", dcoEqualto, 2)})),
            3);

  EXPECT_EQ(Rows(WorkitemStatement(Document(
                "vWorkitemsProcess", Group(dloAnd, {Cond("CreatorName", dcoEqualto, "Bob"),
                                                    Cond("DisplayName", dcoContains, "prove")})))),
            1);
  EXPECT_EQ(Rows(MessageStatement(
                Document("", Group(dloAnd, {Cond("RecepientName", dcoEqualto, "Ann")})))),
            2);
  EXPECT_EQ(Rows(MessageStatement(Document("tblReceivedMessages",
                                           Group(dloAnd, {Cond("DisplayMask", dcoContains, 4)})))),
            1);
  EXPECT_EQ(Rows(MessageStatement(
                Document("", Group(dloAnd, {Cond("HasAttachments", dcoEqualto, "no")})))),
            1);
}

}  // namespace
