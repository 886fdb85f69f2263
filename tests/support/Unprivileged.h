// Running part of a test as an ordinary user, where permissions are enforced (root ignores them).
#pragma once

#include <expected>
#include <functional>
#include <string>

namespace orbisk::test {

/// The user and group "nobody" that unprivileged children become.
inline constexpr unsigned nobodyId = 65534;

/// Runs body in a forked child that dropped every group and became nobody (uid and gid 65534), and
/// returns the text body returned. The error says why it could not run: not root, or a failed
/// fork/setuid, or a child that died. Use GTEST_SKIP with it when not root. Only async-signal-safe
/// habits are needed in body in theory; in practice it may use the core freely, but no gtest macros
/// (the child's failures would be lost): return what the parent should check instead.
std::expected<std::string, std::string> runUnprivileged(const std::function<std::string()>& body);

} // namespace orbisk::test
