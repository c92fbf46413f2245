#include "host/recorder/deed.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <csignal>
#include <sstream>
#include <system_error>

#include "host/box/box_error.h"
#include "host/box/own_files.h"
#include "host/script/script.h"

namespace recorder {
namespace {

// Not seen by a command in the box.
std::string pipe_of(const box::Place &place) {
  return (place.root() / "mgb/lib/recorder").string();
}

// A line tells "PROCESS WHAT TEXT". A text that is long comes in parts: what is written at once is never torn.
constexpr char kPart = '+', kBegins = 'b', kDone = 'd', kFailed = 'f';
constexpr std::size_t kLongestPart = 3000;
static_assert(kLongestPart + 64 < PIPE_BUF);

bool is_pipe(int fd) {
  struct stat status {};
  return fstat(fd, &status) == 0 && S_ISFIFO(status.st_mode);
}

play::Words words_in(const std::string &line) {
  script::Reader reader(line, "", {.has_quotes = true, .has_semicolons = false});
  const auto statement = reader.next();
  return statement ? statement->words : play::Words{};
}

}  // namespace

Deed::Deed(const box::Place &place, const play::Words &step) {
  if (step.empty()) return;
  pipe_ = base::Descriptor(open(pipe_of(place).c_str(), O_WRONLY | box::kOwnFile));
  if (!is_pipe(pipe_.get())) pipe_.reset();
  if (pipe_.get() < 0) return;
  std::string text = script::as_line(step);
  for (; text.size() > kLongestPart; text.erase(0, kLongestPart)) tell(kPart, text.substr(0, kLongestPart));
  tell(kBegins, text);
}

Deed::~Deed() {
  tell(is_done_ ? kDone : kFailed, "");
}

void Deed::was_done() {
  is_done_ = true;
}

// A recorder that does not read keeps nobody from their work.
void Deed::tell(char what, const std::string &text) const {
  constexpr int kPatience = 1000;  // milliseconds
  if (pipe_.get() < 0) return;
  const std::string line = std::to_string(getpid()) + " " + what + " " + text + "\n";
  struct sigaction ignore = {}, before = {};
  ignore.sa_handler = SIG_IGN;
  sigaction(SIGPIPE, &ignore, &before);
  pollfd room{pipe_.get(), POLLOUT, 0};
  if (write(pipe_.get(), line.data(), line.size()) < 0 && errno == EAGAIN && poll(&room, 1, kPatience) > 0) {
    [[maybe_unused]] const auto written = write(pipe_.get(), line.data(), line.size());
  }
  sigaction(SIGPIPE, &before, nullptr);
}

// One that was killed has left its pipe, which is as good as a new one. It is open for writing, too: so it has no end where
// nobody tells anything.
Deeds::Deeds(const box::Place &place) : path_(pipe_of(place)) {
  const auto fail = [&](int error) {
    throw std::system_error(error, std::generic_category(),
                            path_ + " cannot be made (a box is for the user who made it)");
  };
  if (mkfifo(path_.c_str(), 0600) != 0 && errno != EEXIST) fail(errno);
  pipe_ = base::Descriptor(open(path_.c_str(), O_RDWR | box::kOwnFile));
  if (pipe_.get() < 0 && errno != ELOOP) fail(errno);
  if (pipe_.get() < 0 || !is_pipe(pipe_.get())) throw box::BoxError(path_ + " is no pipe of a box. Remove it.");
  if (flock(pipe_.get(), LOCK_EX | LOCK_NB) != 0) {
    throw box::BoxError("a command is recorded in " + place.root().string() +
                        " already. Wait until it has ended, and try again.");
  }
  std::array<char, PIPE_BUF> old{};
  while (read(pipe_.get(), old.data(), old.size()) > 0) continue;
}

Deeds::~Deeds() {
  if (pipe_.get() >= 0) unlink(path_.c_str());
}

std::vector<ToldDeed> Deeds::take() {
  std::array<char, PIPE_BUF> bytes{};
  for (ssize_t size = 0; (size = read(pipe_.get(), bytes.data(), bytes.size())) > 0;) {
    unread_.append(bytes.data(), static_cast<std::size_t>(size));
  }
  std::vector<ToldDeed> deeds;
  for (auto end = unread_.find('\n'); end != std::string::npos; end = unread_.find('\n')) {
    if (auto deed = deed_in(unread_.substr(0, end))) deeds.push_back(std::move(*deed));
    unread_.erase(0, end + 1);
  }
  return deeds;
}

// Nothing where it goes on, and where it makes no sense.
std::optional<ToldDeed> Deeds::deed_in(const std::string &line) {
  std::istringstream words(line);
  pid_t who = 0;
  char what = 0;
  if (!(words >> who >> what)) return {};
  words.get();
  std::string text;
  std::getline(words, text);
  auto parts = std::ranges::find(begun_, who, &std::pair<pid_t, std::string>::first);
  if (parts == begun_.end()) parts = begun_.insert(begun_.end(), {who, ""});
  parts->second += text;
  if (what == kPart) return {};
  text = parts->second;
  begun_.erase(parts);
  if (what == kDone) return ToldDeed{who, ToldDeed::What::kDone};
  if (what == kFailed) return ToldDeed{who, ToldDeed::What::kFailed};
  try {
    return ToldDeed{who, ToldDeed::What::kBegins, words_in(text)};
  } catch (const script::Error &) {
    return {};
  }
}

}  // namespace recorder
