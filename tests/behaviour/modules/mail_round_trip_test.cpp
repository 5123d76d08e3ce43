// E-mail that travels to the desktop and back: of random nodes, all that the tables carry returns as it left. What they
// do not carry is named in one place, AfterARoundTrip.
#include <algorithm>
#include <random>

#include "tests/behaviour/modules/mail_test.h"

namespace qv_test {
namespace {

using Nodes = ScriptedMailStore::Nodes;

class RandomMail {
 public:
  explicit RandomMail(std::uint32_t seed) : engine_(seed) {}

  std::uint32_t Below(std::uint32_t bound) { return static_cast<std::uint32_t>(engine_()) % bound; }
  std::uint8_t Byte() { return static_cast<std::uint8_t>(Below(256)); }
  bool OneIn(std::uint32_t chances) { return Below(chances) == 0; }

  /// A node with anything in it but for its texts, which are texts.
  Bytes Node(MailKind kind) {
    Bytes node(kMailNodeSizes[kind]);
    for (std::uint8_t& byte : node) byte = Byte();
    for (const MailText& text : kMailForms[kind].texts) {
      const std::uint32_t room = static_cast<std::uint32_t>(text.node_size) / 2;
      const std::uint32_t length = OneIn(5) ? room : Below(room);
      for (std::uint32_t i = 0; i < length; ++i) {
        Put16(node, text.node + 2 * i, static_cast<std::uint16_t>(1 + Below(0xFFFF)));
      }
      if (length < room) Put16(node, text.node + 2 * length, 0);
    }
    const MailText& narrow = kMailForms[kind].narrow_text;
    if (narrow.node_size != 0) PutNarrow(node, narrow.node);
    return node;
  }

 private:
  void PutNarrow(Bytes& node, std::size_t at) {
    const std::size_t size = OneIn(3) ? 255 : Below(255);
    const bool is_ascii = OneIn(3);
    std::size_t i = 0;
    while (i < size) {
      if (is_ascii || OneIn(2) || i + 1 == size) {
        Put8(node, at + i++, static_cast<std::uint8_t>(0x20 + Below(0x5F)));
      } else {
        // Any character of the first plane of GB 2312.
        Put8(node, at + i++, static_cast<std::uint8_t>(0xB0 + Below(0x27)));
        Put8(node, at + i++, static_cast<std::uint8_t>(0xA1 + Below(0x5E)));
      }
    }
    Put8(node, at + i, 0);
  }

  std::mt19937 engine_;
};

/// A text up to its NUL, and as long as it may be there and back.
void CarryText(const MailText& text, const Bytes& node, Bytes& after) {
  const std::size_t most = std::min(text.node_size, text.record_size) - 2;
  for (std::size_t i = 0; i < most && (node[text.node + i] | node[text.node + i + 1]) != 0; i += 2) {
    std::copy_n(node.begin() + static_cast<std::ptrdiff_t>(text.node + i), 2,
                after.begin() + static_cast<std::ptrdiff_t>(text.node + i));
  }
}

/// An 8-bit text, which the record holds in so many characters less the NUL.
void CarryNarrowText(const MailText& text, const Bytes& node, Bytes& after) {
  std::size_t i = text.node;
  for (std::size_t characters = 0; characters < text.record_size / 2 - 1 && node[i] != 0; ++characters) {
    const std::size_t width = node[i] < 0x80 ? 1 : 2;
    for (std::size_t byte = 0; byte < width; ++byte, ++i) after[i] = node[i];
  }
}

/// The node that a recover makes of what an export made of this one.
Bytes AfterARoundTrip(MailKind kind, const Bytes& node) {
  const MailForm& form = kMailForms[kind];
  Bytes after(node.size());
  for (const CopiedBytes& field : form.carried) {
    std::copy_n(node.begin() + static_cast<std::ptrdiff_t>(field.from), field.size,
                after.begin() + static_cast<std::ptrdiff_t>(field.from));
  }
  if (kind == kUidl) Put32(after, kUidlNumber, 0);
  for (const MailText& text : form.texts) CarryText(text, node, after);
  if (form.narrow_text.node_size != 0) CarryNarrowText(form.narrow_text, node, after);
  return after;
}

class MailRoundTripTest : public MailTest, public testing::WithParamInterface<std::uint32_t> {
 protected:
  void AddNode(MailKind kind, std::initializer_list<std::pair<std::size_t, std::uint8_t>> ids) {
    Bytes node = random_.Node(kind);
    for (const auto& [at, id] : ids) Put8(node, at, id);
    store_.lists[kind].push_back(node);
  }

