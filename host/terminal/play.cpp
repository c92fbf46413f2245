// Plays a script on a box: play --box DIR --spbox PATH SCRIPT

#include <cstring>
#include <exception>
#include <fstream>
#include <iostream>

#include "host/terminal/player.h"

namespace {

constexpr int kUsage = 2;

int usage() {
  std::cerr << "usage: play --box DIR --spbox PATH SCRIPT\n"
               "Plays the operator and the technician of SCRIPT on the box in DIR and prints what they saw.\n";
  return kUsage;
}

}  // namespace

int main(int argc, char **argv) {
  terminal::Stage stage;
  std::string path;
  for (int i = 1; i < argc; ++i) {
    const bool box = std::strcmp(argv[i], "--box") == 0;
    const bool spbox = std::strcmp(argv[i], "--spbox") == 0;
    if ((box || spbox) && i + 1 < argc) {
      (box ? stage.box : stage.spbox) = argv[++i];
    } else if (argv[i][0] != '-' && path.empty()) {
      path = argv[i];
    } else {
      return usage();
    }
  }
  if (stage.box.empty() || stage.spbox.empty() || path.empty()) return usage();

  std::ifstream script(path);
  if (!script) {
    std::cerr << "play: " << path << ": " << std::strerror(errno) << ". Name a script that can be read.\n";
    return 1;
  }
  try {
    terminal::Player(stage, std::cout).play(script, path);
  } catch (const std::exception &failure) {
    std::cerr << failure.what() << '\n';
    return 1;
  }
  return 0;
}
