// A process definition of 50 activities with 10 properties each: storing it,
// reading it back, and the cascade delete, each through the providers inside
// one session. The "statements" counter is the server's own count of
// statements per iteration.

#include <benchmark/benchmark.h>

#include <memory>
#include <string>
#include <vector>

#include "bench/BenchSupport.h"
#include "orvmysql/Definitions.h"

namespace {

using orvmysql::FieldArray;

constexpr int kActivities = 50;
constexpr int kPropertiesPerActivity = 10;

using orvbench::Source;

// One handler in one session, its providers, and the statement counter.
class Session : public orvbench::CountedSession {
 public:
  Session()
      : definitions_(Source<orvmysql::IOrvDefinitionsDP>(Handler(), 4)),
        activities_(Source<orvmysql::IActivitiesDP>(Handler(), 7)),
        properties_(Source<orvmysql::IPropertyValueDP>(Handler(), 23)) {}

  int32_t Store(const std::string& name) {
    const int32_t definition = orvbench::StoreDefinition(Handler(), name);
    for (int a = 0; a < kActivities; ++a) {
      const std::string id = "a" + std::to_string(a);
      activities_->Add(
          {"Activity " + id, "", 1, 0, 1, 1, 1, 1, 1, definition, 1, "", "", id, 0, "{BENCH}"});
    }
    auto list = activities_->GetActivitiesForProcess(definition);
    while (list->GetNext()) {
      const int32_t activity = list->CurrentItem()->GetValue("ActivityID").ToLong();
      for (int p = 0; p < kPropertiesPerActivity; ++p) {
        properties_->Add({activity, "property " + std::to_string(p), "Property", "", 1,
                          "value " + std::to_string(p), 0, 0.0, 100.5, "", "", "", "", "", 1});
      }
    }
    return definition;
  }

  // Reads every column the engine uses of the definition, its activities and
  // their properties; returns the number of property values read.
  int ReadBack(int32_t definition) {
    auto def = definitions_->GetProcessDefByID(definition);
    while (def->GetNext()) benchmark::DoNotOptimize(def->CurrentItem()->GetValue("ProcDefName"));
    int values = 0;
    auto list = activities_->GetActivitiesForProcess(definition);
    while (list->GetNext()) {
      auto activity = list->CurrentItem();
      benchmark::DoNotOptimize(activity->GetValue("ActivityName"));
      auto bag = properties_->GetPropertiesForEntity(activity->GetValue("ActivityID").ToLong());
      while (bag->GetNext()) {
        auto property = bag->CurrentItem();
        benchmark::DoNotOptimize(property->GetValue("PropertyName"));
        benchmark::DoNotOptimize(property->GetValue("Value"));
        benchmark::DoNotOptimize(property->GetValue("Max"));
        ++values;
      }
    }
    return values;
  }

  void Delete(int32_t definition) { definitions_->Delete(definition); }

  // The statements of the cascade, each committing by itself.
  void DeleteInAutocommit(int32_t definition) {
    const std::string id = std::to_string(definition);
    const std::string activities =
        "(SELECT ActivityID FROM tblActivities WHERE FKProcDefinitionID =" + id + ")";
    for (const std::string& sql :
         {"DELETE FROM tblActivityParamBag WHERE FKActivityID IN " + activities,
          "DELETE FROM tblActivityPropertyBag WHERE FKActivityID IN " + activities,
          "DELETE FROM tblActivities WHERE FKProcDefinitionID =" + id,
          "DELETE FROM tblTransitions WHERE FKProcDefinitionID =" + id,
          "DELETE FROM tblSwitches WHERE FKProcDefinitionID =" + id,
          "DELETE FROM tblProcessParams WHERE FKProcDefID =" + id,
          "DELETE FROM tblProcessDef WHERE ProcessDefID = " + id}) {
      Handler().Connection()->ExecuteNonQuery(sql);
    }
  }

 private:
  std::shared_ptr<orvmysql::IOrvDefinitionsDP> definitions_;
  std::shared_ptr<orvmysql::IActivitiesDP> activities_;
  std::shared_ptr<orvmysql::IPropertyValueDP> properties_;
};

using orvbench::Counted;
using orvbench::SetStatements;

void BM_Definition_Store(benchmark::State& state) {
  Session session;
  long long statements = 0;
  int n = 0;
  for (auto _ : state) {
    int32_t definition = 0;
    Counted(state, session, statements,
            [&] { definition = session.Store("store " + std::to_string(n++)); });
    state.PauseTiming();
    session.Delete(definition);
    state.ResumeTiming();
  }
  SetStatements(state, statements);
}
BENCHMARK(BM_Definition_Store)->Unit(benchmark::kMillisecond);

void BM_Definition_ReadBack(benchmark::State& state) {
  Session session;
  const int32_t definition = session.Store("read back");
  long long statements = 0;
  for (auto _ : state) {
    Counted(state, session, statements, [&] {
      if (session.ReadBack(definition) != kActivities * kPropertiesPerActivity) {
        state.SkipWithError("the definition did not read back whole");
      }
    });
  }
  SetStatements(state, statements);
  session.Delete(definition);
}
BENCHMARK(BM_Definition_ReadBack)->Unit(benchmark::kMillisecond);

void BM_Definition_CascadeDelete(benchmark::State& state) {
  Session session;
  long long statements = 0;
  int n = 0;
  for (auto _ : state) {
    state.PauseTiming();
    const int32_t definition = session.Store("delete " + std::to_string(n++));
    state.ResumeTiming();
    Counted(state, session, statements, [&] { session.Delete(definition); });
  }
  SetStatements(state, statements);
}
BENCHMARK(BM_Definition_CascadeDelete)->Unit(benchmark::kMillisecond);

// The cascade as one unit of work against its statements each committing by
// itself, taking turns. First argument: 0, the definitions do not exist (the
// cost of the brackets alone); 1, each is a freshly stored definition of 50
// activities. Second: the server's innodb_flush_log_at_trx_commit for the run
// (the test server's 2, or 1, a log flush to disk at every commit).
void BM_Definition_CascadeDelete_UnitVsAutocommit(benchmark::State& state) {
  Session session;
  const bool stored = state.range(0) != 0;
  const auto flush = [&](int64_t value) {
    session.Handler().Connection()->ExecuteNonQuery("SET GLOBAL innodb_flush_log_at_trx_commit = " +
                                                    std::to_string(value));
  };
  flush(state.range(1));
  int n = 0;
  int32_t in_unit = -1, alone = -1;
  orvbench::TakeTurns(
      state,
      [&] {
        if (!stored) return;
        in_unit = session.Store("unit " + std::to_string(n));
        alone = session.Store("autocommit " + std::to_string(n++));
      },
      "unit", [&] { session.Delete(in_unit); }, "autocommit",
      [&] { session.DeleteInAutocommit(alone); });
  flush(2);
}
BENCHMARK(BM_Definition_CascadeDelete_UnitVsAutocommit)
    ->Args({0, 2})
    ->Args({1, 2})
    ->Args({0, 1})
    ->Args({1, 1})
    ->Iterations(30)
    ->UseManualTime()
    ->Unit(benchmark::kMicrosecond);

}  // namespace
