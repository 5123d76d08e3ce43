// The browser's settings: the store's structure and the file's record have the same form.
#include "modules/settings/browser_settings.h"

#include "platform/file.h"
#include "platform/memory.h"
#include "sync/exchange_table.h"
#include "sync/module_call.h"

namespace qv::settings {
namespace {

using BackUp = void(std::uint8_t* structure);
using Restore = void(const std::uint8_t* structure);

constexpr Result kFailed = Result::kStoreNotLoaded;

/// Structure and record, which are too large to be on the handset's stacks together.
struct Browser {
  alignas(4) std::uint8_t structure[kBrowserSize];
  std::uint8_t record[kBrowserSize];
};

}  // namespace

Result ExportBrowser(const void* directory) {
  ModuleCall call(kBrowserModule);
  List<Browser> browser;
  if (call.Begin(directory) != Result::kOk) return kFailed;
  auto* const back_up = call.store().Resolve<BackUp>(kBackUpBrowser);
  if (back_up == nullptr || !browser.Resize(1)) return kFailed;
  File file = File::CreateAlways(call.PathOf(kBrowserTables[0].exchange_file));
  if (!file.IsOpen()) return kFailed;
  browser.Zero();
  back_up(browser[0].structure);
  layout::ToExchange(kBrowserLayout, browser[0].structure, browser[0].record);
  return file.Write(browser[0].record, kBrowserSize) ? Result::kOk : kFailed;
}

Result RecoverBrowser(const void* directory) {
  constexpr Result kTold = kFailed;
  ModuleCall call(kBrowserModule);
  List<Browser> browser;
  if (call.Begin(directory) != Result::kOk) return kTold;
  const char16_t* const name = kBrowserTables[0].exchange_file;
  File file = File::OpenExisting(call.PathOf(name));
  if (!file.IsOpen() || !browser.Resize(1)) return kTold;
  bool more = false;
  if (ReadRecord(file, browser[0].record, kBrowserSize, kBrowserSize, more) != Result::kOk) return kTold;
  auto* const restore = call.store().Resolve<Restore>(kRestoreBrowser);
  if (restore == nullptr) return kTold;
  layout::ToStore(kBrowserLayout, browser[0].record, browser[0].structure);
  restore(browser[0].structure);
  file.Close();
  call.Delete(name);
  return kTold;
}

}  // namespace qv::settings
