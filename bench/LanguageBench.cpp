// Messages and display names in a language: a message from the built-in
// table (the baseline), the same message from a loaded catalog, reading a
// catalog (done once per language), and the display names of a query
// document. No database is involved.

#include <benchmark/benchmark.h>
#include <stdlib.h>

#include "l10n/LanguageFiles.h"
#include "orvmysql/Language.h"
#include "orvmysql/Query.h"

namespace {

using namespace orvmysql;

void UseSourceData() {
  setenv("ORVMYSQL_DATA_DIR", ORVMYSQL_SOURCE_DATA_DIR, 1);
}

void BM_MessageBuiltIn(benchmark::State& state) {
  UseSourceData();
  SetLanguage("C");
  for (auto _ : state) benchmark::DoNotOptimize(MessageText(8195));
  SetLanguage("");
}
BENCHMARK(BM_MessageBuiltIn);

void BM_MessageFromCatalog(benchmark::State& state) {
  UseSourceData();
  SetLanguage("de_DE");
  for (auto _ : state) benchmark::DoNotOptimize(MessageText(8195));
  SetLanguage("");
}
BENCHMARK(BM_MessageFromCatalog);

void BM_CatalogRead(benchmark::State& state) {
  const std::string path = std::string(ORVMYSQL_SOURCE_DATA_DIR) + "/messages/de.xlf";
  for (auto _ : state) benchmark::DoNotOptimize(detail::ReadMessageCatalog(path));
}
BENCHMARK(BM_CatalogRead);

void BM_DisplayNames(benchmark::State& state) {
  UseSourceData();
  auto criteria = std::make_shared<CConditionExpression>(dloAnd);
  criteria->Conditions()->Add(std::make_shared<CCondition>("ResourceID", dcoEqualto, "ann"));
  criteria->Conditions()->Add(std::make_shared<CCondition>("State", dcoContains, 67108864));
  criteria->Conditions()->Add(std::make_shared<CCondition>("Priority", dcoGreaterThanEqualTo, 2));
  criteria->Conditions()->Add(std::make_shared<CCondition>("CreatedOn", dcoLastXDays, 7));
  CQuery query;
  query.SetCriteria(criteria);
  query.OrderBy()->Add(std::make_shared<COrderExpression>("Priority", dsDescending));
  const std::string xml = query.ToXML();
  for (auto _ : state) benchmark::DoNotOptimize(TranslateDisplayNames(xml, "de_DE"));
}
BENCHMARK(BM_DisplayNames);

}  // namespace
