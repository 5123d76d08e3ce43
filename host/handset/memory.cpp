// The handset's malloc. Blocks are listed beside the heap, not in headers before them: so a plain block is exactly the
// host's own, guarded on both sides by AddressSanitizer, and a pointer that is no block is known without reading there.
#include "host/handset/memory.h"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <unordered_map>

#include "host/handset/faults.h"

namespace handset {
namespace {

// What a handset could not have; a request beyond it is a size gone wrong.
constexpr std::size_t kLargestBlock = 512u << 20;
constexpr std::size_t kAlignment = 8;
constexpr unsigned char kGuardByte = 0xFD;
constexpr unsigned char kFreshByte = 0xCD;

struct Block {
  std::size_t size = 0;              // As asked for.
  unsigned char* mapping = nullptr;  // A guarded block's pages, the inaccessible one last; null for a plain block.
};

std::unordered_map<const void*, Block> blocks;
std::uint64_t allocated_bytes = 0;
std::uint64_t peak_bytes = 0;
bool guarded_blocks = false;

std::size_t RoundUp(std::size_t size, std::size_t unit) {
  return (size + unit - 1) / unit * unit;
}

std::size_t PageSize() {
  static const auto size = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
  return size;
}

// What a guarded block can be written to without a fault: its accessible pages.
std::size_t AccessibleSize(std::size_t size) {
  return RoundUp(RoundUp(size, kAlignment), PageSize());
}

void* AllocateGuarded(Block& block) {
  const std::size_t accessible = AccessibleSize(block.size);
  void* pages = mmap(nullptr, accessible + PageSize(), PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (pages == MAP_FAILED) return nullptr;
  if (accessible > 0 && mprotect(pages, accessible, PROT_READ | PROT_WRITE) != 0) {
    munmap(pages, accessible + PageSize());
    return nullptr;
  }
  block.mapping = static_cast<unsigned char*>(pages);
  std::memset(pages, kGuardByte, accessible);
  return block.mapping + accessible - RoundUp(block.size, kAlignment);
}

void* Allocate(Block& block) {
  if (block.size > kLargestBlock) return nullptr;
  return guarded_blocks ? AllocateGuarded(block) : std::malloc(std::max<std::size_t>(block.size, 1));
}

void CheckGuardBytes(const void* start, const Block& block) {
  const auto* first = static_cast<const unsigned char*>(start);
  const auto is_damaged = [](unsigned char byte) { return byte != kGuardByte; };
  if (std::any_of(static_cast<const unsigned char*>(block.mapping), first, is_damaged)) {
    Die("memory in front of a block was written to");
  }
  if (std::any_of(first + block.size, first + RoundUp(block.size, kAlignment), is_damaged)) {
    Die("memory past the end of a block was written to");
  }
}

void Release(void* start, const Block& block) {
  if (block.mapping == nullptr) {
    std::free(start);
  } else {
    CheckGuardBytes(start, block);
    munmap(block.mapping, AccessibleSize(block.size) + PageSize());
  }
}

void CountSize(std::size_t added, std::size_t removed) {
  allocated_bytes += added;
  allocated_bytes -= removed;
  peak_bytes = std::max(peak_bytes, allocated_bytes);
}

auto FindBlock(const void* start) {
  const auto found = blocks.find(start);
  if (found == blocks.end()) Die("a pointer that is no block, or was freed already, was given back");
  return found;
}

void* NewBlock(std::size_t size) {
  Block block{size};
  const auto entry = blocks.try_emplace(nullptr).first;  // Before the block, so that nothing after it can fail.
  void* start = Allocate(block);
  auto node = blocks.extract(entry);
  if (start == nullptr) return Fail<void*>(Error::kNotEnoughMemory, nullptr);
  node.key() = start;
  node.mapped() = block;
  blocks.insert(std::move(node));
  CountSize(size, 0);
  return std::memset(start, kFreshByte, size);
}

void FreeBlock(void* start) {
  const auto node = blocks.extract(FindBlock(start));
  CountSize(0, node.mapped().size);
  Release(start, node.mapped());
}

// The block always moves, so that a pointer kept to where it was is found out.
void* MoveBlock(void* old_start, std::size_t size) {
  auto old_entry = FindBlock(old_start);
  Block block{size};
  void* start = Allocate(block);
  if (start == nullptr) return Fail<void*>(Error::kNotEnoughMemory, nullptr);
  auto node = blocks.extract(old_entry);
  const Block old_block = node.mapped();
  std::memset(start, kFreshByte, size);
  std::memcpy(start, old_start, std::min(size, old_block.size));
  Release(old_start, old_block);
  node.key() = start;
  node.mapped() = block;
  blocks.insert(std::move(node));
  CountSize(size, old_block.size);
  return start;
}

}  // namespace

unsigned CountBlocks() {
  return static_cast<unsigned>(blocks.size());
}

void FreeAllBlocks() {
  for (const auto& [start, block] : blocks) Release(const_cast<void*>(start), block);
  blocks.clear();
  allocated_bytes = peak_bytes = 0;
}

std::uint64_t AllocatedBytes() {
  return allocated_bytes;
}

std::uint64_t PeakAllocatedBytes() {
  return peak_bytes;
}

void ResetPeakMemory() {
  peak_bytes = allocated_bytes;
}

std::size_t BlockSize(const void* block) {
  return FindBlock(block)->second.size;
}

void SetGuardedBlocks(bool guarded) {
  guarded_blocks = guarded;
}

}  // namespace handset

namespace coredll {

using namespace handset;

void* malloc(std::size_t size) {
  return PlatformCall({"malloc", {}, size}, nullptr, [&] { return NewBlock(size); });
}

void* realloc(void* block, std::size_t size) {
  return PlatformCall({"realloc", {}, size}, nullptr, [&]() -> void* {
    if (block == nullptr) return NewBlock(size);
    if (size > 0) return MoveBlock(block, size);
    FreeBlock(block);
    return nullptr;
  });
}

void free(void* block) {
  Watch({"free", {}, 0});
  if (block != nullptr) FreeBlock(block);
}

}  // namespace coredll
