// The options of the verbs that play many plays: how many at the same time, and which share of them.
#pragma once

#include <cstddef>
#include <string>

#include "host/runner/selection.h"
#include "host/spbox/verb.h"

namespace spbox {

class PoolOptions {
 public:
  PoolOptions();

  Word width_word();
  Word shard_word(const std::string &help);
  void check();  // throws UsageError

  std::size_t width() const { return width_; }
  const runner::Shard &shard() const { return shard_; }  // of words that were checked

 private:
  std::size_t width_;
  std::string share_;
  runner::Shard shard_;
};

}  // namespace spbox
