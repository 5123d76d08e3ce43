// The short messages: export against a bare writer, recover against a bare reader and converter, and how both grow.
#include <cstdio>
#include <cstring>
#include <vector>

#include "bench/bench.h"
#include "host/handset/handset.h"
#include "layout/bytes.h"
#include "modules/messaging/sms_config.h"
#include "platform/file.h"

namespace bench {
namespace {

using namespace qv::sms;
using Bytes = std::vector<std::uint8_t>;

constexpr std::int32_t kSmsModule = 8;
constexpr std::uint32_t kMessages = 10000;
constexpr char16_t kTable[] = u"\\sync\\smsinfo.tbl";

/// An SmsStore.dll in memory that holds `messages` equal messages, an empty configuration, and takes whatever comes.
struct MemoryStore {
  static inline std::uint32_t messages = 0;
  static inline Bytes record;
  static inline Bytes taken;

  static void Prepare(std::uint32_t count) {
    messages = count;
    record.assign(kMessageStoreSize, 0);
    PutText(&record[16], "20061211070210");
    PutText(&record[192], "20061211070215");
    PutText(&record[46], "+49 170 5550123");
    PutText(&record[222], "The meeting is moved to Friday, ten o'clock; please bring the new figures and tell Anna.");
    taken.assign(kMessageStoreSize, 0);
  }

  static std::uint32_t Count() noexcept { return messages; }

  static std::uint32_t List(const std::uint32_t* count, std::uint8_t* entries) noexcept {
    for (std::uint32_t id = 1; id <= *count; ++id, entries += 36) {
      qv::layout::StoreNumber(entries, 4, id);
      std::memcpy(entries + 4, &record[16], 28);
    }
    return 0;
  }

  static std::uint32_t Read(std::uint32_t count, const std::uint32_t*, std::uint8_t* out) noexcept {
    for (std::uint32_t i = 0; i < count; ++i)
      std::memcpy(out + i * kMessageStoreSize, record.data(), kMessageStoreSize);
    return 0;
  }

  static std::uint32_t Insert(const std::uint8_t* message, std::uint32_t* new_id) noexcept {
    std::memcpy(taken.data(), message, kMessageStoreSize);
    *new_id = ++messages;
    return 0;
  }

  static std::uint32_t GetConfig(ConfigBlock* config) noexcept {
    *config = {};
    return 0;
  }
  static std::uint32_t SetConfig(const ConfigBlock*) noexcept { return 0; }

