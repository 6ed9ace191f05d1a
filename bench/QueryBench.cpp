// Turning a filter into SQL: a query document of 20 conditions in three
// nested groups, read and rendered against the process-instance map, per call.
// No database is involved.

#include <benchmark/benchmark.h>

#include "orvmysql/ConditionBuilder.h"
#include "orvmysql/Query.h"
#include "query/EntityFilters.h"

namespace {

using namespace orvmysql;

// Root (AND) holds group 1 (OR), which holds group 2 (AND): 7 + 7 + 6 conditions
// over text, long text, numeric, bit-mask and date-time attributes.
std::string TwentyConditions() {
  struct Leaf {
    const char* attribute;
    ConditionOperatorEnum op;
    Variant value;
  };
  const Leaf leaves[] = {
      {"ProcInstanceName", dcoBeginsWith, "Order"},
      {"State", dcoContains, 67108864},
      {"Priority", dcoGreaterThanEqualTo, 2},
      {"CreatedOn", dcoLastXDays, 30},
      {"Note", dcoDoesNotContain, "draft"},
      {"CreatorName", dconotequalto, "O'Hara"},
      {"FKProcDefID", dcoEqualto, 12},
      {"TreeID", dcoEqualto, "7"},
      {"StartedOn", dcoThisMonth, Variant()},
      {"FinishedOn", dcoNull, Variant()},
      {"State", dcoDoesNotContain, 536870912},
      {"CreatorID", dcoContains, "ann"},
      {"ScheduledEndTime", dcoBefore, "2024-12-31"},
      {"Priority", dcoLessThan, 9},
      {"GUID", dcoNotNull, Variant()},
      {"ProcInstanceID", dcoGreaterThan, 100},
      {"CreatorType", dcoEqualto, "user"},
      {"ScheduledStartTime", dcoThisWeek, Variant()},
      {"FKParentProcInstanceID", dcoEqualto, Variant()},
      {"Note", dcoEndsWith, "urgent"},
  };
  auto root = std::make_shared<CConditionExpression>(dloAnd);
  auto middle = std::make_shared<CConditionExpression>(dloOr);
  auto inner = std::make_shared<CConditionExpression>(dloAnd);
  root->ConditionExpressions()->Add(middle);
  middle->ConditionExpressions()->Add(inner);
  int i = 0;
  for (const Leaf& leaf : leaves) {
    auto& group = i < 7 ? root : i < 14 ? middle : inner;
    group->Conditions()->Add(std::make_shared<CCondition>(leaf.attribute, leaf.op, leaf.value));
    ++i;
  }
  CQuery query;
  query.SetCriteria(root);
  query.OrderBy()->Add(std::make_shared<COrderExpression>("CreatedOn", dsDescending));
  return query.ToXML();
}

void BM_FilterXmlToSql(benchmark::State& state) {
  const std::string filter = TwentyConditions();
  std::shared_ptr<CAttributes> map;
  for (auto _ : state) {
    benchmark::DoNotOptimize(ParseProcInstanceFilter(filter, map));
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_FilterXmlToSql);

// The rendering alone, with the document already read.
void BM_FilterRenderOnly(benchmark::State& state) {
  CQuery query;
  query.FromXML(TwentyConditions());
  const auto map = ProcInstanceAttributes();
  CConditionToStringBuilder builder;
  for (auto _ : state) {
    benchmark::DoNotOptimize(builder.ToString(query.Criteria(), map));
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_FilterRenderOnly);

}  // namespace
