// Opens the build of the agent that --library=FILE names and runs the behaviour tests against it.
#include <cstdio>
#include <cstring>
#include <exception>

#include "tests/support/agent_test.h"

int main(int argc, char** argv) {
  testing::InitGoogleMock(&argc, argv);
  constexpr char kOption[] = "--library=";
  if (argc != 2 || std::strncmp(argv[1], kOption, std::strlen(kOption)) != 0) {
    std::fprintf(stderr, "usage: %s --library=FILE: QV_RAPI.so, or QV_RAPI.dll as script/dist makes it\n", argv[0]);
    return 2;
  }
  try {
    qv_test::OpenAgent(argv[1] + std::strlen(kOption));
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
  }
  return RUN_ALL_TESTS();
}
