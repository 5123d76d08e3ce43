// Buffers that callers hand in may begin at any address, and the handset's ARM processor cannot load a word from an odd
// one. The emulator can, so what these tests would miss there the host build's alignment check finds.
#include "tests/support/dial_records.h"
#include "tests/support/scripted_dial_store.h"

namespace qv_test {
namespace {

/// A copy of these bytes that begins as many bytes behind an address that suits any type.
class ShiftedBytes {
 public:
  ShiftedBytes(const Bytes& bytes, std::size_t shift) : bytes_(shift), shift_(shift) { Append(bytes_, bytes); }

  std::uint8_t* data() { return bytes_.data() + shift_; }
  /// To be handed on, not to be read through.
  const char16_t* text() { return reinterpret_cast<const char16_t*>(data()); }

 private:
  Bytes bytes_;
  std::size_t shift_;
};

Bytes WideText(std::u16string_view text) {
  Bytes bytes(2 * (text.size() + 1));
  PutText(bytes, 0, text);
  return bytes;
}

class OddAddressTest : public AgentTest, public testing::WithParamInterface<std::size_t> {
 protected:
  /// Calls an export with a shifted input; returns the words of what it wrote.
  std::vector<std::uint32_t> Ask(const std::string& name, const Bytes& input, std::uint32_t returns = 0) {
    ShiftedBytes shifted(input, GetParam());
    RecordingStream stream;
    EXPECT_EQ(Agent().Export<RapiFunction>(name)(0, shifted.data(), nullptr, nullptr, &stream), returns);
    return ToWords(stream.written);
  }

  std::uint32_t CallLocally(const std::string& name, const char16_t* directory) {
    ShiftedBytes shifted(WideText(directory), GetParam());
    return Agent().Export<std::uint32_t(int, const char16_t*)>(name)(10, shifted.text());
  }

  ScriptedDialStore store_;
};

TEST_P(OddAddressTest, ARequestIsReadForAnExport) {
  store_.Add(kDialId, std::nullopt, StoreDial());
  const std::vector<std::uint32_t> answer = Ask("fnQV_ExportTabs", Request(10, 3, u"5", kSync));
  EXPECT_EQ(answer.at(0), 0u);
  EXPECT_EQ(answer.at(1), 1u) << "another anchor than the request's makes it a full export";
  EXPECT_EQ(ReadFile(kDialTable), ExchangeDial());
}

TEST_P(OddAddressTest, TheRequestsAnchorIsCompared) {
  WriteText(kAnchorIni, "[ANCHORDATE]\r\nQUCIKDAIL = 5");
  WriteFile(kDialLog, {});
  EXPECT_EQ(Ask("fnQV_ExportTabs", Request(10, 3, u"5", kSync)).at(1), 3u);
}

TEST_P(OddAddressTest, ARequestIsReadForARecover) {
  WriteFile(kDialTable, NoisyDial());
  EXPECT_EQ(Ask("fnQV_RecovTabs", Request(10, 4, u"", kSync)).at(0), 0u);
  EXPECT_EQ(store_.At(1000).bytes, RecoveredDial());
}

TEST_P(OddAddressTest, AnUnknownModulesAnchorComesBack) {
  EXPECT_EQ(Ask("fnQV_ExportTabs", Request(17, 2, u"AB", kSync)),
            (std::vector<std::uint32_t>{0, 2, 0x420041, 0, 0, 0, 0, 0, 0, 0, 0, 0}));
}

TEST_P(OddAddressTest, ProgramsOnTheHandsetNameTheirDirectory) {
  store_.Add(kDialId, std::nullopt, StoreDial());
  EXPECT_EQ(CallLocally("qv_ExportTabs", kSync), 0u);
  EXPECT_EQ(ReadFile(kDialTable), ExchangeDial());
  EXPECT_EQ(CallLocally("qv_RecovTabs", kSync), 0u);
  EXPECT_EQ(store_.At(1000).bytes, RecoveredDial());
}

TEST_P(OddAddressTest, QueriesReadTheirInput) {
  EXPECT_EQ(Ask("fnQV_CheckMutex", Words({32})).at(0), 0u);
  handset::HoldSemaphore(u"abc.exe");
  EXPECT_EQ(Ask("fnQV_CheckMutex", Words({1}), 1).at(0), 1u);
  handset::SetFreeSpace(0x12345678);
  EXPECT_EQ(Ask("fnQV_GetPDASpace", WideText(kSync)), std::vector<std::uint32_t>{0x12345678});
  Ask("fnQV_SetPDAStoreSpace", Words({0x1234}));
  EXPECT_THAT(handset::MemoryDivisions(), testing::ElementsAre(0x123400));
}

INSTANTIATE_TEST_SUITE_P(Shifts, OddAddressTest, testing::Values(1u, 2u, 3u));

}  // namespace
}  // namespace qv_test
