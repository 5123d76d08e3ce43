// The multimedia messages' export and recover around the procedure.
#include "modules/messaging/mms.h"

#include <algorithm>
#include <cstring>
#include <iterator>

#include "sync/exchange_table.h"

namespace qv::mms {
namespace {

// MmsStore.dll's own.
using GetConfigFunction = std::uint32_t(std::uint8_t** block, std::uint32_t* size);
using SetConfigFunction = std::uint32_t(const std::uint8_t* block, std::uint32_t size);

constexpr std::size_t kBatch = kTableFacts[kMainTable].read_batch;
static_assert(kTableFacts[kMainTable].read_batch_incrementally <= kBatch);

/// The messages of one call of the store, with their blocks.
class Batch {
 public:
  Batch() = default;
  ~Batch() {
    for (StoreMessage& message : messages_) {
      coredll::free(message.text);
      coredll::free(message.data);
    }
  }
  Batch(const Batch&) = delete;
  Batch& operator=(const Batch&) = delete;

  StoreMessage* data() { return messages_; }
  /// What a store leaves behind when it fails is its own.
  void Forget() { std::fill(std::begin(messages_), std::end(messages_), StoreMessage{}); }

 private:
  StoreMessage messages_[kBatch] = {};
};

Result WriteMessage(File& exchange_table, const StoreMessage& message) {
  const std::size_t text_length = message.text != nullptr ? std::strlen(message.text) : 0;
  const auto data_length = static_cast<std::size_t>(std::max(message.data_length, 0));
  if (data_length != 0 && message.data == nullptr) return Result::kReadFailed;
  std::uint8_t exchange[kExchangeSize] = {};
  layout::StoreSlot(kTextLength, exchange, static_cast<std::uint32_t>(text_length));
  layout::StoreSlot(kMessageId, exchange, message.id);
  layout::StoreSlot(kValue, exchange, message.value);
  layout::StoreSlot(kDataLength, exchange, static_cast<std::uint32_t>(message.data_length));
  const bool written = exchange_table.Write(exchange, sizeof(exchange)) &&
                       (text_length == 0 || exchange_table.Write(message.text, text_length)) &&
                       (data_length == 0 || exchange_table.Write(message.data, data_length));
  return written ? Result::kOk : Result::kFileFailed;
}

/// A part of a record: all `size` bytes of it, in a block of just that size; none for nothing. kNoMemory,
/// kFileUnreadable.
Result ReadBlock(File& exchange_table, std::size_t size, List<std::uint8_t>& block) {
  if (size == 0) return Result::kOk;
  return block.Resize(size) ? ReadWhole(exchange_table, block.data(), size) : Result::kNoMemory;
}

}  // namespace

Result MmsHandler::Export(SyncMode& mode, char16_t* anchor) {
  procedure_.BeginExport(mode, anchor);
  if (const Result exported = ExportConfig(); IsFailure(exported)) return exported;
  return procedure_.Export(mode);
}

Result MmsHandler::Recover(SyncMode mode, char16_t* anchor) {
  procedure_.BeginRecover(mode, anchor);
  if (const Result applied = ApplyConfig(); IsFailure(applied)) return applied;
  call_.Delete(kConfigFile);
  return procedure_.Recover(mode);
}

Result MmsHandler::ExportConfig() {
  auto* const get = call_.store().Resolve<GetConfigFunction>(u"mms_Sync_GetConfig");
  if (get == nullptr) return Result::kEntryPointMissing;
  StoreBlock block;
  std::uint32_t size = 0;
  const bool got = get(block.place(), &size) == 0;
  if (!got) block.Forget();
  if (!got || (block.bytes() == nullptr && size != 0)) return Result::kReadFailed;
  File file = File::CreateAlways(call_.PathOf(kConfigFile));
  const bool written = file.IsOpen() && (size == 0 || file.Write(block.bytes(), size));
  return written ? Result::kOk : Result::kFileFailed;
}

Result MmsHandler::ApplyConfig() {
  File file = File::OpenExisting(call_.PathOf(kConfigFile));
  if (!file.IsOpen()) return Result::kFileFailed;
  std::uint32_t size = 0;
  List<std::uint8_t> block;
  if (!file.Size(size)) return Result::kFileUnreadable;
  if (const Result read = ReadBlock(file, size, block); IsFailure(read)) return read;
  auto* const set = call_.store().Resolve<SetConfigFunction>(u"mms_Sync_SetConfig");
  if (set == nullptr) return Result::kEntryPointMissing;
  return set(block.data(), size) == 0 ? Result::kOk : Result::kInsertFailed;
}

Result MmsHandler::Table::ExportRecords(std::span<const std::uint32_t> ids, std::size_t batch, File& exchange_table) {
  return ForEachBatch(ids, batch, [&](std::span<const std::uint32_t> run) {
    Batch messages;
    if (!Read(run, messages.data())) {
      messages.Forget();
      return Result::kReadFailed;
    }
    if (!exchange_table.IsOpen()) exchange_table = CreateExchangeTable();
    if (!exchange_table.IsOpen()) return Result::kFileFailed;
    for (std::size_t i = 0; i < run.size(); ++i) {
      if (const Result done = WriteMessage(exchange_table, messages.data()[i]); IsFailure(done)) return done;
    }
    return Result::kOk;
  });
}

Result MmsHandler::Table::ApplyRecord(File& exchange_table, const Applying& applying, bool& more) {
  more = false;
  if (!rest_.Learn(exchange_table)) return Result::kFileUnreadable;
  std::uint8_t exchange[kExchangeSize];
  const Result read = ReadRecord(exchange_table, exchange, sizeof(exchange), sizeof(exchange), more);
  if (!more) return read;
  rest_.Take(sizeof(exchange));

  const std::uint32_t text_length = layout::LoadSlot(kTextLength, exchange);
  const auto said_length = static_cast<std::int32_t>(layout::LoadSlot(kDataLength, exchange));
  const auto data_length = static_cast<std::uint32_t>(std::max(said_length, 0));
  if (!rest_.Holds(std::uint64_t{text_length} + data_length)) return Result::kFileUnreadable;
  rest_.Take(text_length + data_length);
  List<std::uint8_t> text;
  List<std::uint8_t> data;
  if (const Result part = ReadBlock(exchange_table, text_length, text); IsFailure(part)) return part;
  if (const Result part = ReadBlock(exchange_table, data_length, data); IsFailure(part)) return part;
  const StoreMessage message = {.text = reinterpret_cast<char*>(text.data()),
                                .id = layout::LoadSlot(kMessageId, exchange),
                                .value = layout::LoadSlot(kValue, exchange),
                                .data = data.data(),
                                .data_length = said_length};
  return Put(applying, {.table = number(), .id = message.id, .records = &message});
}

}  // namespace qv::mms
