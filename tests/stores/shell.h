// The sqlite3 shell on the database of the running handset, as a person has it.
#ifndef QV_TESTS_STORES_SHELL_H
#define QV_TESTS_STORES_SHELL_H

#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <string>

#include "host/handset/handset.h"
#include "host/stores/database.h"

/// Runs SQL in the shell, which may happen while stores are open here; returns what it printed.
inline std::string Shell(const std::string& sql) {
  const std::string file = handset::HostPath(stores::kDatabasePath).string();
  const std::string command = std::string(QV_SQLITE_SHELL) + " '" + file + "' \"" + sql + "\" 2>&1";
  FILE* const pipe = popen(command.c_str(), "r");
  std::string output;
  std::array<char, 256> part;
  while (std::fgets(part.data(), part.size(), pipe) != nullptr) output += part.data();
  EXPECT_EQ(pclose(pipe), 0) << output;
  return output;
}

#endif  // QV_TESTS_STORES_SHELL_H
