// The clock, the desktop and the report.
#include "bench/bench.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>

#include "host/handset/handset.h"

namespace bench {
namespace {

double Seconds(const std::function<void()>& work) {
  const auto start = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

}  // namespace

void Die(const char* what) {
  std::fprintf(stderr, "qv_bench: %s\n", what);
  std::exit(2);
}

void PutText(std::uint8_t* place, const char* text) {
  for (; *text != '\0'; ++text, place += 2) *place = static_cast<std::uint8_t>(*text);
}

std::vector<double> Shortest(int runs, const std::vector<std::function<void()>>& works) {
  std::vector<double> shortest(works.size(), 1e9);
  for (int run = 0; run < runs; ++run) {
    for (std::size_t i = 0; i < works.size(); ++i) shortest[i] = std::min(shortest[i], Seconds(works[i]));
  }
  return shortest;
}

bool Report(const char* what, double ratio, double bound) {
  std::printf("  %-72s %5.2f   (at most %.1f)%s\n", what, ratio, bound, ratio > bound ? "   TOO MUCH" : "");
  return ratio <= bound;
}

Desktop::Desktop(const loader::AgentLibrary& agent, std::int32_t module_id)
    : export_(agent.Export<RapiFunction>("fnQV_ExportTabs")), recover_(agent.Export<RapiFunction>("fnQV_RecovTabs")) {
  request_.module_id = module_id;
  std::copy(std::begin(kDirectory), std::end(kDirectory), request_.directory);
}

std::uint32_t Desktop::Run(RapiFunction* entry_point, std::uint32_t mode) {
  request_.mode = mode;
  std::copy(answer_.record.anchor, answer_.record.anchor + qv::kAnchorCapacity, request_.anchor);
  entry_point(0, reinterpret_cast<std::uint8_t*>(&request_), nullptr, nullptr, &answer_);
  if (answer_.record.code != 0) Die("the agent reports a failure");
  return answer_.record.mode;
}

std::int32_t QV_STDCALL Desktop::Answer::Write(const void* buffer, std::uint32_t size, std::uint32_t* written) {
  std::memcpy(&record, buffer, std::min<std::size_t>(size, sizeof(record)));
  *written = size;
  return 0;
}

Growth MeasureIncrementalExport(Desktop& desktop, const std::function<void(std::uint32_t records)>& prepare,
                                const std::function<void()>& change) {
  Growth growth;
  std::vector<double> per_record;
  for (const std::uint32_t records : {1000u, 10000u, 100000u}) {
    prepare(records);
    desktop.Export(1);
    handset::ResetPeakMemory();
    const double seconds = Shortest(static_cast<int>(1000000 / records), {[&] {
                                      change();
                                      if (desktop.Export(3) != 3) Die("an incremental export was downgraded");
                                    }})[0];
    per_record.push_back(seconds / records);
    growth.peaks.push_back(handset::PeakAllocatedBytes());
    std::printf("  %6u records: %8.2f ms, %6.1f ns a record, peak memory %9llu bytes, %5.1f a record\n", records,
                1e3 * seconds, 1e9 * per_record.back(), static_cast<unsigned long long>(growth.peaks.back()),
                static_cast<double>(growth.peaks.back()) / records);
  }
  growth.good = Report("time per record, 100,000 against 1,000", per_record.back() / per_record.front(), 2);
  return growth;
}

}  // namespace bench
