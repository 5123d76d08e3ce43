// A fresh handset for each test, on a directory of its own that goes when the test ends.
// Platform functions are called by their full names, as the agent's code names what it asks of the system.
#ifndef QV_TESTS_HANDSET_HANDSET_FIXTURE_H
#define QV_TESTS_HANDSET_HANDSET_FIXTURE_H

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "host/handset/handset.h"

namespace handset {

class HandsetTest : public testing::Test {
 protected:
  HandsetTest() {
    std::string directory = testing::TempDir() + "handset_XXXXXX";
    root_ = mkdtemp(directory.data());
    Start(root_);
  }
  ~HandsetTest() override {
    SetGuardedBlocks(false);
    SetRom({});
    Start(root_);
    std::filesystem::remove_all(root_);
  }

  void MakeDirectory(const std::string& path) const { std::filesystem::create_directories(root_ / path); }

  void Put(const std::string& path, const std::string& content) const {
    std::filesystem::create_directories((root_ / path).parent_path());
    std::ofstream(root_ / path, std::ios::binary) << content;
  }

  std::string Content(const std::string& path) const {
    std::ostringstream content;
    content << std::ifstream(root_ / path, std::ios::binary).rdbuf();
    return content.str();
  }

  bool Exists(const std::string& path) const { return std::filesystem::exists(root_ / path); }

  static coredll::HANDLE Create(const char16_t* name, coredll::DWORD access = coredll::GENERIC_WRITE,
                                coredll::DWORD share = 0) {
    return coredll::CreateFileW(name, access, share, nullptr, coredll::CREATE_ALWAYS, coredll::FILE_ATTRIBUTE_NORMAL,
                                nullptr);
  }

  static coredll::HANDLE Open(const char16_t* name, coredll::DWORD access = coredll::GENERIC_READ,
                              coredll::DWORD share = 0) {
    return coredll::CreateFileW(name, access, share, nullptr, coredll::OPEN_EXISTING, coredll::FILE_ATTRIBUTE_NORMAL,
                                nullptr);
  }

  // How many bytes the handset says it wrote; -1 when the call failed.
  static int Write(coredll::HANDLE file, const std::string& bytes) {
    coredll::DWORD written = 77;
    const auto done =
        coredll::WriteFile(file, bytes.data(), static_cast<coredll::DWORD>(bytes.size()), &written, nullptr);
    return done != 0 ? static_cast<int>(written) : -1;
  }

  static std::string Read(coredll::HANDLE file, coredll::DWORD size) {
    std::string bytes(size, '\0');
    coredll::DWORD read = 77;
    if (coredll::ReadFile(file, bytes.data(), size, &read, nullptr) == 0) return "failed";
    return bytes.substr(0, read);
  }

  std::filesystem::path root_;
};

}  // namespace handset

#endif  // QV_TESTS_HANDSET_HANDSET_FIXTURE_H
