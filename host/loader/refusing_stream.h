// The caller's end of RAPI's stream mode: the agent answers by Write and Release, so whoever calls it implements these
// two and leaves the rest of COM's interface to this class.
#ifndef QV_HOST_LOADER_REFUSING_STREAM_H
#define QV_HOST_LOADER_REFUSING_STREAM_H

#include <cstdint>

#include "qv_rapi.h"

namespace loader {

/// Every method but Write and Release does nothing and answers what Refuse does; AddRef counts nothing.
class RefusingStream : public IRAPIStream {
 public:
  std::int32_t QV_STDCALL QueryInterface(const void*, void**) override { return Refuse("QueryInterface"); }
  std::uint32_t QV_STDCALL AddRef() override {
    Refuse("AddRef");
    return 1;
  }
  std::int32_t QV_STDCALL Read(void*, std::uint32_t, std::uint32_t*) override { return Refuse("Read"); }
  std::int32_t QV_STDCALL Seek(std::int64_t, std::uint32_t, std::uint64_t*) override { return Refuse("Seek"); }
  std::int32_t QV_STDCALL SetSize(std::uint64_t) override { return Refuse("SetSize"); }
  std::int32_t QV_STDCALL CopyTo(void*, std::uint64_t, std::uint64_t*, std::uint64_t*) override {
    return Refuse("CopyTo");
  }
  std::int32_t QV_STDCALL Commit(std::uint32_t) override { return Refuse("Commit"); }
  std::int32_t QV_STDCALL Revert() override { return Refuse("Revert"); }
  std::int32_t QV_STDCALL LockRegion(std::uint64_t, std::uint64_t, std::uint32_t) override {
    return Refuse("LockRegion");
  }
  std::int32_t QV_STDCALL UnlockRegion(std::uint64_t, std::uint64_t, std::uint32_t) override {
    return Refuse("UnlockRegion");
  }
  std::int32_t QV_STDCALL Stat(void*, std::uint32_t) override { return Refuse("Stat"); }
  std::int32_t QV_STDCALL Clone(void**) override { return Refuse("Clone"); }
  std::int32_t QV_STDCALL SetRapiStat(std::uint32_t, std::uint32_t) override { return Refuse("SetRapiStat"); }
  std::int32_t QV_STDCALL GetRapiStat(std::uint32_t, std::uint32_t*) override { return Refuse("GetRapiStat"); }

 protected:
  ~RefusingStream() = default;

 private:
  /// What a call of the method answers: COM's E_NOTIMPL, unless the caller wants to know of it.
  virtual std::int32_t Refuse(const char* /*method*/) { return static_cast<std::int32_t>(0x80004001); }
};

}  // namespace loader

#endif  // QV_HOST_LOADER_REFUSING_STREAM_H
