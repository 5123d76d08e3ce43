// SHA-256 of files, by the system's own sha256sum: so a person can check a backup without us.
#ifndef QV_TOOLS_QVDESK_DIGEST_H
#define QV_TOOLS_QVDESK_DIGEST_H

#include <filesystem>
#include <string>
#include <vector>

namespace qvdesk {

/// 64 hex digits for each file, in their order. Throws std::runtime_error when one cannot be read.
std::vector<std::string> Sha256Of(const std::vector<std::filesystem::path>& files);

}  // namespace qvdesk

#endif  // QV_TOOLS_QVDESK_DIGEST_H
