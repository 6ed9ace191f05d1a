// Quoting texts for SQL literals, per call: plain ASCII (the common case),
// ASCII with quotes and backslashes, multi-byte UTF-8, and a long text whole
// and cut to 255 characters. BM_CopyOnly copies the short plain text into a
// new string: the floor any quoting routine stands on. No database is involved.

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

void BM_Quote(benchmark::State& state, const std::string& text, bool limit255) {
  for (auto _ : state) benchmark::DoNotOptimize(orvmysql::GetQuotedString(text, limit255));
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(text.size()));
}
BENCHMARK_CAPTURE(BM_Quote, ShortAscii, kShortAscii, true);
BENCHMARK_CAPTURE(BM_Quote, LongAscii, kLongAscii, false);
BENCHMARK_CAPTURE(BM_Quote, LongAsciiCut255, kLongAscii, true);
BENCHMARK_CAPTURE(BM_Quote, QuotesAndBackslashes, kQuotes, true);
BENCHMARK_CAPTURE(BM_Quote, MultiByte, kUtf8, true);

}  // namespace
