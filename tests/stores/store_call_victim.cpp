// Makes one call of a store library and dies in it: at its n-th call that changes the file system it kills itself,
// before or after carrying it out. It sees those calls because its own definitions come before the C library's.
//
//   store_call_victim ROOT LIBRARY CALL N before|after
//
// Exits with 0 when there was no n-th one and the store call succeeded.
#include <fcntl.h>
#include <signal.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstring>
#include <stdexcept>
#include <string>

#include "host/handset/handset.h"
#include "host/stores/store_library.h"
#include "layout/bytes.h"
#include "modules/contacts/contacts_layout.h"
#include "tests/stores/contact_store_library.h"
#include "tests/stores/sched_store_library.h"
#include "tests/stores/victim_calls.h"

namespace {

/// Calls until the fatal one; 0 once it cannot come any more.
unsigned calls_left = 0;
bool die_before = false;

template <typename... Arguments>
long Carry(long number, Arguments... arguments) {
  const bool fatal = calls_left != 0 && --calls_left == 0;
  if (fatal && die_before) raise(SIGKILL);
  const long result = syscall(number, arguments...);
  if (fatal) raise(SIGKILL);
  return result;
}

long Open(const char* path, int flags, mode_t mode) {
  flags |= O_LARGEFILE;
  return (flags & O_CREAT) != 0 ? Carry(SYS_open, path, flags, mode) : syscall(SYS_open, path, flags, mode);
}

long Low(std::int64_t offset) {
  return static_cast<long>(offset);
}
long High(std::int64_t offset) {
  return static_cast<long>(offset >> 32);
}

}  // namespace

// The names are given apart from the functions, because the C library's headers rename some of them.
#define INTERPOSE(result, name, ...)                                                          \
  extern "C" [[gnu::visibility("default")]] result Victim_##name(__VA_ARGS__) __asm__(#name); \
  result Victim_##name(__VA_ARGS__)

INTERPOSE(int, open, const char* path, int flags, mode_t mode) {
  return static_cast<int>(Open(path, flags, mode));
}
INTERPOSE(int, open64, const char* path, int flags, mode_t mode) {
  return static_cast<int>(Open(path, flags, mode));
}
INTERPOSE(ssize_t, write, int file, const void* bytes, size_t size) {
  return Carry(SYS_write, file, bytes, size);
}
INTERPOSE(ssize_t, pwrite, int file, const void* bytes, size_t size, long offset) {
  return Carry(SYS_pwrite64, file, bytes, size, offset, 0L);
}
INTERPOSE(ssize_t, pwrite64, int file, const void* bytes, size_t size, std::int64_t offset) {
  return Carry(SYS_pwrite64, file, bytes, size, Low(offset), High(offset));
}
INTERPOSE(int, ftruncate, int file, long size) {
  return static_cast<int>(Carry(SYS_ftruncate64, file, size, 0L));
}
INTERPOSE(int, ftruncate64, int file, std::int64_t size) {
  return static_cast<int>(Carry(SYS_ftruncate64, file, Low(size), High(size)));
}
INTERPOSE(int, fsync, int file) {
  return static_cast<int>(Carry(SYS_fsync, file));
}
INTERPOSE(int, fdatasync, int file) {
  return static_cast<int>(Carry(SYS_fdatasync, file));
}
INTERPOSE(int, unlink, const char* path) {
  return static_cast<int>(Carry(SYS_unlink, path));
}

namespace {

std::uint32_t MakeScheduleCall(std::string_view call, const SchedStoreLibrary& library) {
  constexpr std::uint32_t kTable = stores::kScheduleEntries;
  const Record record = VictimRecord();
  const auto doomed = DeletedIds();
  std::uint32_t new_id = 0;
  if (call == "insert") return library.insert(kTable, record.data(), &new_id, kGroupArgument);
  if (call == "update") return library.update(kTable, kUpdatedId, record.data(), kGroupArgument);
  if (call == "delete") return library.del(kTable, doomed.size(), doomed.data());
  if (call == "delete_all") return library.del_all();
  throw std::invalid_argument(std::string(call));
}

std::int32_t AddContacts(const ContactStoreLibrary& library) {
  Record records;
  for (const Record& contact : AddedContacts()) records.insert(records.end(), contact.begin(), contact.end());
  std::array<std::uint32_t, kAddedContacts> new_ids;
  return library.contacts.add(records.data(), kAddedContacts, new_ids.data());
}

std::int32_t ModifyGroups(const ContactStoreLibrary& library) {
  using namespace qv::contacts;
  Record memberships(kContactsBefore * kMembershipStoreSize);
  for (std::uint32_t i = 0; i < kContactsBefore; ++i) {
    std::uint8_t* const membership = memberships.data() + i * kMembershipStoreSize;
    qv::layout::StoreNumber(membership, 4, i + 1);
    qv::layout::StoreNumber(membership + kMembershipCount.offset, 4, kOtherGroups.size());
    std::memcpy(membership + kMembershipGroups.offset, kOtherGroups.data(), sizeof(kOtherGroups));
  }
  return library.modify_groups(kContactsBefore, memberships.data());
}

std::uint32_t MakeContactCall(std::string_view call, const ContactStoreLibrary& library) {
  if (library.initialize(0) != stores::kDone) throw std::runtime_error("the store cannot be initialised");
  return static_cast<std::uint32_t>(call == "add_contacts" ? AddContacts(library) : ModifyGroups(library));
}

std::uint32_t WriteConfig(const LibraryFile& library) {
  return library.Find<std::uint32_t(const void*)>("Sync_rbc_WriteConfig")(WrittenConfig().data());
}

std::uint32_t DeleteList(const LibraryFile& library, const char* entry_point) {
  const auto doomed = DeletedIds();
  return library.Find<std::uint32_t(std::uint32_t, const std::uint32_t*)>(entry_point)(doomed.size(), doomed.data());
}

std::uint32_t Make(std::string_view call, const std::string& library) {
  if (IsContactCall(call)) return MakeContactCall(call, ContactStoreLibrary(library));
  if (call == kWriteConfig) return WriteConfig(LibraryFile(library));
  if (const ListDeletion* const deletion = FindListDeletion(call)) {
    return DeleteList(LibraryFile(library), deletion->entry_point);
  }
  return MakeScheduleCall(call, SchedStoreLibrary(library));
}

}  // namespace

int main(int count, char** arguments) try {
  if (count != 6) throw std::invalid_argument("usage: store_call_victim ROOT LIBRARY CALL N before|after");
  handset::Start(arguments[1]);
  die_before = arguments[5] == std::string_view("before");
  calls_left = static_cast<unsigned>(std::stoul(arguments[4]));
  const std::uint32_t status = Make(arguments[3], arguments[2]);
  calls_left = 0;
  return status == stores::kDone ? 0 : 1;
} catch (const std::exception& error) {
  calls_left = 0;
  std::fprintf(stderr, "%s\n", error.what());
  return 1;
}
