// Process-instance values: GetParameterForProcess and
// LoadProcessInstanceParams for one instance of a definition (three
// declarations, two of them with values) while tblProcessInstance holds 1,000
// and then 100,000 instances of that definition, each with two values. The
// time must not grow with the table; the run at 100,000 is labelled with its
// ratio to the run at 1,000. As the baseline, the same read with the data
// join restricted by name only (the join the instance restriction was moved
// out of), which returns the wrong rows and grows with the table.

#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdio>
#include <map>
#include <memory>
#include <string>

#include "bench/BenchSupport.h"
#include "orvmysql/Definitions.h"
#include "orvmysql/InstanceData.h"

namespace {

using orvbench::Source;

// Keys of the benchmark's rows, far above those other benchmarks take.
constexpr int32_t kBase = 300000000;
constexpr int32_t kDefinition = kBase;
constexpr int32_t kInstance = kBase + 1;  // the instance that is read

// The table holds n instances of the definition. The instance that is read
// has values for Amount and Requester; every other instance has values for
// all three declarations. Rows are only ever added (the benchmarks run from
// the smaller table to the larger).
int Fill(orvmysql::IConnection& db, int n) {
  static int filled = 0;
  if (filled == 0) {
    db.ExecuteNonQuery(
        "INSERT INTO tblProcessParams (ParameterID,FKProcDefID,ParameterName,DisplayName,"
        "DataType,`Attributes`,ParameterType,`Min`,`Max`,CreatorType) SELECT " +
        std::to_string(kBase) + " + seq, " + std::to_string(kDefinition) +
        ", ELT(seq, 'Amount', 'Requester', 'Note'), ELT(seq, 'Amount', 'Requester', 'Note'), "
        "IF(seq = 1, 2, 1), 0, 1, 0, 5000, 1 FROM seq_1_to_3");
  }
  if (n <= filled) return filled;
  const std::string range = "FROM seq_" + std::to_string(filled + 1) + "_to_" + std::to_string(n);
  db.ExecuteNonQuery(
      "INSERT INTO tblProcessInstance (ProcInstanceID,ProcInstanceName,FKProcDefID,State) "
      "SELECT " +
      std::to_string(kBase) + " + seq, CONCAT('case ', seq), " + std::to_string(kDefinition) +
      ", 67108864 " + range);
  db.ExecuteNonQuery(
      "INSERT INTO tblProcInstanceData (ProcInstanceDataID,FKProcInstanceID,ParameterName,"
      "TextValue,NumericValue,DataType) SELECT " +
      std::to_string(kBase) + " + 3 * seq + k, " + std::to_string(kBase) +
      " + seq, ELT(k, 'Amount', 'Requester', 'Note'), IF(k = 1, NULL, 'text'), "
      "IF(k = 1, seq, NULL), IF(k = 1, 2, 1) " +
      range + " CROSS JOIN (SELECT seq AS k FROM seq_1_to_3) AS names WHERE seq > 1 OR k < 3");
  db.ExecuteNonQuery("ANALYZE TABLE tblProcessInstance, tblProcInstanceData");
  filled = n;
  return filled;
}

// Mean time per read at each table size, by benchmark name.
std::map<std::string, double>& MeanAt1000() {
  static std::map<std::string, double> means;
  return means;
}

template <class Read>
void RunRead(benchmark::State& state, const std::string& name, int expected_rows, Read read) {
  auto handler = orvbench::NewHandler();
  handler->StartSession();
  const int instances = static_cast<int>(state.range(0));
  if (Fill(*handler->Connection(), instances) != instances) {
    state.SkipWithError("the table holds more instances already");
    return;
  }
  auto values = Source<orvmysql::IProcInstanceParamsDP>(*handler, orvmysql::kDsProcInstData);
  int64_t reads = 0;
  const auto start = std::chrono::steady_clock::now();
  for (auto _ : state) {
    auto rows = read(*handler, *values);
    int count = 0;
    while (rows->GetNext()) {
      benchmark::DoNotOptimize(rows->CurrentItem()->GetValue("TextValue"));
      ++count;
    }
    if (count != expected_rows) {
      state.SkipWithError(("read " + std::to_string(count) + " rows").c_str());
      break;
    }
    ++reads;
  }
  const double mean =
      std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count() /
      static_cast<double>(reads > 0 ? reads : 1);
  if (instances == 1000) MeanAt1000()[name] = mean;
  if (instances != 1000 && MeanAt1000().count(name) != 0) {
    char label[64];
    std::snprintf(label, sizeof label, "%.2f times the time at 1,000", mean / MeanAt1000()[name]);
    state.SetLabel(label);
  }
  handler->EndSession();
}

void BM_ProcessValues_GetParameterForProcess(benchmark::State& state) {
  RunRead(state, "GetParameterForProcess", 3,
          [](orvmysql::CMYSqlDP&, orvmysql::IProcInstanceParamsDP& values) {
            return values.GetParameterForProcess(kInstance);
          });
}

void BM_ProcessValues_LoadProcessInstanceParams(benchmark::State& state) {
  RunRead(state, "LoadProcessInstanceParams", 3,
          [](orvmysql::CMYSqlDP&, orvmysql::IProcInstanceParamsDP& values) {
            return values.LoadProcessInstanceParams(kDefinition, kInstance);
          });
}

// GetParameterForProcess with the data join restricted by name only: every
// instance's values for the names are joined first and then filtered out,
// and Note, which only the other instances hold a value for, goes with them
// (2 of the 3 rows).
void BM_ProcessValues_JoinByNameOnly(benchmark::State& state) {
  RunRead(
      state, "JoinByNameOnly", 2,
      [](orvmysql::CMYSqlDP& handler, orvmysql::IProcInstanceParamsDP&) {
        return handler.Connection()->Execute(
            "SELECT tblProcessParams.ParameterID,tblProcessParams.FKProcDefID,tblProcessParams."
            "ParameterName,tblProcessParams.DisplayName,tblProcessParams.DataType,tblProcessParams."
            "DefaultValue,tblProcessParams.`Attributes` AS TemplateAttributes,tblProcessParams."
            "ParameterType,tblProcessParams.`Min`,tblProcessParams.`Max`,tblProcessParams."
            "CreatorType,tblProcessParams.ExtendedAttributes,tblProcessParams.Relevance,"
            "tblProcessParams.LookupTypeCode,tblProcessParams.ListAttribute,tblProcessInstance."
            "ProcInstanceID AS ProcInstanceID,tblProcInstanceData.ProcInstanceDataID AS "
            "ProcInstanceDataID, tblProcInstanceData.TextValue AS TextValue, tblProcInstanceData."
            "NumericValue AS NumericValue, tblProcInstanceData.`Attributes` AS `Attributes` FROM "
            "(tblProcessParams LEFT JOIN tblProcessInstance ON tblProcessParams.FKProcDefID="
            "tblProcessInstance.FKProcDefID) LEFT JOIN tblProcInstanceData ON (tblProcInstanceData."
            "ParameterName=tblProcessParams.ParameterName)  WHERE "
            "(tblProcessInstance.ProcInstanceID="
            "tblProcInstanceData.FKProcInstanceID OR tblProcInstanceData.FKProcInstanceID IS NULL) "
            "AND tblProcessInstance.ProcInstanceID = " +
            std::to_string(kInstance));
      });
}
// Every read at 1,000 instances first, then at 100,000: the table only grows.
BENCHMARK(BM_ProcessValues_GetParameterForProcess)->Arg(1000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ProcessValues_LoadProcessInstanceParams)->Arg(1000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ProcessValues_JoinByNameOnly)->Arg(1000)->Iterations(3)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ProcessValues_GetParameterForProcess)->Arg(100000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ProcessValues_LoadProcessInstanceParams)->Arg(100000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ProcessValues_JoinByNameOnly)
    ->Arg(100000)
    ->Iterations(3)
    ->Unit(benchmark::kMillisecond);

}  // namespace
