// "describe": prints a generated document.
#include "tools/qvdesk/describe.h"

#include <fmt/format.h>

#include <map>
#include <memory>
#include <string>

#include "tools/qvdesk/commands.h"
#include "tools/qvdesk/errors.h"

namespace qvdesk {
namespace {

const std::map<std::string, std::string (*)()> kDocuments = {
    {"calls", DescribeCalls}, {"formats", DescribeFormats}, {"layouts", DescribeLayouts}, {"results", DescribeResults}};

int Describe(const std::string& document) {
  fmt::print("{}", kDocuments.at(document)());
  return kSuccess;
}

}  // namespace

const char* NameOf(qv::layout::Form form) {
  using qv::layout::Form;
  switch (form) {
    case Form::kNone: return "none";
    case Form::kUnused: return "unused";
    case Form::kNumber: return "number";
    case Form::kSigned: return "signed number";
    case Form::kBits: return "bits";
    case Form::kTruth: return "truth";
    case Form::kText: return "text";
    case Form::kNarrowText: return "narrow text";
    case Form::kRawText: return "raw text";
    case Form::kBytes: return "bytes";
    case Form::kTimeText: return "time text";
    case Form::kFileTime: return "file time";
    case Form::kSystemTime: return "system time";
    case Form::kTimeNumbers: return "time";
  }
  return "unknown";
}

void AddDescribe(CLI::App& program, int& status) {
  CLI::App* const command = program.add_subcommand(
      "describe",
      "Prints a document generated from the agent's own tables: formats (docs/FORMATS.md: every file and block, field "
      "by field), calls (docs/CALLS.md: what each store library is asked for), results (docs/RESULTS.md: every result "
      "code) or layouts (tests/golden/layouts.txt: the layout tables "
      "as they are, so that no layout changes unseen).");
  auto document = std::make_shared<std::string>();
  command->add_option("DOCUMENT", *document, "Which one")->required()->check(CLI::IsMember(kDocuments));
  command->footer("Example:\n  qvdesk describe formats > docs/FORMATS.md");
  command->callback([document, &status] { status = Describe(*document); });
}

}  // namespace qvdesk
