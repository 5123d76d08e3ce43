// A directory of the handset is one of the host, so that fetching is copying.
#include "tools/qvdesk/exchange_folder.h"

#include <fmt/format.h>

#include <system_error>

#include "host/handset/handset.h"
#include "tools/qvdesk/text.h"

namespace qvdesk {

namespace fs = std::filesystem;

namespace {

constexpr char kOnHandset[] = "\\sync\\whole";

}  // namespace

std::string PassageHelp() {
  return fmt::format(" It uses and empties {} on the phone.", kOnHandset);
}

ExchangeFolder::ExchangeFolder() : on_handset_(ToUtf16(kOnHandset)), on_host_(handset::HostPath(on_handset_)) {
  Empty();
}

ExchangeFolder::~ExchangeFolder() {
  std::error_code ignored;
  fs::remove_all(on_host_, ignored);
}

void ExchangeFolder::Empty() const {
  fs::remove_all(on_host_);
  fs::create_directories(on_host_);
}

void ExchangeFolder::FetchTo(const fs::path& folder) const {
  fs::create_directories(folder);
  for (const fs::directory_entry& entry : fs::directory_iterator(on_host_)) {
    if (entry.is_regular_file()) fs::copy_file(entry.path(), folder / entry.path().filename());
  }
}

void ExchangeFolder::Put(const BackupKind& kind, const fs::path& backup) const {
  for (const BackupFile& file : kind.files) {
    fs::copy_file(backup / kind.module / file.name, on_host_ / file.name, fs::copy_options::overwrite_existing);
  }
}

}  // namespace qvdesk
