// Runs sha256sum once for all the files of a kind. Each ends in a NUL, so that no name can be taken for another.
#include "tools/qvdesk/digest.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <stdexcept>
#include <utility>

#include "tools/qvdesk/host_file.h"

namespace qvdesk {
namespace {

constexpr std::size_t kDigits = 64;
constexpr std::size_t kMostWords = 1000;  // A command line has room for more.

/// Starts the program with its output on `output`, which it closes here. Gives its process.
pid_t Start(std::vector<std::string>& command, int output) {
  std::vector<char*> arguments;
  for (std::string& word : command) arguments.push_back(word.data());
  arguments.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
  pid_t process = 0;
  const int error = posix_spawnp(&process, arguments[0], &actions, nullptr, arguments.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  close(output);
  if (error != 0) throw std::runtime_error(command[0] + ": " + std::strerror(error));
  return process;
}

/// What the program prints. Throws when it fails; it has then said why itself.
std::string OutputOf(std::vector<std::string> command) {
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) throw std::runtime_error(std::string("pipe: ") + std::strerror(errno));
  const HostFile reading(fdopen(ends[0], "r"));
  const pid_t process = Start(command, ends[1]);
  std::string output;
  for (int c; (c = std::getc(reading.get())) != EOF;) output += static_cast<char>(c);
  int status = 0;
  if (waitpid(process, &status, 0) != process || status != 0) throw std::runtime_error(command[0] + " failed");
  return output;
}

}  // namespace

std::vector<std::string> Sha256Of(const std::vector<std::filesystem::path>& files) {
  std::vector<std::string> digests;
  while (digests.size() < files.size()) {
    std::vector<std::string> command = {"sha256sum", "--zero", "--"};
    for (std::size_t i = digests.size(); i < files.size() && command.size() < kMostWords; ++i) {
      command.push_back(files[i].string());
    }
    const std::size_t wanted = digests.size() + command.size() - 3;
    const std::string output = OutputOf(std::move(command));
    for (std::size_t at = 0; at + kDigits < output.size(); at = output.find('\0', at) + 1) {
      digests.push_back(output.substr(at, kDigits));
    }
    if (digests.size() != wanted) throw std::runtime_error("sha256sum answered for other files than it was given");
  }
  return digests;
}

}  // namespace qvdesk
