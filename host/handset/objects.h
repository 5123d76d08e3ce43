// The table of kernel objects: what a HANDLE stands for. Handles are never given out twice, so that one used after it
// was closed is noticed instead of meaning another object.
#ifndef QV_HOST_HANDSET_OBJECTS_H
#define QV_HOST_HANDSET_OBJECTS_H

#include <algorithm>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>

#include "host/handset/errors.h"
#include "platform/coredll.h"

namespace handset {

/// An object that is open; its destructor closes it.
class Object {
 public:
  explicit Object(std::u16string_view name) : name_(name) {}
  Object(const Object&) = delete;
  Object& operator=(const Object&) = delete;
  virtual ~Object() = default;

  /// What it was opened by.
  std::u16string_view Name() const { return name_; }

 private:
  std::u16string name_;
};

using ObjectTable = std::unordered_map<std::uintptr_t, std::unique_ptr<Object>>;
const ObjectTable& Objects();

coredll::HANDLE AddObject(std::unique_ptr<Object> object);
/// Null for a handle that is not open.
Object* FindObject(coredll::HANDLE handle);
void CloseAllObjects();

/// What an open handle was opened by; empty for one that is not open.
inline std::u16string_view ObjectName(coredll::HANDLE handle) {
  const Object* object = FindObject(handle);
  return object == nullptr ? std::u16string_view() : object->Name();
}

/// The object of this kind, or null with the last error set.
template <typename Kind>
Kind* ObjectOf(coredll::HANDLE handle) {
  auto* object = dynamic_cast<Kind*>(FindObject(handle));
  if (object == nullptr) SetLastError(Error::kInvalidHandle);
  return object;
}

template <typename Kind>
unsigned CountObjects() {
  const auto is_kind = [](const auto& entry) { return dynamic_cast<const Kind*>(entry.second.get()) != nullptr; };
  return static_cast<unsigned>(std::count_if(Objects().begin(), Objects().end(), is_kind));
}

}  // namespace handset

#endif  // QV_HOST_HANDSET_OBJECTS_H
