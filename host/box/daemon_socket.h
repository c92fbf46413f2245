// The sockets of the box's daemons: each listens under its name in the box's folder for them.
#pragma once

#include <sys/socket.h>

#include <filesystem>
#include <string_view>

namespace box {

// bind for the daemon, connect for who talks to it.
using SocketStep = int (*)(int, const sockaddr *, socklen_t);

// A socket after one step on the address `name` in `folder`: of whole messages, never waiting, closed by execve. Returns its
// descriptor, or -1 with errno set: EINVAL where the name is no file's.
int daemon_socket(const std::filesystem::path &folder, std::string_view name, SocketStep step) noexcept;

// Whether a daemon listens under this name.
bool daemon_listens(const std::filesystem::path &folder, std::string_view name) noexcept;

}  // namespace box
