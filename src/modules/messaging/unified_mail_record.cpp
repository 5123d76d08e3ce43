// Chains of nodes and a long text, out and in.
#include "modules/messaging/unified_mail_record.h"

#include <algorithm>
#include <span>

#include "layout/bytes.h"

namespace qv::unified_mail {
namespace {

/// Most bytes of a long text that a recover converts. Stores count on no more.
constexpr std::size_t kConvertedText = 4;

const std::uint8_t* At(std::uint32_t address) {
  return reinterpret_cast<const std::uint8_t*>(static_cast<std::uintptr_t>(address));
}

/// Appends the items of a chain to the mail, and counts them. False without memory.
bool AppendChain(std::uint32_t head, const layout::Slot& next, const layout::RecordLayout& layout,
                 List<std::uint8_t>& mail, std::uint32_t& count) {
  count = 0;
  for (const std::uint8_t* node = At(head); node != nullptr; node = At(layout::LoadSlot(next, node))) {
    std::uint8_t item[kItem308Size];
    layout::ToExchange(layout, node, item);
    if (!mail.Append(std::span<const std::uint8_t>(item, layout.exchange_size))) return false;
    ++count;
  }
  return true;
}

bool AppendItems182(const std::uint8_t* record, List<std::uint8_t>& mail) {
  std::uint32_t total = 0;
  for (std::uint32_t kind = 0; kind < kKinds; ++kind) {
    const std::size_t begin = mail.size();
    std::uint32_t count = 0;
    const std::uint32_t head = layout::LoadSlot(kKindChains[kind], record);
    if (!AppendChain(head, kNextItem182, kItem182Layout, mail, count)) return false;
    for (std::size_t i = begin; i < mail.size(); i += kItem182Size) layout::StoreSlot(kItemKind, mail.data() + i, kind);
    layout::StoreSlot(kKindCounts[kind], mail.data(), count);
    total += count;
  }
  layout::StoreSlot(kItem182Count, mail.data(), total);
  return true;
}

bool AppendItems308(const std::uint8_t* record, List<std::uint8_t>& mail) {
  std::uint32_t count = 0;
  const std::uint32_t head = layout::LoadSlot(kItem308Chain, record);
  if (!AppendChain(head, kNextItem308, kItem308Layout, mail, count)) return false;
  layout::StoreSlot(kItem308Count, mail.data(), count);
  return true;
}

Result AppendText(const std::uint8_t* record, List<std::uint8_t>& mail) {
  const std::uint32_t size = layout::LoadSlot(kStoreTextLength, record);
  const std::uint8_t* const text = At(layout::LoadSlot(kStoreText, record));
  if (size == 0) return Result::kOk;
  if (text == nullptr) return Result::kReadFailed;
  List<char> narrow;  // With the NUL that the store's text lacks.
  List<char16_t> wide;
  if (size + 1 == 0 || !narrow.Resize(size + 1) || !wide.Resize(size)) return Result::kNoMemory;
  std::copy_n(text, size, narrow.begin());
  narrow[size] = '\0';
  const std::size_t length = layout::Widen(narrow.data(), wide.data(), size);
  layout::StoreSlot(kTextLength, mail.data(), static_cast<std::uint32_t>(length));
  const auto* const bytes = reinterpret_cast<const std::uint8_t*>(wide.data());
  return mail.Append(std::span(bytes, length * sizeof(char16_t))) ? Result::kOk : Result::kNoMemory;
}

/// A chain of nodes that is growing.
class Chain {
 public:
  Chain(std::uint8_t* record, const layout::Slot& head) : link_(record + head.offset) {}

  void Append(std::uint8_t* node, const layout::Slot& next) {
    layout::StoreSlot(layout::U32(0), link_, layout::AddressOf(node));
    link_ = node + next.offset;
  }

