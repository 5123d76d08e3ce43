// What a C++ runtime would bring into the handset library: the start-up routine. The agent has no static object that
// needs constructing or destructing: Clang's build refuses one, and so does the link (x86.ld, armv4.ld).
#include <cstdint>

/// Called by the system when it loads and unloads the library. A library that answers 0 is not loaded.
extern "C" int AgentStartUp(void* /*instance*/, std::uint32_t /*reason*/, void* /*reserved*/) {
  return 1;
}
