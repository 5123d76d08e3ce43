// The contacts: full export with groups and pictures against bare copying and writing, growth of the incremental
// export.
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "bench/bench.h"
#include "host/handset/handset.h"
#include "layout/bytes.h"
#include "modules/contacts/contacts_layout.h"
#include "platform/file.h"

namespace bench {
namespace {

using namespace qv::contacts;
using Bytes = std::vector<std::uint8_t>;

constexpr std::int32_t kContactsModule = 1;
constexpr std::uint32_t kGroups = 20;
constexpr std::size_t kMostInBatch = 400;

/// A contact such as people keep: a name, three numbers, an address, a note, a picture.
Bytes MakeContact(std::uint32_t id) {
  Bytes record(kStoreSize);
  PutText(&record[18], ("Contact number " + std::to_string(id)).c_str());
  PutText(&record[122], "contact@example.com");
  PutText(&record[382], "+49 30 1234567");
  PutText(&record[448], "+86 10 87654321");
  PutText(&record[580], "0170 5550123");
  PutText(&record[1498], "17 Main Street, second floor");
  PutText(&record[1564], "12345");
  PutText(&record[2026], "Met at the fair; call back in spring about the new contract.");
  record[1389] = 130;
  qv::layout::StoreSlot(kRecordId, record.data(), id);
  qv::layout::StoreSlot(kStorePicture, record.data(), id);
  return record;
}

Bytes MakeGroup(std::uint32_t id) {
  Bytes record(kStoreSize);
  PutText(&record[18], "A group");
  qv::layout::StoreSlot(kRecordId, record.data(), id);
  return record;
}

/// A ContactStore.dll in memory: contacts 1 to `contacts`, each in two groups and with a picture of its own.
struct MemoryStore {
  static inline std::uint32_t contacts = 0;
  static inline std::uint32_t kinds =
      0;  ///< Different records in memory; contacts beyond them are like the first ones.
  static inline Bytes records;
  static inline Bytes groups;
  static inline Bytes picture;
  static inline std::uint16_t changes = 0;  ///< Each makes another hundredth of the contacts newer.

  static void Prepare(std::uint32_t count, std::uint32_t different) {
    contacts = count;
    kinds = different;
    records.clear();
    groups.clear();
    for (std::uint32_t id = 1; id <= kinds; ++id) Append(records, MakeContact(id));
    for (std::uint32_t id = 1; id <= kGroups; ++id) Append(groups, MakeGroup(id));
    picture.assign(kPictureStoreSize, 0x5A);
    qv::layout::StoreSlot(kStorePictureLength, picture.data(), kMostPictureBytes);
  }

  static const std::uint8_t* ContactAt(std::uint32_t id) { return &records[(id - 1) % kinds * kStoreSize]; }

  static std::int32_t Count(std::int32_t* count) noexcept {
    *count = static_cast<std::int32_t>(contacts);
    return 0;
  }

  static std::int32_t ListContacts(std::int32_t* count, std::uint8_t* entries) noexcept {
    List(contacts, entries);
    *count = static_cast<std::int32_t>(contacts);
    return 0;
  }

  static std::int32_t ListGroups(std::int32_t* count, std::uint8_t* entries) noexcept {
    List(kGroups, entries);
    *count = kGroups;
    return 0;
  }

  static std::int32_t ReadContacts(const std::uint32_t* ids, std::int32_t count, std::uint8_t* out) noexcept {
    for (std::int32_t i = 0; i < count; ++i) out = std::copy_n(ContactAt(ids[i]), kStoreSize, out);
    return 0;
  }

  static std::int32_t ReadGroups(const std::uint32_t* ids, std::int32_t count, std::uint8_t* out) noexcept {
    for (std::int32_t i = 0; i < count; ++i) out = std::copy_n(&groups[(ids[i] - 1) * kStoreSize], kStoreSize, out);
    return 0;
  }

  static std::int32_t QueryMemberships(std::int32_t count, std::uint8_t* out) noexcept {
    for (std::int32_t i = 0; i < count; ++i, out += kMembershipStoreSize) {
      qv::layout::StoreSlot(kMembershipCount, out, 2);
      qv::layout::StoreNumber(out + 8, 4, 1);
      qv::layout::StoreNumber(out + 12, 4, 2);
    }
    return 0;
  }

  static std::int32_t DownloadPicture(std::uint32_t, std::uint8_t* out) noexcept {
    std::copy(picture.begin(), picture.end(), out);
    return 0;
  }

  static void Install() {
    const auto point = [](auto* function) { return reinterpret_cast<coredll::FARPROC>(function); };
    handset::InstallLibrary(u"ContactStore.dll", {{u"DTP_PIMGetAllManNum", point(&Count)},
                                                  {u"DTP_PIMGetAllmanSyncid", point(&ListContacts)},
                                                  {u"DTP_PIMGetAllgroupSyncid", point(&ListGroups)},
                                                  {u"DTP_PIMReadman", point(&ReadContacts)},
                                                  {u"DTP_PIMReadgroup", point(&ReadGroups)},
                                                  {u"DTP_PIMQueryManAttachGroup", point(&QueryMemberships)},
                                                  {u"DTP_DownloadingImage", point(&DownloadPicture)}});
  }

 private:
  static void Append(Bytes& bytes, const Bytes& more) { bytes.insert(bytes.end(), more.begin(), more.end()); }

