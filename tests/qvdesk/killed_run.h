// Runs a program as a debugger would, and kills it at its n-th system call that changes the file system: the program
// needs nothing for that. A filter in the kernel passes over all other calls, of which a start alone makes thousands.
#ifndef QV_TESTS_QVDESK_KILLED_RUN_H
#define QV_TESTS_QVDESK_KILLED_RUN_H

#include <fcntl.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <vector>

namespace desk {

struct KilledRun {
  bool killed;       ///< Otherwise it came to its end before.
  unsigned changes;  ///< How many such system calls it had begun.
};

namespace internal {

/// Opening a file is one only when it may create the file.
inline constexpr unsigned kChanges[] = {
    SYS_open,      SYS_openat,      SYS_write, SYS_writev, SYS_pwrite64, SYS_sendfile64, SYS_copy_file_range,
    SYS_ftruncate, SYS_ftruncate64, SYS_mkdir, SYS_rmdir,  SYS_rename,   SYS_unlink,     SYS_unlinkat};

/// From here on such calls stop the process, and the processes that it starts, for the one that traces them.
inline bool StopAtChanges() {
  std::vector<sock_filter> filter = {BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr))};
  for (const unsigned number : kChanges) {
    filter.push_back(BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, number, 0, 1));
    filter.push_back(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_TRACE));
  }
  filter.push_back(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW));
  const sock_fprog program = {.len = static_cast<unsigned short>(filter.size()), .filter = filter.data()};
  return prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 && prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) == 0;
}

[[noreturn]] inline void BecomeTraced(std::vector<std::string> command) {
  std::vector<char*> arguments;
  for (std::string& word : command) arguments.push_back(word.data());
  arguments.push_back(nullptr);
  const bool is_quiet = std::freopen("/dev/null", "w", stdout) != nullptr;
  if (is_quiet && ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) == 0 && raise(SIGSTOP) == 0 && StopAtChanges()) {
    execv(arguments[0], arguments.data());
  }
  _exit(99);
}

inline void Require(bool done) {
  if (!done) throw std::runtime_error("the program cannot be traced");
}

/// A stop before a system call that changes files.
inline bool IsChange(pid_t process, int status) {
  if (status >> 8 != (SIGTRAP | PTRACE_EVENT_SECCOMP << 8)) return false;
  __ptrace_syscall_info info = {};
  Require(ptrace(PTRACE_GET_SYSCALL_INFO, process, sizeof(info), &info) > 0);
  if (info.seccomp.nr == SYS_open) return (info.seccomp.args[1] & O_CREAT) != 0;
  return info.seccomp.nr != SYS_openat || (info.seccomp.args[2] & O_CREAT) != 0;
}

/// Lets a stopped process go on, with the signal that it stopped for unless that is the tracing's own.
inline void GoOn(pid_t process, int status) {
  const bool is_its_own = status >> 16 == 0 && WSTOPSIG(status) != SIGTRAP && WSTOPSIG(status) != SIGSTOP;
  ptrace(PTRACE_CONT, process, nullptr, is_its_own ? WSTOPSIG(status) : 0);
}

}  // namespace internal

/// `n` counts from 1; the n-th such system call is not carried out. 0: it is not killed, only counted. Returns when the
/// processes that it started have ended too.
inline KilledRun RunAndKill(const std::vector<std::string>& command, unsigned n) {
  std::fflush(nullptr);
  const pid_t child = fork();
  if (child == 0) internal::BecomeTraced(command);
  int status = 0;
  internal::Require(waitpid(child, &status, 0) == child && WIFSTOPPED(status));
  constexpr long kOptions =
      PTRACE_O_TRACESECCOMP | PTRACE_O_TRACEFORK | PTRACE_O_TRACEVFORK | PTRACE_O_TRACECLONE | PTRACE_O_EXITKILL;
  internal::Require(ptrace(PTRACE_SETOPTIONS, child, nullptr, kOptions) == 0);
  internal::GoOn(child, status);
  KilledRun run = {};
  int end = 0;
  for (pid_t process; (process = waitpid(-1, &status, __WALL)) > 0;) {
    if (!WIFSTOPPED(status)) {
      if (process == child) end = status;
      continue;
    }
    if (process == child && internal::IsChange(process, status) && ++run.changes == n) {
      run.killed = kill(child, SIGKILL) == 0;
    } else {
      internal::GoOn(process, status);
    }
  }
  internal::Require(run.killed ? WIFSIGNALED(end) : WIFEXITED(end) && WEXITSTATUS(end) == 0);
  return run;
}

}  // namespace desk

#endif  // QV_TESTS_QVDESK_KILLED_RUN_H
