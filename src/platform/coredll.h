// The platform functions that the agent may call, and what each promises: the only way out of the agent's own code.
// The handset build imports them from COREDLL.dll; the simulated handset defines them under the names COREDLL() gives.
#ifndef QV_PLATFORM_COREDLL_H
#define QV_PLATFORM_COREDLL_H

#include <cstddef>
#include <cstdint>

static_assert(sizeof(void*) == 4, "the agent, its records and its stores are ILP32");

// Maps a function to its linker name. Elsewhere than on the handset the names carry a prefix, so that the C library's
// functions of the same names stay what they are.
#if !defined(QV_WINCE)
#define COREDLL(name) __asm__("coredll_" name)
#elif defined(__i386__)
#define COREDLL(name) __asm__("_" name)
#else
#define COREDLL(name) __asm__(name)
#endif

#pragma GCC visibility push(default)

namespace coredll {

using HANDLE = void*;
using HMODULE = void*;
using HWND = void*;
using FARPROC = void (*)();
using BOOL = std::int32_t;
using DWORD = std::uint32_t;

inline const HANDLE INVALID_HANDLE_VALUE = reinterpret_cast<HANDLE>(static_cast<std::uintptr_t>(-1));
inline const HWND HWND_BROADCAST = reinterpret_cast<HWND>(static_cast<std::uintptr_t>(0xFFFF));

inline constexpr DWORD GENERIC_READ = 0x80000000;
inline constexpr DWORD GENERIC_WRITE = 0x40000000;
inline constexpr DWORD INVALID_FILE_SIZE = 0xFFFFFFFF;
inline constexpr DWORD FILE_SHARE_READ = 1;
inline constexpr DWORD CREATE_ALWAYS = 2;
inline constexpr DWORD OPEN_EXISTING = 3;
inline constexpr DWORD FILE_ATTRIBUTE_DIRECTORY = 0x10;
inline constexpr DWORD FILE_ATTRIBUTE_NORMAL = 0x80;
inline constexpr DWORD ERROR_FILE_NOT_FOUND = 2;
inline constexpr DWORD ERROR_PATH_NOT_FOUND = 3;
inline constexpr DWORD ERROR_ALREADY_EXISTS = 183;

struct FILETIME {
  DWORD dwLowDateTime;
  DWORD dwHighDateTime;
};

struct SYSTEMTIME {
  std::uint16_t wYear, wMonth, wDayOfWeek, wDay, wHour, wMinute, wSecond, wMilliseconds;
};

/// A 64-bit number in two words, because 64-bit members align differently on the handset's targets.
struct ULARGE_INTEGER {
  DWORD LowPart;
  DWORD HighPart;
};

struct WIN32_FIND_DATAW {
  DWORD dwFileAttributes;
  FILETIME ftCreationTime, ftLastAccessTime, ftLastWriteTime;
  DWORD nFileSizeHigh, nFileSizeLow;
  DWORD dwOID;
  char16_t cFileName[260];
};
static_assert(offsetof(WIN32_FIND_DATAW, cFileName) == 40);

// --- Files. Paths are absolute, "\" between names, without case. ---

/// INVALID_HANDLE_VALUE on failure. A file open without FILE_SHARE_READ cannot be opened again until it is closed.
HANDLE CreateFileW(const char16_t* name, DWORD access, DWORD share, void* security, DWORD disposition, DWORD attributes,
                   HANDLE like) COREDLL("CreateFileW");
/// 0 on failure. Success with *read == 0 is the end of the file.
BOOL ReadFile(HANDLE file, void* buffer, DWORD size, DWORD* read, void* overlapped) COREDLL("ReadFile");
/// 0 on failure. A full disk may show as success with *written below size.
BOOL WriteFile(HANDLE file, const void* buffer, DWORD size, DWORD* written, void* overlapped) COREDLL("WriteFile");
/// The low word of the size, 0xFFFFFFFF on failure; the high one goes to `high`, which may be null.
DWORD GetFileSize(HANDLE file, DWORD* high) COREDLL("GetFileSize");
BOOL CloseHandle(HANDLE object) COREDLL("CloseHandle");
BOOL DeleteFileW(const char16_t* name) COREDLL("DeleteFileW");
/// 0 on failure, which may have cost the file that was there.
BOOL CopyFileW(const char16_t* from, const char16_t* to, BOOL fail_if_exists) COREDLL("CopyFileW");
/// INVALID_HANDLE_VALUE when nothing matches. The last name of the pattern may hold "*" and "?".
HANDLE FindFirstFileW(const char16_t* pattern, WIN32_FIND_DATAW* found) COREDLL("FindFirstFileW");
/// 0 when there is no further match.
BOOL FindNextFileW(HANDLE find, WIN32_FIND_DATAW* found) COREDLL("FindNextFileW");
/// 0 on failure. Each output may be null.
BOOL GetDiskFreeSpaceExW(const char16_t* directory, ULARGE_INTEGER* free_to_caller, ULARGE_INTEGER* total,
                         ULARGE_INTEGER* total_free) COREDLL("GetDiskFreeSpaceExW");

// --- Time ---

void GetLocalTime(SYSTEMTIME* now) COREDLL("GetLocalTime");
/// 0 for a time that does not exist; `file_time` then says nothing. The day of the week is not looked at.
BOOL SystemTimeToFileTime(const SYSTEMTIME* time, FILETIME* file_time) COREDLL("SystemTimeToFileTime");
/// 0 for a time that no date can tell; `time` then says nothing.
BOOL FileTimeToSystemTime(const FILETIME* file_time, SYSTEMTIME* time) COREDLL("FileTimeToSystemTime");
/// Milliseconds since some moment; wraps around.
DWORD GetTickCount() COREDLL("GetTickCount");

// --- Libraries ---

/// 0 on failure. A bare file name is searched for where the system keeps its libraries.
HMODULE LoadLibraryW(const char16_t* name) COREDLL("LoadLibraryW");
/// 0 when the library has no such entry point.
FARPROC GetProcAddressW(HMODULE library, const char16_t* name) COREDLL("GetProcAddressW");
BOOL FreeLibrary(HMODULE library) COREDLL("FreeLibrary");

// --- Windows, semaphores, the system ---

/// 0 when there is no such window.
HWND FindWindowW(const char16_t* window_class, const char16_t* title) COREDLL("FindWindowW");
BOOL PostMessageW(HWND window, DWORD message, DWORD wparam, std::int32_t lparam) COREDLL("PostMessageW");
/// 0 on failure. When the name was there already, its handle, and GetLastError gives ERROR_ALREADY_EXISTS.
HANDLE CreateSemaphoreW(void* security, std::int32_t initial, std::int32_t maximum, const char16_t* name)
    COREDLL("CreateSemaphoreW");
/// Why the last call that failed did.
DWORD GetLastError() COREDLL("GetLastError");
/// 0 when the division changed at once; otherwise it waits for a restart, or was refused.
DWORD SetSystemMemoryDivision(DWORD storage_pages) COREDLL("SetSystemMemoryDivision");

// --- Memory. What crosses a library boundary comes from this malloc and goes back with this free. ---

void* malloc(std::size_t size) COREDLL("malloc");
void* realloc(void* block, std::size_t size) COREDLL("realloc");
void free(void* block) COREDLL("free");

// --- Text. The 8-bit code page is the system's. ---

/// Converts up to the NUL, at most `size` bytes; the NUL is written when there is room. Returns the number of bytes
/// without it, or size_t(-1) for a character that the code page lacks.
std::size_t wcstombs(char* bytes, const char16_t* text, std::size_t size) COREDLL("wcstombs");
/// The reverse; `size` counts characters.
std::size_t mbstowcs(char16_t* text, const char* bytes, std::size_t size) COREDLL("mbstowcs");
/// Writes at most `size` characters, the NUL only when there is room for it. Returns the length, negative when cut.
int _snwprintf(char16_t* buffer, std::size_t size, const char16_t* format, ...) COREDLL("_snwprintf");
/// Text in the code page, to wherever the system shows what programs print.
int printf(const char* format, ...) COREDLL("printf");

}  // namespace coredll

#pragma GCC visibility pop

#endif  // QV_PLATFORM_COREDLL_H
