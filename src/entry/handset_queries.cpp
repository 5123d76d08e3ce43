// The small questions of the desktop: what handset is this, what runs on it, how much room it has, and two requests
// that move no data.
#include <algorithm>
#include <cstring>
#include <string_view>

#include "entry/stream.h"
#include "layout/bytes.h"
#include "platform/coredll.h"
#include "platform/library.h"
#include "qv_rapi.h"

namespace qv {
namespace {

/// Directories that together only the expected model has.
constexpr std::u16string_view kModelDirectories[] = {u"App", u"Dll", u"SystemRing", u"GameRing"};

/// The find handles of this file stay open: the platform functions that the agent may call have none to close them.
bool IsExpectedModel() {
  coredll::WIN32_FIND_DATAW found;
  const coredll::HANDLE find = coredll::FindFirstFileW(u"\\systemdata\\*", &found);
  if (find == coredll::INVALID_HANDLE_VALUE) return false;
  std::size_t count = 0;
  do {
    const bool is_directory = (found.dwFileAttributes & coredll::FILE_ATTRIBUTE_DIRECTORY) != 0;
    count += is_directory && std::find(std::begin(kModelDirectories), std::end(kModelDirectories),
                                       std::u16string_view(found.cFileName)) != std::end(kModelDirectories);
  } while (coredll::FindNextFileW(find, &found) != 0);
  return count == std::size(kModelDirectories);
}

/// A program that runs holds the semaphore of its name. Asking must not hold it.
bool IsRunning(const char16_t* semaphore_name) {
  const coredll::HANDLE semaphore = coredll::CreateSemaphoreW(nullptr, 1, 1, semaphore_name);
  const bool existed = coredll::GetLastError() == coredll::ERROR_ALREADY_EXISTS;
  if (semaphore != nullptr) coredll::CloseHandle(semaphore);
  return existed;
}

constexpr char16_t kSynchronisation[] = u"App_SyncK9";

const char16_t* SemaphoreOf(std::uint32_t selector) {
  switch (selector) {
    case 1: return u"abc.exe";
    case 6: return u"APP_EMAIL_MAINFRAME_WND";
    case 32: return kSynchronisation;
    default: return u"";
  }
}

std::uint32_t FreeBytes(const void* path) {
  constexpr std::uint32_t kNoSuchPath = 0xFFFFFFFF;
  char16_t name[kDirectoryCapacity];
  coredll::WIN32_FIND_DATAW found;
  if (!layout::CopyWideText(path, name, kDirectoryCapacity)) return kNoSuchPath;
  if (coredll::FindFirstFileW(name, &found) == coredll::INVALID_HANDLE_VALUE) return kNoSuchPath;
  coredll::ULARGE_INTEGER free_to_caller;
  coredll::ULARGE_INTEGER total;
  coredll::ULARGE_INTEGER total_free;
  const bool answered = coredll::GetDiskFreeSpaceExW(name, &free_to_caller, &total, &total_free) != 0;
  return answered ? total_free.LowPart : 0;
}

/// 0 without an input block.
std::uint32_t InputNumber(const std::uint8_t* input) {
  std::uint32_t number = 0;
  if (input != nullptr) std::memcpy(&number, input, sizeof(number));
  return number;
}

}  // namespace
}  // namespace qv

using namespace qv;

std::uint32_t fnQV_IsNimbraK9(std::uint32_t, std::uint8_t*, std::uint32_t*, std::uint8_t**, IRAPIStream* pIRAPIStream) {
  AnswerStream(pIRAPIStream).Write(std::uint32_t{IsExpectedModel()});
  return 0;
}

std::uint32_t fnQV_IsRunSDSync(std::uint32_t, std::uint8_t*, std::uint32_t*, std::uint8_t**,
                               IRAPIStream* pIRAPIStream) {
  AnswerStream(pIRAPIStream).Write(std::uint32_t{IsRunning(kSynchronisation)});
  return 0;
}

std::uint32_t fnQV_CheckMutex(std::uint32_t, std::uint8_t* pInput, std::uint32_t*, std::uint8_t**,
                              IRAPIStream* pIRAPIStream) {
  const RunningRecord record{.running = IsRunning(SemaphoreOf(InputNumber(pInput))), .reserved = {}};
  AnswerStream(pIRAPIStream).Write(record);
  return record.running;
}

std::uint32_t fnQV_GetPDASpace(std::uint32_t, std::uint8_t* pInput, std::uint32_t*, std::uint8_t**,
                               IRAPIStream* pIRAPIStream) {
  AnswerStream(pIRAPIStream).Write(FreeBytes(pInput));
  return 0;
}

std::uint32_t fnQV_SetPDAStoreSpace(std::uint32_t, std::uint8_t* pInput, std::uint32_t*, std::uint8_t**,
                                    IRAPIStream* pIRAPIStream) {
  // A missing size must not be taken for the size 0, which would leave the storage nothing.
  const bool changed = pInput != nullptr && coredll::SetSystemMemoryDivision(InputNumber(pInput) << 8) == 0;
  AnswerStream(pIRAPIStream).Write(std::uint32_t{changed});
  return 0;
}

std::uint32_t fnQV_GetMailID(std::uint32_t, std::uint8_t*, std::uint32_t*, std::uint8_t**, IRAPIStream* pIRAPIStream) {
  using GetSystemMailID = std::uint32_t(std::uint32_t * id);
  const Library mail_store(u"\\SystemData\\dll\\MailStore.dll");
  auto* const get_id = mail_store.Resolve<GetSystemMailID>(u"GetSystemMailID");
  std::uint32_t id = 0;
  const std::uint32_t found = get_id != nullptr && get_id(&id) == 0;
  {
    AnswerStream answer(pIRAPIStream);
    answer.Write(found);
    if (found != 0) answer.Write(id);
  }
  // The platform has always been told to free the library, also where there was none.
  if (mail_store.IsMissing()) coredll::FreeLibrary(nullptr);
  return 0;
}

std::uint32_t fnQV_NotifyBLTChanged() {
  constexpr coredll::DWORD kCallFilterChanged = 0x981;
  constexpr coredll::DWORD kWhat = 32;
  if (const coredll::HWND server = coredll::FindWindowW(nullptr, u"PhoneServerWindow")) {
    coredll::PostMessageW(server, kCallFilterChanged, kWhat, 0);
  }
  return 0;
}
