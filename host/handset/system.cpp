// The clock, the windows and the messages sent to them, named semaphores, and the division of memory: what the agent
// asks the system itself.
#include "host/handset/system.h"

#include <chrono>
#include <cstring>
#include <ctime>
#include <memory>
#include <set>
#include <unordered_map>

#include "host/handset/faults.h"
#include "host/handset/objects.h"

namespace handset {
namespace {

// The division that the system refuses to make: what a failing SetSystemMemoryDivision answers.
constexpr std::uint32_t kDivisionRefused = 3;

struct System {
  std::optional<coredll::SYSTEMTIME> set_time;
  std::map<std::u16string, coredll::HWND, std::less<>> windows;  // By title.
  std::uintptr_t last_window = 0x10000;                          // Above HWND_BROADCAST.
  std::vector<PostedMessage> posted;
  std::set<std::u16string, std::less<>> held_semaphores;
  std::uint32_t division_answer = 0;
  std::vector<std::uint32_t> divisions;
};

System phone;

class Semaphore : public Object {
 public:
  Semaphore(std::u16string_view name, bool is_named) : Object(name), is_named_(is_named) {}
  bool Has(std::u16string_view name) const { return is_named_ && Name() == name; }

 private:
  bool is_named_;
};

bool SemaphoreExists(std::u16string_view name) {
  if (phone.held_semaphores.contains(name)) return true;
  return std::ranges::any_of(Objects(), [&](const auto& entry) {
    const auto* semaphore = dynamic_cast<const Semaphore*>(entry.second.get());
    return semaphore != nullptr && semaphore->Has(name);
  });
}

coredll::SYSTEMTIME HostLocalTime() {
  timespec now{};
  clock_gettime(CLOCK_REALTIME, &now);
  tm local{};
  localtime_r(&now.tv_sec, &local);
  const auto word = [](long value) { return static_cast<std::uint16_t>(value); };
  return {word(local.tm_year + 1900), word(local.tm_mon + 1), word(local.tm_wday), word(local.tm_mday),
          word(local.tm_hour),        word(local.tm_min),     word(local.tm_sec),  word(now.tv_nsec / 1'000'000)};
}

constexpr std::uint64_t kTicksPerMillisecond = 10'000;

// What a call that fails leaves of what it was to fill: callers must not count on it.
constexpr int kRubbish = 0xEE;

// 100 ns since 1601, for a time that there is and that a FILETIME can hold.
std::optional<std::uint64_t> FileTimeTicks(const coredll::SYSTEMTIME& time) {
  using namespace std::chrono;
  constexpr int kFirstYear = 1601;
  constexpr int kLastYear = 30827;
  const year_month_day date(year(time.wYear), month(time.wMonth), day(time.wDay));
  if (!date.ok() || time.wYear < kFirstYear || time.wYear > kLastYear) return std::nullopt;
  if (time.wHour > 23 || time.wMinute > 59 || time.wSecond > 59 || time.wMilliseconds > 999) return std::nullopt;
  const auto since_1601 = sys_days(date) - sys_days(year(kFirstYear) / January / 1) + hours(time.wHour) +
                          minutes(time.wMinute) + seconds(time.wSecond) + milliseconds(time.wMilliseconds);
  return static_cast<std::uint64_t>(duration_cast<milliseconds>(since_1601).count()) * kTicksPerMillisecond;
}

// A date that there is not keeps the day of the week it was given with.
coredll::SYSTEMTIME WithDayOfWeek(coredll::SYSTEMTIME time) {
  using namespace std::chrono;
  const year_month_day date(year(time.wYear), month(time.wMonth), day(time.wDay));
  if (date.ok()) time.wDayOfWeek = static_cast<std::uint16_t>(weekday(sys_days(date)).c_encoding());
  return time;
}

}  // namespace

void ResetSystem() {
  phone = {};
}

void SetLocalTime(std::optional<coredll::SYSTEMTIME> now) {
  phone.set_time = now;
}

coredll::SYSTEMTIME SystemTimeOf(std::int64_t file_time) {
  using namespace std::chrono;
  using Ticks = duration<std::int64_t, std::ratio<1, 1000 * static_cast<std::int64_t>(kTicksPerMillisecond)>>;
  const auto instant = sys_days(year(1601) / January / 1) + floor<milliseconds>(Ticks(file_time));
  const auto day = floor<days>(instant);
  const year_month_day date(day);
  const hh_mm_ss clock(instant - day);
  const auto word = [](auto value) { return static_cast<std::uint16_t>(value); };
  return {word(static_cast<int>(date.year())), word(static_cast<unsigned>(date.month())),
          word(weekday(day).c_encoding()),     word(static_cast<unsigned>(date.day())),
          word(clock.hours().count()),         word(clock.minutes().count()),
          word(clock.seconds().count()),       word(clock.subseconds().count())};
}

const std::vector<PostedMessage>& PostedMessages() {
  return phone.posted;
}

coredll::HWND OpenWindow(std::u16string_view title) {
  const auto window = reinterpret_cast<coredll::HWND>(phone.last_window += 0x10);
  phone.windows.insert_or_assign(std::u16string(title), window);
  return window;
}

void HoldSemaphore(std::u16string_view name) {
  phone.held_semaphores.emplace(name);
}

void DropSemaphore(std::u16string_view name) {
  phone.held_semaphores.erase(std::u16string(name));
}

void AnswerMemoryDivision(std::uint32_t answer) {
  phone.division_answer = answer;
}

const std::vector<std::uint32_t>& MemoryDivisions() {
  return phone.divisions;
}

unsigned CountOpenSemaphores() {
  return CountObjects<Semaphore>();
}

}  // namespace handset

