// Quoting texts for SQL literals, per call: plain ASCII (the common case),
// ASCII with quotes and backslashes, multi-byte UTF-8, and a long text cut to
// 255 characters. BM_CopyOnly copies the same plain text into a new string:
// the floor any quoting routine stands on. No database is involved.

#include <benchmark/benchmark.h>

#include <string>

#include "access/General.h"

namespace {

const std::string kShortAscii = "Approve the purchase order";
const std::string kLongAscii = [] {
  std::string text;
  while (text.size() < 4000) text += "Layout of the definition, node 17 at x=120 y=48; ";
  return text;
}();
const std::string kQuotes = "O'Brien's \"C:\\temp\\orders\" -- it's done";
const std::string kUtf8 = "Überprüfung der Bestellung — 注文の確認 ✓";

void BM_CopyOnly(benchmark::State& state) {
  for (auto _ : state) {
    std::string copy(kShortAscii);
    benchmark::DoNotOptimize(copy);
  }
}
BENCHMARK(BM_CopyOnly);

void BM_Quote_ShortAscii(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(orvmysql::GetQuotedString(kShortAscii, true));
}
BENCHMARK(BM_Quote_ShortAscii);

void BM_Quote_LongAscii(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(orvmysql::GetQuotedString(kLongAscii, false));
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(kLongAscii.size()));
}
BENCHMARK(BM_Quote_LongAscii);

void BM_Quote_LongAsciiCut255(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(orvmysql::GetQuotedString(kLongAscii, true));
}
BENCHMARK(BM_Quote_LongAsciiCut255);

void BM_Quote_QuotesAndBackslashes(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(orvmysql::GetQuotedString(kQuotes, true));
}
BENCHMARK(BM_Quote_QuotesAndBackslashes);

void BM_Quote_MultiByte(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(orvmysql::GetQuotedString(kUtf8, true));
}
BENCHMARK(BM_Quote_MultiByte);

}  // namespace
