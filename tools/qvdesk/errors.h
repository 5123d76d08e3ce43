// What can go wrong, as far as the exit status tells it apart.
#ifndef QV_TOOLS_QVDESK_ERRORS_H
#define QV_TOOLS_QVDESK_ERRORS_H

#include <stdexcept>

namespace qvdesk {

inline constexpr int kSuccess = 0;
inline constexpr int kFailure = 1;
inline constexpr int kUsage = 2;

/// The command itself was wrong: exit status kUsage. Any other exception means kFailure.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace qvdesk

#endif  // QV_TOOLS_QVDESK_ERRORS_H