  static void Install() {
    const auto point = [](auto* function) { return reinterpret_cast<coredll::FARPROC>(function); };
    handset::InstallLibrary(u"SmsStore.dll", {{u"Sync_GetAllRecNum", point(&Count)},
                                              {u"Sync_GetAllidTime", point(&List)},
                                              {u"Sync_Read", point(&Read)},
                                              {u"Sync_Insert", point(&Insert)},
                                              {u"Sync_GetSMSConfig", point(&GetConfig)},
                                              {u"Sync_SetSMSConfig", point(&SetConfig)}});
  }
};

/// Copies the records out of memory in one go, as an export has them read, and writes as many bytes with the same
/// writes.
void WriteBare(std::uint32_t messages) {
  const Bytes bytes(kMessageExchangeSize, 1);
  Bytes records(messages * kMessageStoreSize);
  MemoryStore::Read(messages, nullptr, records.data());
  qv::File file = qv::File::CreateAlways(kTable);
  for (std::uint32_t i = 0; i < messages; ++i) {
    if (!file.Write(bytes.data(), bytes.size())) Die("cannot write");
  }
}

/// Reads record by record, converts each and hands it to the store: what no recover can do without.
void ReadAndConvertBare() {
  Bytes exchange(kMessageExchangeSize);
  Bytes record(kMessageStoreSize);
  qv::File file = qv::File::OpenExisting(kTable);
  std::uint32_t new_id = 0;
  for (;;) {
    std::size_t got = 0;
    if (!file.Read(exchange.data(), exchange.size(), got)) Die("cannot read");
    if (got == 0) return;
    qv::layout::ToStore(kMessageLayout, exchange.data(), record.data());
    MemoryStore::Insert(record.data(), &new_id);
  }
}

/// The exchange files of an export, as a desktop places them again before each recover.
struct Placed {
  Bytes table;
  explicit Placed(std::uint32_t messages) {
    Bytes exchange(kMessageExchangeSize);
    qv::layout::ToExchange(kMessageLayout, MemoryStore::record.data(), exchange.data());
    for (std::uint32_t i = 0; i < messages; ++i) table.insert(table.end(), exchange.begin(), exchange.end());
  }
  void Place() const {
    const Bytes config(40);
    qv::File conf = qv::File::CreateAlways(u"\\sync\\smsconf.tbl");
    qv::File file = qv::File::CreateAlways(kTable);
    if (!conf.Write(config.data(), config.size()) || !file.Write(table.data(), table.size())) Die("cannot write");
  }
};

/// The shortest time of a recover, the placing of its files not counted.
double RecoverSeconds(Desktop& desktop, const Placed& placed, int runs) {
  double shortest = 1e9;
  for (int run = 0; run < runs; ++run) {
    placed.Place();
    MemoryStore::messages = 0;
    shortest = std::min(shortest, Shortest(1, {[&] { desktop.Recover(5); }})[0]);
  }
  return shortest;
}

bool MeasureAgainstBare(Desktop& desktop) {
  std::printf("Short messages: %u exported and recovered\n", kMessages);
  MemoryStore::Prepare(kMessages);
  handset::ResetPeakMemory();
  const std::vector<double> seconds = Shortest(7, {[&] { desktop.Export(4); }, [&] { WriteBare(kMessages); }});
  std::printf("  export: agent %.1f ms, bare %.1f ms, peak memory %llu bytes\n", 1e3 * seconds[0], 1e3 * seconds[1],
              static_cast<unsigned long long>(handset::PeakAllocatedBytes()));
  bool good = Report("full export against the same write calls", seconds[0] / seconds[1], 1.5);

  const Placed placed(kMessages);
  const double agent = RecoverSeconds(desktop, placed, 7);
  placed.Place();
  const double bare = Shortest(7, {ReadAndConvertBare})[0];
  std::printf("  recover: agent %.1f ms, bare %.1f ms\n", 1e3 * agent, 1e3 * bare);
  good = Report("recover against a bare reader and converter", agent / bare, 1.5) && good;
  return good;
}

bool MeasureGrowth(Desktop& desktop) {
  std::printf("Short messages: how export and recover grow\n");
  std::vector<double> exports;
  std::vector<double> recovers;
  for (const std::uint32_t messages : {1000u, 10000u, 100000u}) {
    MemoryStore::Prepare(messages);
    const int runs = static_cast<int>(300000 / messages);
    exports.push_back(Shortest(runs, {[&] { desktop.Export(4); }})[0] / messages);
    recovers.push_back(RecoverSeconds(desktop, Placed(messages), std::max(runs / 10, 3)) / messages);
    std::printf("  %6u messages: export %6.0f ns, recover %6.0f ns a message\n", messages, 1e9 * exports.back(),
                1e9 * recovers.back());
  }
  const bool good = Report("export: time per message, 100,000 against 1,000", exports.back() / exports.front(), 2);
  return Report("recover: time per message, 100,000 against 1,000", recovers.back() / recovers.front(), 2) && good;
}

}  // namespace

bool MeasureMessages(const loader::AgentLibrary& agent) {
  MemoryStore::Install();
  Desktop desktop(agent, kSmsModule);
  const bool good = MeasureAgainstBare(desktop);
  return MeasureGrowth(desktop) && good;
}

}  // namespace bench
