// The documents that are generated from the agent's own tables, so that they cannot say anything else than the code.
#ifndef QV_TOOLS_QVDESK_DESCRIBE_H
#define QV_TOOLS_QVDESK_DESCRIBE_H

#include <string>

#include "layout/record_layout.h"

namespace qvdesk {

std::string DescribeCalls();    ///< docs/CALLS.md
std::string DescribeFormats();  ///< docs/FORMATS.md
std::string DescribeResults();  ///< docs/RESULTS.md
std::string DescribeLayouts();  ///< tests/golden/layouts.txt

/// "number", "bits", …
const char* NameOf(qv::layout::Form form);

}  // namespace qvdesk

#endif  // QV_TOOLS_QVDESK_DESCRIBE_H
