// qvdesk, the desktop's end: everything that a desktop does with a handset, from a shell.
#include <fmt/format.h>

#include <cstdio>
#include <exception>

#include "tools/qvdesk/commands.h"
#include "tools/qvdesk/errors.h"
#include "tools/qvdesk/text.h"

namespace {

constexpr char kPurpose[] =
    "The desktop's end of a synchronisation. It talks to the agent library as a desktop does, on a simulated handset "
    "that is a directory: exports the handset's data, recovers data to it, and shows what passes between them.";
constexpr char kFirstSteps[] =
    "First steps:\n"
    "  qvdesk create /tmp/phone\n"
    "  qvdesk export schedule --handset /tmp/phone\n"
    "  qvdesk show /tmp/phone/sync/schedule.tbl\n"
    "\"qvdesk COMMAND --help\" explains a command.\n"
    "Exit status: 0 success, 1 failure (also one that the handset reports), 2 wrong usage.";

int Run(int argc, char** argv) {
  CLI::App program(kPurpose, "qvdesk");
  program.footer(kFirstSteps);
  program.require_subcommand(1);
  int status = qvdesk::kSuccess;
  qvdesk::AddCreate(program, status);
  qvdesk::AddExport(program, status);
  qvdesk::AddRecover(program, status);
  qvdesk::AddBackup(program, status);
  qvdesk::AddSync(program, status);
  qvdesk::AddVerify(program, status);
  qvdesk::AddRestore(program, status);
  qvdesk::AddCompare(program, status);
  qvdesk::AddAsk(program, status);
  qvdesk::AddShow(program, status);
  qvdesk::AddPicture(program, status);
  qvdesk::AddEncode(program, status);
  qvdesk::AddExplain(program, status);
  qvdesk::AddModules(program, status);
  qvdesk::AddDescribe(program, status);
  try {
    program.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return program.exit(error) == 0 ? qvdesk::kSuccess : qvdesk::kUsage;
  }
  return status;
}

int Complain(const std::exception& error, int status) {
  fmt::print(stderr, "qvdesk: {}\n", qvdesk::Visible(error.what()));
  return status;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    const int status = Run(argc, argv);
    if (std::fflush(stdout) != 0) throw std::runtime_error("standard output cannot be written");
    return status;
  } catch (const qvdesk::UsageError& error) {
    return Complain(error, qvdesk::kUsage);
  } catch (const std::exception& error) {
    return Complain(error, qvdesk::kFailure);
  }
}
