// How a program of the emulated machine starts programs of that machine, itself here, in a box. With words, it tells how it was started.
#include <dlfcn.h>
#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

namespace fs = std::filesystem;

constexpr int kTold = 7, kNotStarted = 99;

const fs::path kSelf = fs::read_symlink("/proc/self/exe");
const std::string kPath = kSelf.string(), kName = kSelf.filename();

char tell[] = "tell", word[] = "one word", name[] = "called", variable[] = "SAID=environment",
     for_emulator[] = "QEMU_STRACE=1";
char *const words[] = {name, tell, word, nullptr};
char *const environment[] = {for_emulator, variable, nullptr};

// Those that are open stay behind an exec no longer.
void use_all_descriptors() {
  const rlimit few{64, 64};
  setrlimit(RLIMIT_NOFILE, &few);
  while (open("/dev/null", O_RDONLY | O_CLOEXEC) >= 0) {
  }
}

// A library that only a program of this machine can load.
std::string own_library() {
  Dl_info about{};
  dladdr(dlsym(RTLD_DEFAULT, "lcmn_scdb_put"), &about);
  return about.dli_fname;
}

// Of a program, its first bytes, at a path of its own.
std::string cut_at(std::size_t size) {
  std::string path = "/tmp/cut" + std::to_string(size);
  fs::copy(kSelf, path);
  fs::resize_file(path, size);
  return path;
}

int told(int argc, char **argv) {
  const char *said = std::getenv("SAID");
  for (int i = 0; i < argc; ++i) std::printf("%s, ", argv[i]);
  std::printf("%s, %s\n", said == nullptr ? "nothing" : said, fs::read_symlink("/proc/self/exe").c_str());
  return kTold;
}

struct Come {
  int status;
  std::string output;
};

// What comes of a child that starts the program: its exit status, and all that it writes.
Come come_of(const std::function<int()> &start) {
  std::array<int, 2> ends{};
  if (pipe(ends.data()) != 0) return {-1, "no pipe"};
  std::fflush(nullptr);
  const pid_t child = fork();
  if (child == 0) {
    dup2(ends[1], STDOUT_FILENO);
    dup2(ends[1], STDERR_FILENO);
    for (const int end : ends) close(end);
    const int result = start();
    std::printf("result %d, error %d", result, errno);
    std::fflush(nullptr);
    _exit(kNotStarted);
  }
  close(ends[1]);
  Come come{-1, {}};
  std::array<char, 512> part;
  for (ssize_t size = 0; (size = read(ends[0], part.data(), part.size())) > 0;)
    come.output.append(part.data(), static_cast<std::size_t>(size));
  close(ends[0]);
  int status = 0;
  waitpid(child, &status, 0);
  if (WIFEXITED(status)) come.status = WEXITSTATUS(status);
  return come;
}

int spawned(int error, pid_t process) {
  int status = 0;
  if (error != 0) return error;
  waitpid(process, &status, 0);
  _exit(WEXITSTATUS(status));
}

