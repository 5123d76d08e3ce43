// The one place where a store is called by its facts.
#include "sync/store_function.h"

#include "layout/bytes.h"

namespace qv {
namespace {

using layout::AddressOf;
using Word = std::uint32_t;

Word WordOf(Argument argument, const Arguments& arguments) {
  switch (argument) {
    case Argument::kTable: return arguments.table;
    case Argument::kCount: return arguments.count;
    case Argument::kCountPlace: return AddressOf(arguments.count_place);
    case Argument::kEntries: return AddressOf(arguments.entries);
    case Argument::kId: return arguments.id;
    case Argument::kIds: return AddressOf(arguments.ids);
    case Argument::kRecords: return AddressOf(arguments.records);
    case Argument::kNewId: return AddressOf(arguments.new_id);
    case Argument::kGroup: return arguments.group;
    case Argument::kZero:
    case Argument::kNone: break;
  }
  return 0;
}

}  // namespace

std::uint32_t StoreFunction::Answer(const Arguments& arguments) const {
  // Every argument is a word, also an address, so a function is told apart by the number of its arguments alone.
  static_assert(sizeof(void*) == sizeof(Word));
  Word words[EntryPoint::kMostArguments];
  std::size_t count = 0;
  for (const Argument argument : entry_point_->arguments) {
    if (argument != Argument::kNone) words[count++] = WordOf(argument, arguments);
  }
  switch (count) {
    case 0: return reinterpret_cast<Word (*)()>(function_)();
    case 1: return reinterpret_cast<Word (*)(Word)>(function_)(words[0]);
    case 2: return reinterpret_cast<Word (*)(Word, Word)>(function_)(words[0], words[1]);
    case 3: return reinterpret_cast<Word (*)(Word, Word, Word)>(function_)(words[0], words[1], words[2]);
    default:
      return reinterpret_cast<Word (*)(Word, Word, Word, Word)>(function_)(words[0], words[1], words[2], words[3]);
  }
}

}  // namespace qv
