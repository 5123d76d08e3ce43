// The subcommands. Each adds itself to the program with its help; when it was chosen, `status` receives what the
// program is to exit with, or an exception leaves.
#ifndef QV_TOOLS_QVDESK_COMMANDS_H
#define QV_TOOLS_QVDESK_COMMANDS_H

#include <CLI/CLI.hpp>

namespace qvdesk {

void AddCreate(CLI::App& program, int& status);
void AddExport(CLI::App& program, int& status);
void AddRecover(CLI::App& program, int& status);
void AddBackup(CLI::App& program, int& status);
void AddSync(CLI::App& program, int& status);
void AddVerify(CLI::App& program, int& status);
void AddRestore(CLI::App& program, int& status);
void AddCompare(CLI::App& program, int& status);
void AddAsk(CLI::App& program, int& status);
void AddShow(CLI::App& program, int& status);
void AddPicture(CLI::App& program, int& status);
void AddEncode(CLI::App& program, int& status);
void AddExplain(CLI::App& program, int& status);
void AddModules(CLI::App& program, int& status);
void AddDescribe(CLI::App& program, int& status);

}  // namespace qvdesk

#endif  // QV_TOOLS_QVDESK_COMMANDS_H
