#include "host/box/record_ring.h"

namespace box {

void create_ring_file(const std::filesystem::path &file, const char *name, const RingHead &head, std::size_t size) {
  // A new file takes the old one's place, because a process may still have the old ring mapped. Its room on the disk is
  // taken at once: a full disk must not kill a process that writes a record.
  const std::filesystem::path fresh = file.string() + ".new";
  const int fd = open(fresh.c_str(), O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
  if (fd < 0) throw ring_failure(file, name, "make it", std::strerror(errno));
  int error = posix_fallocate(fd, 0, static_cast<off_t>(size));
  if (error == 0) {
    const ssize_t written = pwrite(fd, &head, sizeof head, 0);
    if (written != static_cast<ssize_t>(sizeof head)) error = written < 0 ? errno : ENOSPC;
  }
  close(fd);
  if (error == 0 && rename(fresh.c_str(), file.c_str()) != 0) error = errno;
  if (error != 0) {
    unlink(fresh.c_str());
    throw ring_failure(file, name, "make it", std::strerror(error));
  }
}

bool ring_has_room(int fd, const struct stat &status) noexcept {
  constexpr off_t kBlock = 512;
  return status.st_blocks * kBlock >= status.st_size || fallocate(fd, 0, 0, status.st_size) == 0 || errno == EOPNOTSUPP;
}

RingWords ring_words_of(int fd, std::size_t from, std::size_t count) {
  RingWords read;
  std::vector<std::uint64_t> &words = read.words;
  words.resize(count);
  const std::size_t size = count * sizeof(std::uint64_t);
  std::size_t done = 0;
  while (done < size) {
    const ssize_t part = pread(fd, reinterpret_cast<char *>(words.data()) + done, size - done,
                               static_cast<off_t>(from * sizeof(std::uint64_t) + done));
    if (part < 0 && errno == EINTR) continue;
    if (part < 0) read.error = errno;
    if (part <= 0) break;
    done += static_cast<std::size_t>(part);
  }
  words.resize(done / sizeof(std::uint64_t));
  return read;
}

std::runtime_error ring_failure(const std::filesystem::path &file, const char *name, const char *what,
                                const std::string &reason) {
  return std::runtime_error(std::string(name) + " " + file.string() + ": cannot " + what + ": " + reason);
}

}  // namespace box
