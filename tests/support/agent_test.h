// What a behaviour test stands on: a fresh handset in a directory, the agent under test, and the desktop's side of a
// call. The same tests run against the host build and against the handset library: see --library in agent_main.cpp.
#ifndef QV_TESTS_SUPPORT_AGENT_TEST_H
#define QV_TESTS_SUPPORT_AGENT_TEST_H

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "host/handset/handset.h"
#include "host/loader/agent_library.h"
#include "host/loader/refusing_stream.h"
#include "qv_rapi.h"

namespace qv_test {

using Bytes = std::vector<std::uint8_t>;

/// The agent under test, opened once.
loader::AgentLibrary& Agent();
void OpenAgent(const std::filesystem::path& file);

/// Records what the agent does with its stream.
class RecordingStream final : public loader::RefusingStream {
 public:
  std::uint32_t QV_STDCALL Release() override;
  std::int32_t QV_STDCALL Write(const void* buffer, std::uint32_t size, std::uint32_t* count) override;

  /// Each call in order: "Write 48", "Release", or the name of a method that the agent has no business calling.
  std::vector<std::string> calls;
  Bytes written;
  bool fails = false;
  /// Messages that were out when the answer was written.
  std::size_t messages_at_write = 0;

 private:
  std::int32_t Refuse(const char* method) override;
};

/// What a desktop call answered.
struct Answer {
  std::uint32_t returned = 0;
  std::uint32_t code = 0;
  std::uint32_t mode = 0;
  std::u16string anchor;
  std::vector<std::string> stream_calls;
};

/// A request block as the desktop sends it: head, then the directory cut short behind its NUL.
Bytes Request(std::int32_t module_id, std::uint32_t mode, std::u16string_view anchor, std::u16string_view directory);

/// Little-endian values at an offset of a record under construction.
void Put8(Bytes& bytes, std::size_t offset, std::uint8_t value);
void Put16(Bytes& bytes, std::size_t offset, std::uint16_t value);
void Put32(Bytes& bytes, std::size_t offset, std::uint32_t value);
void PutBytes(Bytes& bytes, std::size_t offset, const Bytes& more);
void PutText(Bytes& bytes, std::size_t offset, std::u16string_view text);
/// Text and its NUL; what follows keeps its bytes.
void PutTextWithEnd(Bytes& bytes, std::size_t offset, std::u16string_view text);
/// Text behind whose NUL something else still lies.
void PutUsedText(Bytes& bytes, std::size_t offset, std::u16string_view text);
std::uint32_t Get32(const Bytes& bytes, std::size_t offset);
/// 12-byte entries one after another: snapshots, change lists, id maps.
Bytes Words(std::initializer_list<std::uint32_t> words);
std::vector<std::uint32_t> ToWords(const Bytes& bytes);
void Append(Bytes& bytes, const Bytes& more);
/// `count` items of `size` bytes that are all different.
Bytes Items(std::size_t count, std::size_t size, std::uint8_t seed);
/// Each byte says where it stands: of two bytes of its position the lower one, or the higher one.
Bytes LowPositions(std::size_t size);
Bytes HighPositions(std::size_t size);
/// A table of records, one for each id.
Bytes TableOf(Bytes (*record)(std::uint32_t id), std::initializer_list<std::uint32_t> ids);

/// A run of bytes that one form takes from another.
struct CopiedBytes {
  std::size_t from, size, to;
};
/// What becomes of a converted record when a byte of its source is turned over.
Bytes WithByteTurned(Bytes converted, std::span<const CopiedBytes> copied, std::size_t at);
/// A table as its records; the test fails unless it is whole ones.
std::vector<Bytes> Split(const Bytes& table, std::size_t record_size);

constexpr char16_t kSync[] = u"\\sync";
constexpr char16_t kAnchorIni[] = u"\\dbdata\\sysconfig\\qvSyncAnchor.ini";

/// 11 December 2006 07:02:10, and the anchor that it makes.
constexpr coredll::SYSTEMTIME kNow = {2006, 12, 1, 11, 7, 2, 10, 0};
constexpr char16_t kNowAnchor[] = u"200612117210";

class AgentTest : public testing::Test {
 protected:
  AgentTest();
  ~AgentTest() override;

  Answer Export(std::int32_t module_id, std::uint32_t mode, std::u16string_view anchor = u"",
                std::u16string_view directory = kSync);
  Answer Recover(std::int32_t module_id, std::uint32_t mode, std::u16string_view anchor = u"",
                 std::u16string_view directory = kSync);
  std::uint32_t LocalExport(int module_id, const char16_t* directory = kSync);
  std::uint32_t LocalRecover(int module_id, const char16_t* directory = kSync);
  /// Calls an export of the stream prototype with an input block.
  std::uint32_t Call(const std::string& name, Bytes input, RecordingStream* stream);

  // The handset's files, by their paths on the handset.
  static bool Exists(std::u16string_view path);
  static Bytes ReadFile(std::u16string_view path);
  static std::string ReadText(std::u16string_view path);
  static void WriteFile(std::u16string_view path, const Bytes& bytes);
  static void WriteText(std::u16string_view path, std::string_view text);
  static void MakeDirectory(std::u16string_view path);

  /// Every file below the root with its bytes, to see that nothing changed.
  static std::vector<std::pair<std::string, Bytes>> AllFiles();

 private:
  Answer CallWithRequest(const std::string& name, const Bytes& request);
  std::filesystem::path root_;
};

}  // namespace qv_test

#endif  // QV_TESTS_SUPPORT_AGENT_TEST_H
