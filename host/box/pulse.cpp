#include "host/box/pulse.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <utility>

#include "host/base/descriptor.h"
#include "host/box/own_files.h"
#include "host/box/seal.h"
#include "host/box/trace_ring.h"

namespace box {
namespace {

namespace fs = std::filesystem;

// Bytes of a file that change with it.
struct Telltale {
  off_t at;
  std::size_t size;
};

std::string times_of(const struct stat &status) {
  return std::to_string(status.st_dev) + " " + std::to_string(status.st_ino) + " " + std::to_string(status.st_size) +
         " " + std::to_string(status.st_mtim.tv_sec) + "." + std::to_string(status.st_mtim.tv_nsec) + " ";
}

std::string state_of(const fs::path &path, Telltale telltale = {0, 0}) {
  const base::Descriptor file(open(path.c_str(), O_RDONLY | kOwnFile));
  struct stat status {};
  if (file.get() < 0 || fstat(file.get(), &status) != 0) return "none";
  std::string bytes(telltale.size, '\0');
  const ssize_t size = pread(file.get(), bytes.data(), bytes.size(), telltale.at);
  bytes.resize(size < 0 ? 0 : static_cast<std::size_t>(size));
  return times_of(status) + bytes;
}

bool becomes(std::string &known, std::string now) {
  return std::exchange(known, std::move(now)) != known;
}

}  // namespace

Pulse::Beat Pulse::feel() {
  constexpr Telltale kSave{kLastSaveAt, sizeof(LastSave)}, kCount{TraceRing::kCountAt, sizeof(std::uint64_t)};
  // Deviations stand at the front of the file of points, and what counts behind them.
  constexpr Telltale kDeviations{0, 1024};
  Beat beat;
  std::string server = state_of(place_.databases() / "data.mdb", kSave) + state_of(place_.points(), kDeviations) +
                       state_of(place_.tmp());
  beat.server = becomes(server_, std::move(server));
  beat.trace = becomes(trace_, state_of(place_.trace(), kCount) + state_of(place_.calls(), kCount));
  beat.log = becomes(log_, state_of(place_.events()));
  beat.people = becomes(people_, state_of(place_.root() / "mgb/lib"));
  return beat;
}

}  // namespace box
