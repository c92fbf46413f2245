// A recording that no process has made: of any machine, record by record.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <utility>

#include "include/lmainte_record.h"

struct MadeRecord {
  std::uint32_t kind = 0;
  std::int32_t result = 0;
  std::uint32_t first = 0, second = 0, third = 0;
  std::string text = {}, content = {};
  std::uint32_t pid = 100;
};

class MadeRecording {
 public:
  std::string bytes;

  static std::string word(std::uint32_t value, bool is_big_endian = true) {
    std::string text(4, '\0');
    for (unsigned i = 0; i < 4; ++i) text[is_big_endian ? 3 - i : i] = static_cast<char>(value >> 8 * i);
    return text;
  }

  // A process of a machine: `order` 1 is big-endian.
  void begin(std::uint32_t order = 1, std::uint32_t model = 6, std::uint32_t version = 1, std::uint32_t of_long = 4) {
    add({.kind = LMAINTE_RECORD_PROCESS,
         .second = model,
         .text = "caller",
         .content = machine(order, version, of_long)});
  }
  // A child that the first process forks.
  void begin_child(std::uint32_t pid) {
    add({.kind = LMAINTE_RECORD_PROCESS,
         .first = MadeRecord().pid,
         .third = LMAINTE_RECORD_IS_CHILD,
         .content = machine(1, 1, 4),
         .pid = pid});
  }

  void add(const MadeRecord &record) {
    std::string rest =
        word(record.kind) + word(record.pid) + word(numbers_[record.pid]++) + word(0) + word(now_ += 1000);
    rest += word(0) + word(10) + word(static_cast<std::uint32_t>(record.result));
    rest += word(record.first) + word(record.second) + word(record.third);
    rest += word(static_cast<std::uint32_t>(record.text.size()));
    rest += word(static_cast<std::uint32_t>(record.content.size())) + record.text + record.content;
    rest.resize((rest.size() + 3) / 4 * 4);
    bytes += word(LMAINTE_RECORD_MARK) + word(static_cast<std::uint32_t>(rest.size() + 12)) + word(sum(rest)) + rest;
  }

 private:
  static std::uint32_t sum(const std::string &text) {
    std::uint32_t sum = 2166136261U;
    for (const char byte : text) sum = (sum ^ static_cast<std::uint8_t>(byte)) * 16777619U;
    return sum;
  }

  static std::string machine(std::uint32_t order, std::uint32_t version, std::uint32_t of_long) {
    return word(version) + word(order) + word(of_long) + word(20) + word(0);
  }

  std::map<std::uint32_t, std::uint32_t> numbers_;  // of the next record of each process
  std::uint32_t now_ = 0;
};
