// The platform that programs on another machine have, for a test: its server runs beside the test, in the test's box.
#pragma once

#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <stdexcept>
#include <string>

#include "host/base/pipe.h"
#include "host/box/place.h"
#include "host/wire/message.h"

class RemotePlatform {
 public:
  explicit RemotePlatform(const box::Place &place) {
    base::Pipe pipe;
    std::filesystem::create_directories(place.root() / "mgb/lib");
    std::filesystem::create_symlink(place.daemons() / "platform", place.root() / wire::kSocketLink);
    const std::string folder = place.root(), fd = std::to_string(pipe.in.get());
    const pid_t child = fork();
    if (child == 0) {
      fcntl(pipe.in.get(), F_SETFD, 0);
      execl(PLATFORM_SERVER, "platform_server", folder.c_str(), "platform", fd.c_str(), nullptr);
      _exit(127);
    }
    server_ = child;
    pipe.in.reset();
    char byte = 0;
    while (byte != '\n') {
      if (read(pipe.out.get(), &byte, 1) != 1) throw std::runtime_error("the platform's server does not run");
    }
    says_ = std::move(pipe.out);
  }
  ~RemotePlatform() {
    if (server_ > 0) end();
  }
  RemotePlatform(const RemotePlatform &) = delete;
  RemotePlatform &operator=(const RemotePlatform &) = delete;

  pid_t pid() const { return server_; }

  // What it says at its end.
  std::string end(int signal = SIGTERM) {
    kill(server_, signal);
    waitpid(server_, nullptr, 0);
    kill(-server_, SIGKILL);  // who stands in for this process
    server_ = 0;
    std::string text;
    char byte = 0;
    while (read(says_.get(), &byte, 1) == 1) text += byte;
    return text;
  }

 private:
  pid_t server_ = 0;
  base::Descriptor says_;
};