  void AddUidl(std::uint8_t account) { AddNode(kUidl, {{4, account}, {5, 0}}); }

  void AddFilter(std::uint8_t account, std::uint8_t folder) {
    const bool has_contacts = folder != 0 && random_.OneIn(2);
    AddNode(kFilter, {{4, ++last_filter_}, {460, account}, {672, folder}, {68, has_contacts ? 1 : 2}});
    for (std::uint32_t i = random_.Below(4); has_contacts && i > 0; --i) AddNode(kContact, {{4, last_filter_}});
  }

  void AddMessage(std::uint8_t account, std::uint8_t folder) {
    AddNode(kHeader, {{4, ++last_message_}, {5, 0}, {6, 0}, {7, 0}, {8, account}, {9, folder}});
    for (std::uint32_t i = random_.Below(4); i > 0; --i) {
      AddNode(kAddress, {{4, last_message_}, {5, 0}, {6, 0}, {7, 0}});
    }
  }

  void AddAccount(std::uint8_t id) {
    AddNode(kUser, {{4, id}});
    AddNode(kConfig, {{4, id}, {5, 0}});
    for (std::uint32_t i = random_.Below(4); i > 0; --i) AddUidl(id);
    for (std::uint32_t i = random_.Below(3); i > 0; --i) AddFilter(id, 0);
    for (std::uint8_t folder = 1; folder <= 1 + random_.Below(4); ++folder) {
      AddNode(kFolder, {{4, folder}, {5, id}, {72, random_.OneIn(2) ? 0 : 5}});
      for (std::uint32_t i = random_.Below(3); i > 0; --i) AddFilter(id, folder);
      for (std::uint32_t i = random_.Below(5); i > 0; --i) AddMessage(id, folder);
    }
  }

  RandomMail random_{GetParam()};
  std::uint8_t last_filter_ = 0;
  std::uint8_t last_message_ = 0;
};

TEST_P(MailRoundTripTest, AllThatTheTablesCarryReturns) {
  for (const std::uint8_t account : {std::uint8_t{1}, std::uint8_t{255}, std::uint8_t{0}, std::uint8_t{101}}) {
    AddAccount(account);
  }
  for (std::size_t kind = kUidl; kind < kMailKinds; ++kind)
    std::shuffle(store_.lists[kind].begin(), store_.lists[kind].end(), std::mt19937(7));
  MakeDirectory(u"\\dbdata\\mail\\file");
  MakeDirectory(u"\\SD\\mail\\file");
  std::map<std::string, std::string> texts;
  for (const Bytes& header : store_.lists[kHeader]) {
    const std::string id = std::to_string(header[4]);
    const std::u16string directory = header[848] != 0 ? u"\\SD\\mail\\file\\" : u"\\dbdata\\mail\\file\\";
    texts[id] = "text of " + id;
    WriteText(directory + std::u16string(id.begin(), id.end()) + u".eml", texts[id]);
  }
  EXPECT_EQ(LocalExport(kModule), 0u);
  EXPECT_EQ(LocalRecover(kModule), store_.lists[kHeader].size());
  EXPECT_THAT(TablesLeft(), testing::IsEmpty());

  for (std::uint8_t i = 0; i < kMailKinds; ++i) {
    const MailKind kind{i};
    Nodes expected;
    for (const Bytes& node : store_.lists[kind]) expected.push_back(AfterARoundTrip(kind, node));
    Nodes handed_over = store_.NodesSet(kind);
    std::sort(expected.begin(), expected.end());
    std::sort(handed_over.begin(), handed_over.end());
    EXPECT_TRUE(handed_over == expected) << kMailForms[kind].name;
  }
  for (const auto& handed : store_.handed_over) {
    if (!handed.call.starts_with("SetMail ")) continue;
    EXPECT_EQ(std::string(handed.body->begin(), handed.body->end()), texts[std::to_string(handed.first.at(0)[4])]);
  }
}

INSTANTIATE_TEST_SUITE_P(Seeds, MailRoundTripTest, testing::Range(1u, 9u));

}  // namespace
}  // namespace qv_test
