// What became of one play of many.
#pragma once

#include <chrono>
#include <filesystem>
#include <span>
#include <string>

#include "host/play/account.h"

namespace runner {

enum class Verdict { kPassed, kFailed, kUnreadable, kHung, kDied, kUnplayed };

// What a verdict is called, and the element of JUnit that says it; null for what passed.
struct VerdictRow {
  Verdict verdict;
  const char *word;
  const char *element;
};
const VerdictRow &row_of(Verdict verdict);

struct Result {
  std::string name;
  Verdict verdict = Verdict::kUnplayed;
  std::chrono::milliseconds time{0};
  std::string reason;                // in lines, the first one with the place; empty for what passed
  play::Account account;             // as far as it got
  std::filesystem::path transcript;  // empty: there is none
};

bool is_wrong(Verdict verdict);  // neither passed nor left unplayed

std::size_t count(std::span<const Result> results, Verdict verdict);

// Why it did not pass, in one line.
std::string headline_of(const Result &result);

}  // namespace runner