TEST(Starts, AProgramIsStartedByItsPathAndByItsNameInEachWay) {
  const std::string said = "called, tell, one word, environment, " + kPath + "\n";
  const std::string nothing = "called, tell, one word, nothing, " + kPath + "\n";
  const auto by = [](const std::string &first) { return first + ", tell, one word, nothing, " + kPath + "\n"; };
  const auto on_path = [](int (*call)(const char *, char *const *)) {
    setenv("PATH", kSelf.parent_path().c_str(), 1);
    return call(kName.c_str(), words);
  };
  const std::string script = "/tmp/script";
  std::ofstream(script) << "#!/bin/sh\n\"" << kPath << "\" tell \"$@\"\n";
  fs::permissions(script, fs::perms::owner_all);
  const struct {
    const char *way;
    std::function<int()> start;
    std::string output;
  } rows[] = {
      {"execve", [] { return execve(kPath.c_str(), words, environment); }, said},
      {"execve, of the working folder",
       [] {
         fs::current_path(kSelf.parent_path());
         return execve(kName.c_str(), words, environment);
       },
       said},
      {"execve of itself", [] { return execve("/proc/self/exe", words, environment); }, said},
      {"execve of itself, by its thread", [] { return execve("/proc/thread-self/exe", words, environment); }, said},
      {"execve, with a library for the program alone",
       [] {
         std::string library = "LD_PRELOAD=" + own_library();
         char *const more[] = {library.data(), variable, nullptr};
         return execve(kPath.c_str(), words, more);
       },
       said},
      {"a program of the workstation, with all descriptors in use",
       [] {
         use_all_descriptors();
         return execl("/usr/bin/env", "env", "-i", kPath.c_str(), tell, word, nullptr);
       },
       by(kPath)},
      {"a child of the workstation, with all descriptors in use",
       [] {
         pid_t process = 0;
         char env[] = "env", alone[] = "-i";
         std::string self = kPath;
         char *const line[] = {env, alone, self.data(), tell, word, nullptr};
         use_all_descriptors();
         return spawned(posix_spawnp(&process, "env", nullptr, nullptr, line, environ), process);
       },
       by(kPath)},
      {"execv", [] { return execv(kPath.c_str(), words); }, nothing},
      {"execl", [] { return execl(kPath.c_str(), name, tell, word, nullptr); }, nothing},
      {"execle", [] { return execle(kPath.c_str(), name, tell, word, nullptr, environment); }, said},
      {"execvp", [&] { return on_path(execvp); }, nothing},
      {"execvp, by a path", [] { return execvp(kPath.c_str(), words); }, nothing},
      {"execvpe",
       [] {
         setenv("PATH", ("/usr/bin::" + kSelf.parent_path().string()).c_str(), 1);
         return execvpe(kName.c_str(), words, environment);
       },
       said},
      {"execlp, of the working folder",
       [] {
         setenv("PATH", "/bin:", 1);
         fs::current_path(kSelf.parent_path());
         return execlp(kName.c_str(), name, tell, word, nullptr);
       },
       nothing},
      {"posix_spawn",
       [] {
         pid_t process = 0;
         return spawned(posix_spawn(&process, kPath.c_str(), nullptr, nullptr, words, environment), process);
       },
       said},
      {"posix_spawnp",
       [] {
         pid_t process = 0;
         setenv("PATH", kSelf.parent_path().c_str(), 1);
         return spawned(posix_spawnp(&process, kName.c_str(), nullptr, nullptr, words, environment), process);
       },
       said},
      // NOLINTNEXTLINE(cert-env33-c): it is what is looked at
      {"system", []() -> int { _exit(WEXITSTATUS(std::system(("'" + kPath + "' tell 'one word'").c_str()))); },
       by(kPath)},
      {"a script", [&] { return execl(script.c_str(), name, word, nullptr); }, by(kPath)},
      {"a program of the workstation",
       [] { return execl("/usr/bin/env", "env", "-i", kPath.c_str(), tell, word, nullptr); }, by(kPath)},
  };
  for (const auto &[way, start, output] : rows) {
    const Come come = come_of(start);
    EXPECT_EQ(come.status, kTold) << way;
    EXPECT_EQ(come.output, output) << way;
  }
}

TEST(Starts, WhatCannotBeStartedIsRefusedAsOnABoard) {
  fs::copy(kSelf, "/tmp/kept");
  fs::permissions("/tmp/kept", fs::perms::owner_read);
  ASSERT_EQ(mkfifo("/tmp/pipe", 0700), 0);
  ASSERT_EQ(chdir("/tmp"), 0);
  fs::copy(kSelf, "/tmp/here");
  const std::string cut_in_head = cut_at(30), cut_in_table = cut_at(60);
  const struct {
    const char *what;
    std::function<int()> start;
    int result, error;
  } rows[] = {
      {"a program that may not be run", [] { return execv("/tmp/kept", words); }, -1, EACCES},
      {"no file", [] { return execv("/tmp/none", words); }, -1, ENOENT},
      {"a pipe", [] { return execv("/tmp/pipe", words); }, -1, EACCES},
      {"a folder", [] { return execv("/tmp", words); }, -1, EACCES},
      {"a program whose head is cut", [&] { return execv(cut_in_head.c_str(), words); }, -1, ENOEXEC},
      {"a program whose table is cut", [&] { return execv(cut_in_table.c_str(), words); }, -1, ENOEXEC},
      {"a program, with all descriptors in use",
       [] {
         use_all_descriptors();
         return execvp(kPath.c_str(), words);
       },
       -1, EMFILE},
      {"a name that the PATH has not", [] { return execvp("here", words); }, -1, ENOENT},
      {"a child that may not be run",
       [] {
         pid_t process = 0;
         errno = 0;
         return posix_spawn(&process, "/tmp/kept", nullptr, nullptr, words, environment);
       },
       EACCES, 0},
  };
  for (const auto &[what, start, result, error] : rows) {
    const Come come = come_of(start);
    EXPECT_EQ(come.status, kNotStarted) << what;
    EXPECT_EQ(come.output, "result " + std::to_string(result) + ", error " + std::to_string(error)) << what;
  }
}

}  // namespace

int main(int argc, char **argv) {
  if (argc > 1 && std::strcmp(argv[1], tell) == 0) return told(argc, argv);
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