namespace coredll {

using namespace handset;

void GetLocalTime(SYSTEMTIME* now) {
  Watch({"GetLocalTime", {}, 0});
  *now = phone.set_time ? WithDayOfWeek(*phone.set_time) : HostLocalTime();
}

BOOL SystemTimeToFileTime(const SYSTEMTIME* time, FILETIME* file_time) {
  return PlatformCall({"SystemTimeToFileTime", {}, 0}, kFalse, [&] {
    const std::optional<std::uint64_t> ticks = FileTimeTicks(*time);
    if (!ticks) {
      std::memset(file_time, kRubbish, sizeof(*file_time));
      return Fail(Error::kInvalidParameter, kFalse);
    }
    *file_time = {static_cast<DWORD>(*ticks), static_cast<DWORD>(*ticks >> 32)};
    return kTrue;
  });
}

BOOL FileTimeToSystemTime(const FILETIME* file_time, SYSTEMTIME* time) {
  return PlatformCall({"FileTimeToSystemTime", {}, 0}, kFalse, [&] {
    const std::uint64_t ticks = std::uint64_t{file_time->dwHighDateTime} << 32 | file_time->dwLowDateTime;
    // The platform takes the highest bit for a sign.
    if (ticks >> 63 != 0) {
      std::memset(time, kRubbish, sizeof(*time));
      return Fail(Error::kInvalidParameter, kFalse);
    }
    *time = SystemTimeOf(static_cast<std::int64_t>(ticks));
    return kTrue;
  });
}

DWORD GetTickCount() {
  Watch({"GetTickCount", {}, 0});
  const auto since_boot = std::chrono::steady_clock::now().time_since_epoch();
  return static_cast<DWORD>(std::chrono::duration_cast<std::chrono::milliseconds>(since_boot).count());
}

HWND FindWindowW(const char16_t* window_class, const char16_t* title) {
  return PlatformCall({"FindWindowW", View(title), 0}, nullptr, [&]() -> HWND {
    const auto found = phone.windows.find(View(title));
    const bool is_asked_for = window_class == nullptr && title != nullptr && found != phone.windows.end();
    return is_asked_for ? found->second : nullptr;
  });
}

BOOL PostMessageW(HWND window, DWORD message, DWORD wparam, std::int32_t lparam) {
  return PlatformCall({"PostMessageW", {}, 0}, kFalse, [&] {
    phone.posted.push_back({window, message, wparam, lparam});
    return kTrue;
  });
}

HANDLE CreateSemaphoreW(void*, std::int32_t initial, std::int32_t maximum, const char16_t* name) {
  const std::array counts = {static_cast<std::uint32_t>(initial), static_cast<std::uint32_t>(maximum), 0u};
  return PlatformCall({"CreateSemaphoreW", View(name), 0, counts}, nullptr, [&]() -> HANDLE {
    if (maximum <= 0 || initial < 0 || initial > maximum) return Fail(Error::kInvalidParameter, nullptr);
    const bool existed = name != nullptr && SemaphoreExists(View(name));
    const HANDLE handle = AddObject(std::make_unique<Semaphore>(View(name), name != nullptr));
    SetLastError(existed ? Error::kAlreadyExists : Error::kNone);
    return handle;
  });
}

DWORD SetSystemMemoryDivision(DWORD storage_pages) {
  return PlatformCall({"SetSystemMemoryDivision", {}, 0}, kDivisionRefused, [&] {
    phone.divisions.push_back(storage_pages);
    return phone.division_answer;
  });
}

}  // namespace coredll