 private:
  std::uint8_t* link_;  ///< Where the next node's address belongs.
};

}  // namespace

Result MailToExchange(std::uint32_t table, const std::uint8_t* record, List<std::uint8_t>& exchange) {
  exchange.Clear();
  if (!exchange.Resize(kMailExchangeSize)) return Result::kNoMemory;
  layout::ToExchange(kMailLayout, record, exchange.data());
  layout::StoreSlot(kTable, exchange.data(), table);
  if (!AppendItems182(record, exchange) || !AppendItems308(record, exchange)) return Result::kNoMemory;
  return AppendText(record, exchange);
}

Result IncomingMail::Read(File& mails, FileRest& rest, bool& more) {
  more = false;
  if (!rest.Learn(mails)) return Result::kFileUnreadable;
  if (const Result read = ReadRecord(mails, exchange_, kMailExchangeSize, kMailExchangeSize, more); !more) return read;
  rest.Take(kMailExchangeSize);
  std::uint64_t size = 0;
  for (const layout::ItemRun& run : kMailLayout.items) {
    size += std::uint64_t{layout::ItemCount(run, exchange_)} * run.item.size;
  }
  more = rest.Holds(size);
  if (!more) return Result::kFileUnreadable;
  rest.Take(static_cast<std::uint32_t>(size));
  layout::ToStore(kMailLayout, exchange_, record_);
  const Result read = ReadParts(mails);
  more = !IsFailure(read);
  return read;
}

Result IncomingMail::ReadParts(File& mails) {
  const auto count = [&](MailRun run) { return layout::ItemCount(kMailLayout.items[run], exchange_); };
  if (const Result read = ReadItems182(mails, count(kItems182)); IsFailure(read)) return read;
  if (const Result read = ReadItems308(mails, count(kItems308)); IsFailure(read)) return read;
  return ReadText(mails, count(kText));
}

Result IncomingMail::ReadItems182(File& mails, std::uint32_t count) {
  if (!nodes_182_.Resize(count, kItem182NodeSize)) return Result::kNoMemory;
  Chain chains[kKinds] = {{record_, kKindChains[0]}, {record_, kKindChains[1]}, {record_, kKindChains[2]}};
  for (std::uint8_t* node = nodes_182_.begin(); node != nodes_182_.end(); node += kItem182NodeSize) {
    std::uint8_t item[kItem182Size];
    if (const Result read = ReadWhole(mails, item, sizeof(item)); IsFailure(read)) return read;
    layout::ToStore(kItem182Layout, item, node);
    const std::uint32_t kind = layout::LoadSlot(kItemKind, item);
    if (kind < kKinds) chains[kind].Append(node, kNextItem182);
  }
  return Result::kOk;
}

Result IncomingMail::ReadItems308(File& mails, std::uint32_t count) {
  if (!nodes_308_.Resize(count, kItem308NodeSize)) return Result::kNoMemory;
  Chain chain(record_, kItem308Chain);
  for (std::uint8_t* node = nodes_308_.begin(); node != nodes_308_.end(); node += kItem308NodeSize) {
    std::uint8_t item[kItem308Size];
    if (const Result read = ReadWhole(mails, item, sizeof(item)); IsFailure(read)) return read;
    layout::ToStore(kItem308Layout, item, node);
    chain.Append(node, kNextItem308);
  }
  return Result::kOk;
}

Result IncomingMail::ReadText(File& mails, std::uint32_t length) {
  if (length == 0) return Result::kOk;
  if (!text_.Resize(length)) return Result::kNoMemory;
  text_.Zero();
  char16_t beginning[kConvertedText + 1] = {};
  const std::size_t taken = std::min<std::size_t>(length, kConvertedText);
  if (const Result read = ReadWhole(mails, beginning, taken * sizeof(char16_t)); IsFailure(read)) return read;
  char converted[kConvertedText];
  std::copy_n(converted, layout::Narrow(beginning, converted, taken), text_.begin());
  layout::StoreSlot(kStoreText, record_, layout::AddressOf(text_.data()));
  layout::StoreSlot(kStoreTextLength, record_, length);

  for (std::size_t left = (length - taken) * sizeof(char16_t); left != 0;) {
    std::uint8_t passed_over[256];
    const std::size_t size = std::min(left, sizeof(passed_over));
    if (const Result read = ReadWhole(mails, passed_over, size); IsFailure(read)) return read;
    left -= size;
  }
  return Result::kOk;
}

}  // namespace qv::unified_mail
