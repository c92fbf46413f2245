// One procedure at a time: the procedure information tells who is at work. One that was killed is taken over.
#pragma once

#include <cstdint>

namespace lmainte::procedure {

// The file with the procedure information tells who is at work.
class Claim {
 public:
  Claim() = default;
  // Until what the last procedure left has been taken care of, the next one has to find the file as it is.
  ~Claim() { end(); }
  Claim(const Claim &) = delete;
  Claim &operator=(const Claim &) = delete;

  // Returns the outcome.
  int32_t take();

  // False where the file still tells of a procedure, and the operator was told.
  bool end();

  // True when the last procedure died on its way, and left things as they were.
  bool is_taken_over() const { return is_taken_over_; }
  // They are in order. Until then the claim stays, also behind this procedure: the next one takes over.
  void settle() { is_taken_over_ = false; }

 private:
  int32_t take(int32_t fd);

  bool is_held_ = false;
  bool is_taken_over_ = false;
};

}  // namespace lmainte::procedure