  /// Ids from 1 on, and a day in 2006 for each; in one of a hundred the hour and the minute follow the changes.
  static void List(std::uint32_t count, std::uint8_t* entries) {
    for (std::uint32_t id = 1; id <= count; ++id, entries += 16) {
      const std::uint16_t moved = id % 100 == 0 ? changes : 0;
      const std::uint16_t words[] = {
          2006, 12, 11, static_cast<std::uint16_t>(moved / 60 % 24), static_cast<std::uint16_t>(moved % 60), 0};
      std::memcpy(entries, &id, sizeof(id));
      std::memcpy(entries + sizeof(id), words, sizeof(words));
    }
  }
};

/// The files and writes of an export, to be written again without it.
struct Recording {
  struct Write {
    std::u16string path;
    Bytes bytes;
  };
  std::vector<Write> writes;

  explicit Recording(Desktop& desktop) {
    handset::Observe([&](const handset::Call& call) {
      if (call.function == "WriteFile") writes.push_back({std::u16string(call.path), Bytes(call.size)});
    });
    desktop.Export(4);
    handset::Observe({});
    std::map<std::u16string, Bytes> files;
    std::map<std::u16string, std::size_t> offsets;
    for (Write& write : writes) {
      Bytes& file = files.try_emplace(write.path, Content(write.path)).first->second;
      std::size_t& offset = offsets[write.path];
      std::copy_n(file.begin() + static_cast<std::ptrdiff_t>(offset), write.bytes.size(), write.bytes.begin());
      offset += write.bytes.size();
    }
  }

 private:
  static Bytes Content(const std::u16string& path) {
    Bytes bytes(static_cast<std::size_t>(std::filesystem::file_size(handset::HostPath(path))));
    qv::File file = qv::File::OpenExisting(path.c_str());
    std::size_t got = 0;
    if (!file.Read(bytes.data(), bytes.size(), got) || got != bytes.size()) Die("cannot read what was exported");
    return bytes;
  }
};

/// Copies the store records out of memory as the store does for an export, and writes the same bytes with the same
/// writes.
void CopyBare(const Recording& recording) {
  std::vector<std::uint32_t> ids(MemoryStore::contacts);
  for (std::uint32_t i = 0; i < ids.size(); ++i) ids[i] = i + 1;
  Bytes buffer(kMostInBatch * kStoreSize);
  std::size_t contacts = 0;
  std::size_t queried = 0;
  std::u16string open_path;
  qv::File file;
  for (const Recording::Write& write : recording.writes) {
    if (write.path != open_path) {
      file = qv::File::CreateAlways(write.path.c_str());
      open_path = write.path;
    }
    const auto take = [&](std::size_t& done) {
      const std::size_t count = std::min(kMostInBatch, ids.size() - done);
      done += count;
      return std::pair(ids.data() + done - count, static_cast<std::int32_t>(count));
    };
    if (write.path.ends_with(u"linkman.tbl")) {
      const auto [first, count] = take(contacts);
      MemoryStore::ReadContacts(first, count, buffer.data());
    } else if (write.path.ends_with(u"groupmgr.tbl")) {
      MemoryStore::ReadGroups(ids.data(), kGroups, buffer.data());
    } else if (write.path.ends_with(u"groupattach.tbl")) {
      MemoryStore::QueryMemberships(take(queried).second, buffer.data());
    } else {
      MemoryStore::DownloadPicture(0, buffer.data());
    }
    if (!file.Write(write.bytes.data(), write.bytes.size())) Die("cannot write");
  }
}

bool MeasureFullExport(Desktop& desktop) {
  constexpr std::uint32_t kContacts = 3000;
  std::printf("Contacts: full export of %u with %u groups and %u pictures\n", kContacts, kGroups, kContacts);
  MemoryStore::Prepare(kContacts, kContacts);
  const Recording recording(desktop);
  handset::ResetPeakMemory();
  const std::vector<double> seconds = Shortest(25, {[&] { desktop.Export(4); }, [&] { CopyBare(recording); }});
  std::printf("  agent %.1f ms, bare %.1f ms, %zu writes, peak memory %llu bytes\n", 1e3 * seconds[0], 1e3 * seconds[1],
              recording.writes.size(), static_cast<unsigned long long>(handset::PeakAllocatedBytes()));
  return Report("full export against bare copies and the same write calls", seconds[0] / seconds[1], 1.5);
}

}  // namespace

bool MeasureContacts(const loader::AgentLibrary& agent, const Growth& schedule) {
  MemoryStore::Install();
  Desktop desktop(agent, kContactsModule);
  bool good = MeasureFullExport(desktop);
  std::printf("Contacts: incremental export, one of a hundred changed\n");
  const Growth growth = MeasureIncrementalExport(
      desktop, [](std::uint32_t contacts) { MemoryStore::Prepare(contacts, 1000); }, [] { ++MemoryStore::changes; });
  constexpr double kMegabyte = 1 << 20;
  double above = 0;
  for (std::size_t i = 0; i < growth.peaks.size(); ++i) {
    const double more = static_cast<double>(growth.peaks[i]) - static_cast<double>(schedule.peaks[i]);
    above = std::max(above, more / kMegabyte);
  }
  good = Report("megabytes of memory above the schedule's for as many, at most", above, 3) && good;
  return growth.good && good;
}

}  // namespace bench
