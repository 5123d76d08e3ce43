// The gate that every platform function passes: it shows the call to the observer, makes it fail when it is the one to
// fail, and lets no exception out to callers that are built without them.
#ifndef QV_HOST_HANDSET_FAULTS_H
#define QV_HOST_HANDSET_FAULTS_H

#include <cstdint>
#include <new>
#include <string_view>
#include <type_traits>

#include "host/handset/errors.h"
#include "host/handset/handset.h"

namespace handset {

inline constexpr coredll::BOOL kFalse = 0;
inline constexpr coredll::BOOL kTrue = 1;

/// The text of an argument; a null pointer counts as empty.
inline std::u16string_view View(const char16_t* text) {
  return text == nullptr ? std::u16string_view() : std::u16string_view(text);
}

/// Shows a call to the observer.
void Watch(const Call& call);

/// Shows a call to the observer and says whether it is to be carried out. A fault that cuts short halves `*cuttable`
/// (rounded up, so that what is not nothing stays more than nothing) where the call has one, and then lets it pass.
bool Passes(const Call& call, std::uint32_t* cuttable = nullptr);

/// Carries out one platform call: `failure` is its answer when a fault is due or the host is out of memory.
template <typename Body>
std::invoke_result_t<Body> PlatformCall(const Call& call, std::invoke_result_t<Body> failure, Body body,
                                        std::uint32_t* cuttable = nullptr) noexcept {
  try {
    return Passes(call, cuttable) ? body() : Fail(Error::kGeneralFailure, failure);
  } catch (const std::bad_alloc&) {
    return Fail(Error::kNotEnoughMemory, failure);
  }
}

void ResetFaults();

}  // namespace handset

#endif  // QV_HOST_HANDSET_FAULTS_H
