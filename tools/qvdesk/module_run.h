// One run of a module: what is asked of the agent, and what it answers.
#ifndef QV_TOOLS_QVDESK_MODULE_RUN_H
#define QV_TOOLS_QVDESK_MODULE_RUN_H

#include <cstdint>
#include <string>
#include <vector>

#include "tools/qvdesk/catalog.h"
#include "tools/qvdesk/phone.h"
#include "tools/qvdesk/readings.h"

namespace qvdesk {

/// What success is worth where the entry point says nothing of the module's result.
inline constexpr char kAsFarAsCanBeTold[] = ", as far as can be told: the handset reports success in any case";

/// As it was asked for, and as the handset answered.
struct ModuleRun {
  qv::Direction direction;
  const qv::ModuleRow& module;
  qv::SyncMode mode;
  std::u16string directory;  ///< On the handset.
  std::string anchor;
  bool local = false;  ///< As a program on the handset runs it.
  std::uint32_t code = 0;
  qv::SyncMode mode_after = mode;
  std::string anchor_after = {};

  /// Makes the call. Throws UsageError for what a request cannot hold, std::runtime_error for an agent that does not
  /// answer as agreed.
  void Make(const Phone& phone);

  /// The first of the readings.
  Reading Outcome() const;
  /// The same in words, with what to look at on a line that begins with `indent`.
  std::string Result(const std::string& indent) const;
  bool IsSuccess() const;
  /// The entry point says nothing of the module's result.
  bool IsDropped() const;
  /// A module that did not run gives back the anchor of the request, as do those without one.
  bool HandedOutAnchor() const;
  /// Whether the anchor is to be presented next time. A failed run's is not: with it the next incremental export would
  /// leave out what this one did not bring.
  bool AnchorCounts() const { return HandedOutAnchor() && IsSuccess() && qv::IsRemembered(mode_after); }

 private:
  void MakeFromDesktop(const Phone& phone);
  void MakeOnHandset(const Phone& phone);
};

}  // namespace qvdesk

#endif  // QV_TOOLS_QVDESK_MODULE_RUN_H
