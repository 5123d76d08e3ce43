// The rules behind fields that a module works out itself, in words: for the documents, which show them below the form's
// table. The agent does not hold them.
#ifndef QV_SYNC_FORM_RULES_H
#define QV_SYNC_FORM_RULES_H

#include <span>

#include "layout/record_layout.h"

namespace qv {

struct RuleWords {
  const layout::RecordLayout* layout;  ///< The form that the rule is about.
  const char* rule;                    ///< Sentences.
  /// Fields of either side that a recover of an export may not bring back. A name that ends with "_" stands for all
  /// that begin with it.
  std::span<const char* const> not_restored = {};
};

}  // namespace qv

#endif  // QV_SYNC_FORM_RULES_H
