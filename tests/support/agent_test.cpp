// Builds the handset of each test, and checks after each that the agent left nothing open.
#include "tests/support/agent_test.h"

#include <unistd.h>

#include <cstring>
#include <fstream>
#include <memory>
#include <sstream>

namespace qv_test {
namespace {

std::unique_ptr<loader::AgentLibrary>& OpenedAgent() {
  static std::unique_ptr<loader::AgentLibrary> agent;
  return agent;
}

/// None of a file that cannot be opened.
Bytes ContentOf(std::ifstream file) {
  std::ostringstream content;
  content << file.rdbuf();
  const std::string text = std::move(content).str();
  return {text.begin(), text.end()};
}

}  // namespace

loader::AgentLibrary& Agent() {
  return *OpenedAgent();
}

void OpenAgent(const std::filesystem::path& file) {
  OpenedAgent() = loader::AgentLibrary::Open(file);
}

std::uint32_t RecordingStream::Release() {
  calls.emplace_back("Release");
  return 0;
}

std::int32_t RecordingStream::Write(const void* buffer, std::uint32_t size, std::uint32_t* count) {
  calls.push_back("Write " + std::to_string(size));
  messages_at_write = handset::PostedMessages().size();
  const auto* const bytes = static_cast<const std::uint8_t*>(buffer);
  written.insert(written.end(), bytes, bytes + size);
  *count = fails ? 0 : size;
  return fails ? -1 : 0;
}

std::int32_t RecordingStream::Refuse(const char* method) {
  calls.emplace_back(method);
  return -1;
}

Bytes Request(std::int32_t module_id, std::uint32_t mode, std::u16string_view anchor, std::u16string_view directory) {
  Bytes request(48 + 2 * (directory.size() + 1));
  Put32(request, 0, static_cast<std::uint32_t>(module_id));
  Put32(request, 4, mode);
  PutText(request, 8, anchor);
  PutText(request, 48, directory);
  return request;
}

void Put8(Bytes& bytes, std::size_t offset, std::uint8_t value) {
  bytes.at(offset) = value;
}

void Put16(Bytes& bytes, std::size_t offset, std::uint16_t value) {
  bytes.at(offset) = static_cast<std::uint8_t>(value);
  bytes.at(offset + 1) = static_cast<std::uint8_t>(value >> 8);
}

void Put32(Bytes& bytes, std::size_t offset, std::uint32_t value) {
  Put16(bytes, offset, static_cast<std::uint16_t>(value));
  Put16(bytes, offset + 2, static_cast<std::uint16_t>(value >> 16));
}

void PutBytes(Bytes& bytes, std::size_t offset, const Bytes& more) {
  ASSERT_LE(offset + more.size(), bytes.size());
  std::copy(more.begin(), more.end(), bytes.begin() + static_cast<std::ptrdiff_t>(offset));
}

void PutText(Bytes& bytes, std::size_t offset, std::u16string_view text) {
  for (const char16_t character : text) {
    Put16(bytes, offset, character);
    offset += 2;
  }
}

void PutTextWithEnd(Bytes& bytes, std::size_t offset, std::u16string_view text) {
  PutText(bytes, offset, text);
  Put16(bytes, offset + 2 * text.size(), 0);
}

void PutUsedText(Bytes& bytes, std::size_t offset, std::u16string_view text) {
  PutTextWithEnd(bytes, offset, text);
  PutText(bytes, offset + 2 * text.size() + 2, u"old");
}

std::uint32_t Get32(const Bytes& bytes, std::size_t offset) {
  return bytes.at(offset) | std::uint32_t{bytes.at(offset + 1)} << 8 | std::uint32_t{bytes.at(offset + 2)} << 16 |
         std::uint32_t{bytes.at(offset + 3)} << 24;
}

Bytes Words(std::initializer_list<std::uint32_t> words) {
  Bytes bytes;
  for (const std::uint32_t word : words) {
    bytes.resize(bytes.size() + 4);
    Put32(bytes, bytes.size() - 4, word);
  }
  return bytes;
}

std::vector<std::uint32_t> ToWords(const Bytes& bytes) {
  std::vector<std::uint32_t> words;
  for (std::size_t i = 0; i < bytes.size(); i += 4) words.push_back(Get32(bytes, i));
  return words;
}

void Append(Bytes& bytes, const Bytes& more) {
  bytes.insert(bytes.end(), more.begin(), more.end());
}

Bytes Items(std::size_t count, std::size_t size, std::uint8_t seed) {
  Bytes bytes(count * size);
  for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<std::uint8_t>(seed + i * 7 + i / size);
  return bytes;
}

Bytes LowPositions(std::size_t size) {
  Bytes bytes(size);
  for (std::size_t i = 0; i < size; ++i) bytes[i] = static_cast<std::uint8_t>(i);
  return bytes;
}

Bytes HighPositions(std::size_t size) {
  Bytes bytes(size);
  for (std::size_t i = 0; i < size; ++i) bytes[i] = static_cast<std::uint8_t>(i >> 8);
  return bytes;
}

Bytes TableOf(Bytes (*record)(std::uint32_t id), std::initializer_list<std::uint32_t> ids) {
  Bytes table;
  for (const std::uint32_t id : ids) Append(table, record(id));
  return table;
}

Bytes WithByteTurned(Bytes converted, std::span<const CopiedBytes> copied, std::size_t at) {
  for (const CopiedBytes& field : copied) {
    if (at >= field.from && at < field.from + field.size) converted.at(field.to + at - field.from) ^= 0x40;
  }
  return converted;
}

std::vector<Bytes> Split(const Bytes& table, std::size_t record_size) {
  EXPECT_EQ(table.size() % record_size, 0u);
  std::vector<Bytes> records;
  for (std::size_t i = 0; i + record_size <= table.size(); i += record_size) {
    records.emplace_back(table.data() + i, table.data() + i + record_size);
  }
  return records;
}

AgentTest::AgentTest() {
  std::string name = (std::filesystem::temp_directory_path() / "handset-XXXXXX").string();
  if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("cannot make a directory for the handset");
  root_ = name;
  handset::Start(root_);
  handset::SetGuardedBlocks(Agent().IsHandsetBuild());
  handset::SetLocalTime(kNow);
  for (const auto* directory : {u"\\dbdata", u"\\dbdata\\sysconfig", u"\\sync"}) MakeDirectory(directory);
}

AgentTest::~AgentTest() {
  const handset::Census left = handset::TakeCensus();
  EXPECT_EQ(left.files, 0u) << "files left open";
  EXPECT_EQ(left.semaphores, 0u) << "semaphores left open";
  EXPECT_EQ(left.libraries, 0u) << "libraries left loaded";
  EXPECT_EQ(left.blocks, 0u) << "blocks left allocated";
  EXPECT_EQ(handset::BadHandleUses(), 0u) << "calls on handles that are not open";
  std::error_code ignored;
  std::filesystem::remove_all(root_, ignored);
}

std::uint32_t AgentTest::Call(const std::string& name, Bytes input, RecordingStream* stream) {
  return Agent().Export<RapiFunction>(name)(0xDEADBEEF, input.empty() ? nullptr : input.data(), nullptr, nullptr,
                                            stream);
}

Answer AgentTest::CallWithRequest(const std::string& name, const Bytes& request) {
  RecordingStream stream;
  Answer answer;
  answer.returned = Call(name, request, &stream);
  answer.stream_calls = stream.calls;
  if (stream.written.size() != 48) {
    ADD_FAILURE() << "the answer has " << stream.written.size() << " bytes instead of 48";
    return answer;
  }
  answer.code = Get32(stream.written, 0);
  answer.mode = Get32(stream.written, 4);
  for (std::size_t i = 8; i < 48 && (stream.written[i] | stream.written[i + 1]) != 0; i += 2) {
    answer.anchor.push_back(static_cast<char16_t>(stream.written[i] | stream.written[i + 1] << 8));
  }
  return answer;
}

Answer AgentTest::Export(std::int32_t module_id, std::uint32_t mode, std::u16string_view anchor,
                         std::u16string_view directory) {
  return CallWithRequest("fnQV_ExportTabs", Request(module_id, mode, anchor, directory));
}

Answer AgentTest::Recover(std::int32_t module_id, std::uint32_t mode, std::u16string_view anchor,
                          std::u16string_view directory) {
  return CallWithRequest("fnQV_RecovTabs", Request(module_id, mode, anchor, directory));
}

std::uint32_t AgentTest::LocalExport(int module_id, const char16_t* directory) {
  return Agent().Export<std::uint32_t(int, const char16_t*)>("qv_ExportTabs")(module_id, directory);
}

std::uint32_t AgentTest::LocalRecover(int module_id, const char16_t* directory) {
  return Agent().Export<std::uint32_t(int, const char16_t*)>("qv_RecovTabs")(module_id, directory);
}

bool AgentTest::Exists(std::u16string_view path) {
  return std::filesystem::exists(handset::HostPath(path));
}

Bytes AgentTest::ReadFile(std::u16string_view path) {
  std::ifstream file(handset::HostPath(path), std::ios::binary);
  EXPECT_TRUE(file.is_open()) << "no file " << handset::HostPath(path);
  return ContentOf(std::move(file));
}

std::string AgentTest::ReadText(std::u16string_view path) {
  const Bytes bytes = ReadFile(path);
  return {bytes.begin(), bytes.end()};
}

void AgentTest::WriteFile(std::u16string_view path, const Bytes& bytes) {
  std::ofstream file(handset::HostPath(path), std::ios::binary);
  file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

void AgentTest::WriteText(std::u16string_view path, std::string_view text) {
  WriteFile(path, Bytes(text.begin(), text.end()));
}

void AgentTest::MakeDirectory(std::u16string_view path) {
  std::filesystem::create_directories(handset::HostPath(path));
}

std::vector<std::pair<std::string, Bytes>> AgentTest::AllFiles() {
  std::vector<std::pair<std::string, Bytes>> files;
  const std::filesystem::path root = handset::HostPath(u"\\");
  for (const auto& entry : std::filesystem::recursive_directory_iterator(root)) {
    if (!entry.is_regular_file()) continue;
    files.emplace_back(entry.path().lexically_relative(root).string(),
                       ContentOf(std::ifstream(entry.path(), std::ios::binary)));
  }
  std::sort(files.begin(), files.end());
  return files;
}

}  // namespace qv_test
