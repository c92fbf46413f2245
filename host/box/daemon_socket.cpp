#include "host/box/daemon_socket.h"

#include <fcntl.h>
#include <sys/un.h>

#include <cerrno>
#include <cstdio>

#include "host/base/descriptor.h"

namespace box {
namespace {

constexpr std::size_t kNameRoom = 64;

bool is_name(std::string_view name) {
  return !name.empty() && name.size() < kNameRoom && name.front() != '.' &&
         name.find_first_of(std::string_view("/\0", 2)) == std::string_view::npos;
}

// An address has room for a hundred characters; the folder of a box may have a longer name, its descriptor has not.
sockaddr_un address_in(int folder, std::string_view name) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::snprintf(address.sun_path, sizeof address.sun_path, "/proc/self/fd/%d/%.*s", folder,
                static_cast<int>(name.size()), name.data());
  return address;
}

}  // namespace

int daemon_socket(const std::filesystem::path &folder, std::string_view name, SocketStep step) noexcept {
  if (!is_name(name)) {
    errno = EINVAL;
    return -1;
  }
  const base::Descriptor where(open(folder.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
  if (where.get() < 0) return -1;
  const sockaddr_un address = address_in(where.get(), name);
  base::Descriptor channel(socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
  if (channel.get() < 0) return -1;
  if (step(channel.get(), reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0) return -1;
  return channel.release();
}

bool daemon_listens(const std::filesystem::path &folder, std::string_view name) noexcept {
  const base::Descriptor channel(daemon_socket(folder, name, connect));
  return channel.get() >= 0 || errno == EAGAIN;  // too many others wait for it
}

}  // namespace box
