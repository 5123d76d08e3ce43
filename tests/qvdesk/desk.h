// Runs qvdesk as a shell would, and gives each test a directory of its own with a handset in it.
#ifndef QV_TESTS_QVDESK_DESK_H
#define QV_TESTS_QVDESK_DESK_H

#include <gmock/gmock.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace desk {

namespace fs = std::filesystem;

struct Outcome {
  int status;  ///< -1 when the program did not exit by itself.
  std::string out;
  std::string err;
};

inline std::string Contents(const fs::path& file) {
  std::ifstream stream(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

inline void Write(const fs::path& file, const std::string& contents) {
  std::ofstream(file, std::ios::binary) << contents;
}

class DeskTest : public testing::Test {
 protected:
  DeskTest() {
    std::string name = (fs::temp_directory_path() / "qvdesk-XXXXXX").string();
    directory_ = mkdtemp(name.data());
  }
  ~DeskTest() override { fs::remove_all(directory_); }

  fs::path At(const std::string& name) const { return directory_ / name; }
  fs::path Phone() const { return At("phone"); }
  fs::path Sync(const std::string& file) const { return Phone() / "sync" / file; }

  Outcome Run(const std::vector<std::string>& arguments) const {
    std::vector<char*> argv = {const_cast<char*>(QV_DESK)};
    for (const std::string& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
    argv.push_back(nullptr);
    const std::string out = At("stdout").string();
    const std::string err = At("stderr").string();
    std::fflush(nullptr);  // or the child would write it too
    const pid_t child = fork();
    if (child == 0) {
      if (std::freopen(out.c_str(), "w", stdout) == nullptr || std::freopen(err.c_str(), "w", stderr) == nullptr)
        _exit(99);
      execv(QV_DESK, argv.data());
      _exit(99);
    }
    int status = 0;
    waitpid(child, &status, 0);
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, Contents(out), Contents(err)};
  }

  /// A run that has to succeed, for the tests that are about what comes after it.
  std::string Done(const std::vector<std::string>& arguments) const {
    const Outcome outcome = Run(arguments);
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    return outcome.out;
  }

  void CreatePhone(const std::string& entries = "12", const std::string& contacts = "0") const {
    Done({"create", Phone().string(), "--schedule-entries", entries, "--schedule-groups", "2", "--contacts", contacts});
  }
  Outcome Export(const std::vector<std::string>& more = {}) const { return Transfer("export", more); }
  Outcome Recover(const std::vector<std::string>& more = {}) const { return Transfer("recover", more); }

  /// As the phone's owner edits data, here in the sqlite3 shell.
  void Edit(const std::string& sql) const {
    const std::string database = (Phone() / "Windows" / "handset.db").string();
    ASSERT_EQ(std::system((QV_SQLITE_SHELL " " + database + " \"" + sql + "\"").c_str()), 0);
  }

  /// What Export and Recover are about.
  const char* module_ = "schedule";

 private:
  Outcome Transfer(const char* direction, const std::vector<std::string>& more) const {
    std::vector<std::string> arguments = {direction, module_, "--handset", Phone().string()};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return Run(arguments);
  }

  fs::path directory_;
};

}  // namespace desk

#endif  // QV_TESTS_QVDESK_DESK_H
