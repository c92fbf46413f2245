// What a sweep finds: of each fault a play that shows it, in a folder.
#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

#include "host/runner/pool.h"
#include "host/spbox/json.h"
#include "host/sweep/outcome.h"

namespace spbox {

class SweepFindings {
 public:
  // `pages` is for a page of each play; empty: none is wanted.
  SweepFindings(std::filesystem::path script, std::filesystem::path folder, std::filesystem::path pages)
      : script_(std::move(script)), folder_(std::move(folder)), pages_(std::move(pages)) {}

  // One play for all replays in which the same was otherwise, as it is called here, and that show the same fault. `name` is that of
  // the replay.
  void keep(const sweep::Fault &fault, const sweep::Outcome &outcome, const std::string &name,
            const std::string &otherwise);

  // Whether a play shows that fault already where the same was otherwise.
  bool has(const sweep::Fault &fault, const std::string &otherwise) const;

  // Each of the plays alone, with these options of `spbox play`.
  void play_again(const std::vector<std::string> &options, const runner::PoolRules &rules);

  // Prints them; nothing where there are none.
  void tell() const;
  Json json() const;

 private:
  struct Finding {
    std::string fault;  // "program ctlled exit 206: maintenance mode is on, ..."
    std::filesystem::path play;
    std::size_t lines;  // of it
    std::size_t replays = 1;
    enum class Alone { kUntried, kFails, kPasses } alone = Alone::kUntried;  // its play
    std::string unwritten = {}, text = {};  // why it is in no file, and what would stand there
  };

  static Finding::Alone alone_of(const runner::JobEnding &ending, const runner::PoolRules &rules,
                                 const Finding &finding);
  std::filesystem::path file_for(const std::string &name, const std::string &text) const;
  std::string page_of(const Finding &finding) const;

  std::filesystem::path script_, folder_, pages_;
  std::vector<Finding> findings_;
};

}  // namespace spbox
