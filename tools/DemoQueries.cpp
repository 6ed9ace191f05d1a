// Demo section: a work-item filter built in code, written as the query
// document the engine sends, read back, turned into SQL and run.

#include <memory>
#include <string>

#include "orvmysql/orvmysql.h"
#include "query/EntityFilters.h"
#include "tools/Demo.h"

namespace orvdemo {

namespace {

using namespace orvmysql;

constexpr int32_t kOpen = 0x4000000;

// A few work items of two activity instances, written directly: the
// work-item provider is not part of this demo. 67108864 is the open flag of
// the state word, 134217729 "completed".
void SeedWorkItems(IConnection& db, std::ostream& out) {
  db.ExecuteNonQuery(
      "INSERT INTO tblActivityInstance (ActivityInstanceID, State, DisplayName, FKActivityID) "
      "VALUES (9001, 67108864, 'Approve order', 1), (9002, 67108864, 'Ship order', 2)");
  db.ExecuteNonQuery(
      "INSERT INTO tblWorkitems (WorkitemID, ResourceID, Subject, State, FKActivityInstanceID, "
      "Priority, CreatedOn) VALUES "
      "(9001, 'ann', 'Approve order 17', 67108864, 9001, 3, NOW() - INTERVAL 40 DAY),"
      "(9002, 'ann', 'Ship order 12', 67108864, 9002, 1, NOW() - INTERVAL 2 DAY),"
      "(9003, 'ann', 'Ship order 9', 67108864, 9002, 1, NOW() - INTERVAL 30 DAY),"
      "(9004, 'ann', 'Approve order 15', 134217729, 9001, 3, NOW()),"
      "(9005, 'bob', 'Approve order 18', 67108864, 9001, 2, NOW())");
  out << "Seeded 5 work items: 4 for ann (one closed, one old and not urgent), 1 for bob\n";
}

}  // namespace

void DemoQueries(CMYSqlDP& handler, std::ostream& out) {
  out << "\n== Query filters\n";
  auto& db = *handler.Connection();
  SeedWorkItems(db, out);

  // ann's open work items that are urgent (priority 2 or more) or recent
  // (created in the last 7 days), most urgent first.
  auto urgent_or_recent = std::make_shared<CConditionExpression>(dloOr);
  urgent_or_recent->Conditions()->Add(
      std::make_shared<CCondition>("Priority", dcoGreaterThanEqualTo, 2));
  urgent_or_recent->Conditions()->Add(std::make_shared<CCondition>("CreatedOn", dcoLastXDays, 7));
  auto criteria = std::make_shared<CConditionExpression>(dloAnd);
  criteria->ConditionExpressions()->Add(urgent_or_recent);
  criteria->Conditions()->Add(std::make_shared<CCondition>("ResourceID", dcoEqualto, "ann"));
  criteria->Conditions()->Add(std::make_shared<CCondition>("State", dcoContains, kOpen));
  CQuery query;
  query.SetEntityName("tblWorkitems");
  query.SetCriteria(criteria);
  query.OrderBy()->Add(std::make_shared<COrderExpression>("Priority", dsDescending));

  const std::string xml = query.ToXML();
  out << "The filter as the engine sends it:\n  " << xml << "\n";

  CQuery read_back;
  read_back.FromXML(xml);
  out << "Read back: " << (read_back.ToXML() == xml ? "the same query" : "a different query!")
      << "\n";

  std::shared_ptr<CAttributes> map;
  const std::string sql = ParseWorkitemFilter(xml, map);
  out << "As SQL:\n  " << sql << "\n";
  auto rows = db.Execute(sql);
  out << rows->Count() << " work items match:\n";
  while (rows->GetNext()) {
    out << "  " << rows->CurrentItem()->GetValue("Subject").ToText() << " (priority "
        << rows->CurrentItem()->GetValue("Priority").ToText() << ")\n";
  }

  // A value pasted without quotes must be a number, so a filter cannot add SQL.
  criteria->Conditions()->Add(std::make_shared<CCondition>("Priority", dcoEqualto, "1 OR 1=1"));
  try {
    ParseWorkitemFilter(query.ToXML(), map);
  } catch (const Error& e) {
    const std::string& text = e.Description();
    out << "A priority of \"1 OR 1=1\" is refused: error " << e.Number() << ", "
        << text.substr(0, text.find(" => ")) << "\n";
  }
}

}  // namespace orvdemo
