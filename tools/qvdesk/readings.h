// What a result code can mean: the entry point's flag, the step's flag and the code proper, put into words.
#ifndef QV_TOOLS_QVDESK_READINGS_H
#define QV_TOOLS_QVDESK_READINGS_H

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "sync/result_words.h"
#include "sync/sync_mode.h"
#include "tools/qvdesk/catalog.h"

namespace qvdesk {

/// What is known of the run that a code came from; nothing where it is null or empty.
struct Run {
  const qv::ModuleRow* module = nullptr;
  std::optional<qv::Direction> direction;
  std::optional<qv::SyncMode> mode;
};

/// A code taken apart. The flags from 0x1000000 up are an enumeration, not bits.
struct CodeParts {
  std::uint32_t entry_flag;   ///< kExportFlag, kRecoverFlag, 0, or something else that no entry point gives.
  std::uint32_t step_flag;    ///< 0: no step
  std::uint32_t nested_flag;  ///< Within the step: kSnapshotRead, kChangeListApplied.
  std::uint32_t code;

  explicit CodeParts(std::uint32_t result)
      : entry_flag(result & 0xF0000000),
        step_flag(result & 0x0F000000),
        nested_flag(result & 0x00FF0000),
        code(result & 0x0000FFFF) {}
};

/// One meaning of a code, and the runs in which it has it.
struct Reading {
  std::string runs;  ///< "schedule, export, any mode".
  std::string what;  ///< "failed while exporting the entries: reading the table's snapshot log: a file could not …".
  std::string advice = {};
  bool is_success = false;
};

const char* NameOf(qv::Direction direction);
const char* NameOf(qv::Directions directions);
const char* NameOf(qv::Modes modes);
std::uint32_t EntryFlagOf(qv::Direction direction);

/// Whether any entry point of the direction ever answers with a failure of the module.
bool TellsFailures(const qv::ModuleRow& row, qv::Direction direction);

/// Every reading of a code that fits what is known of the run and that the entry points can give. None: no module
/// answers so.
std::vector<Reading> ReadingsOf(std::uint32_t result, const Run& run);

/// A reading as a paragraph, without the runs; what to look at on a line of its own that begins with `indent`.
std::string Describe(const Reading& reading, const std::string& indent);

}  // namespace qvdesk

#endif  // QV_TOOLS_QVDESK_READINGS_H
