// Handles and CloseHandle, which closes an object of any kind; the handset has no other call to close a search
// either.
#include "host/handset/objects.h"

#include "host/handset/faults.h"

namespace handset {
namespace {

ObjectTable objects;
std::uintptr_t last_handle = 0;

std::uintptr_t Key(coredll::HANDLE handle) {
  return reinterpret_cast<std::uintptr_t>(handle);
}

}  // namespace

const ObjectTable& Objects() {
  return objects;
}

coredll::HANDLE AddObject(std::unique_ptr<Object> object) {
  last_handle += 4;
  objects.emplace(last_handle, std::move(object));
  return reinterpret_cast<coredll::HANDLE>(last_handle);
}

Object* FindObject(coredll::HANDLE handle) {
  const auto found = objects.find(Key(handle));
  return found == objects.end() ? nullptr : found->second.get();
}

void CloseAllObjects() {
  objects.clear();
}

}  // namespace handset

coredll::BOOL coredll::CloseHandle(HANDLE object) {
  using namespace handset;
  return PlatformCall({"CloseHandle", ObjectName(object), 0}, kFalse, [&] {
    if (objects.erase(Key(object)) == 0) return Fail(Error::kInvalidHandle, kFalse);
    SetLastError(Error::kNone);  // As any call may do: who wants an error must ask before the next call.
    return kTrue;
  });
}
