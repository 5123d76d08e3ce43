// The simulated handset as its owner sees it: a directory becomes a phone, and tests set its clock, its windows and its
// faults. The agent sees the same phone through platform/coredll.h. One handset a process; no call is thread-safe.
#ifndef QV_HOST_HANDSET_HANDSET_H
#define QV_HOST_HANDSET_HANDSET_H

#include <array>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/coredll.h"

#pragma GCC visibility push(default)

namespace handset {

/// Makes `root` the handset's file system ("\" is `root`; names are found without regard to case) and puts everything
/// else back to how a handset starts: real clock, real free space, no windows, no semaphores, no faults, empty logs, no
/// installed libraries, nothing counted as open.
void Start(const std::filesystem::path& root);

/// The host's path for a path on the handset, whether or not the file exists.
std::filesystem::path HostPath(std::u16string_view handset_path);

// --- Clock ---

/// The local time stands still at `now`; std::nullopt lets it run with the host's clock again.
void SetLocalTime(std::optional<coredll::SYSTEMTIME> now);

/// The date of a FILETIME in one number, 100 ns since 1601; what is finer than a millisecond is dropped.
coredll::SYSTEMTIME SystemTimeOf(std::int64_t file_time);

// --- Libraries ---

using EntryPoints = std::map<std::u16string, coredll::FARPROC>;

/// Installs a library made of functions of this process under a bare name or a path, in front of any library file.
/// LoadLibraryW of that name succeeds from now on; installing again replaces it.
void InstallLibrary(std::u16string_view name, EntryPoints entry_points);
/// LoadLibraryW of this name answers `handle` (say, all ones) and loads nothing.
void InstallLibraryHandle(std::u16string_view name, coredll::HMODULE handle);
/// A directory of the host that is laid over the handset's file system when libraries are looked for: a bare name is
/// searched for in "\Windows" of the handset, then of this directory; a path likewise. An empty path takes it away.
/// Kept by Start.
void SetRom(const std::filesystem::path& rom);
/// What the agent imports from MailStore.dll (platform/mail_store.h) is looked for at each call, in the library of this
/// path, installed or a file, under the members' plain names; "CMailDBSync" is the constructor. It counts as no loaded
/// library. A handset without it would not load the agent, so there the call ends the process.
inline constexpr char16_t kMailStore[] = u"\\SystemData\\dll\\MailStore.dll";

// --- Windows, semaphores, memory division, printed text ---

struct PostedMessage {
  coredll::HWND window;
  std::uint32_t message;
  std::uint32_t wparam;
  std::int32_t lparam;
  bool operator==(const PostedMessage&) const = default;
};
const std::vector<PostedMessage>& PostedMessages();

/// Opens a top-level window of this title, of a class that no one knows the name of, and gives its handle.
coredll::HWND OpenWindow(std::u16string_view title);

/// Another program holds a semaphore of this name, or lets go of it.
void HoldSemaphore(std::u16string_view name);
void DropSemaphore(std::u16string_view name);

/// What SetSystemMemoryDivision answers, and the values it was called with.
void AnswerMemoryDivision(std::uint32_t answer);
const std::vector<std::uint32_t>& MemoryDivisions();

/// All that was printed since Start, in the handset's code page.
const std::string& PrintedText();

// --- Storage ---

/// Bytes that files can still grow by; writes past it come up short. std::nullopt: what the host's disk has. Of the
/// free bytes a part is the system's own, so that a caller is offered less than there are.
void SetFreeSpace(std::optional<std::uint64_t> bytes);

// --- Watching and breaking the seam ---

/// One call of a platform function, seen before it is carried out.
struct Call {
  std::string_view function;  ///< As in coredll.h: "WriteFile".
  std::u16string_view path;   ///< The path or name it concerns; of a file handle, the path it was opened by.
  std::uint32_t size;         ///< Bytes to read, write or allocate; else 0.
  /// What else it asks. CreateFileW: access, share mode, disposition; CreateSemaphoreW: initial and greatest count.
  std::array<std::uint32_t, 3> options{};
};
/// Called at each platform call; an empty function stops it. Platform calls that the observer itself makes are neither
/// observed nor failed.
void Observe(std::function<void(const Call&)> observer);

enum class Fault {
  kFail,      ///< The call fails, having done nothing.
  kCutShort,  ///< WriteFile and ReadFile do half and say so; any other call fails as with kFail.
};
/// The n-th call from now on of a function that can fail will fail (1 is the next one; 0 cancels), once.
void FailCall(unsigned n, Fault fault = Fault::kFail);
/// As FailCall, counting only calls of one function; throws std::invalid_argument for one that cannot fail.
void FailCallOf(std::string_view function, unsigned n, Fault fault = Fault::kFail);
/// Whether the fault last asked for has happened, and in which function. Cancelling keeps the answer.
bool FaultHappened();
std::string_view FaultedFunction();

/// What is open now: what a call leaves behind. A library counts once for each time it was loaded. Find handles are
/// counted apart, because the agent leaves some open.
struct Census {
  unsigned files = 0;
  unsigned semaphores = 0;
  unsigned libraries = 0;
  unsigned blocks = 0;
  unsigned finds = 0;
  bool operator==(const Census&) const = default;
};
Census TakeCensus();
/// Calls on handles that were not open, since Start: always a mistake of the caller's. To free no library is none.
unsigned BadHandleUses();

// --- Memory: fresh blocks hold no zeros, so that no one can count on them ---

/// Bytes in blocks of the handset's malloc: now, and the most since the last ResetPeakMemory.
std::uint64_t AllocatedBytes();
std::uint64_t PeakAllocatedBytes();
void ResetPeakMemory();
/// The size that a block of the handset's malloc was asked for with.
std::size_t BlockSize(const void* block);

/// From now on each block lies against an inaccessible page, with guard bytes where it cannot, so that code that is not
/// built with AddressSanitizer cannot read or write past it unnoticed. Kept by Start. The host allows some 30,000 such
/// blocks at a time.
void SetGuardedBlocks(bool guarded);

}  // namespace handset

#pragma GCC visibility pop

#endif  // QV_HOST_HANDSET_HANDSET_H
