// What a C++ runtime would bring into the handset library: the start-up routine. There is no exit: the agent has no
// static object with a destructor, and one would not link.
#include <cstdint>

namespace {

using Constructor = void (*)();

constexpr std::uint32_t kProcessAttach = 1;

/// Made by the linker: a word without meaning, the constructors of static objects, a null.
extern "C" const Constructor static_constructors[] __asm__("___CTOR_LIST__");

}  // namespace

/// Called by the system when it loads and unloads the library. A library that answers 0 is not loaded.
extern "C" int AgentStartUp(void* /*instance*/, std::uint32_t reason, void* /*reserved*/) {
  if (reason == kProcessAttach) {
    for (const Constructor* construct = static_constructors + 1; *construct != nullptr; ++construct) (*construct)();
  }
  return 1;
}
