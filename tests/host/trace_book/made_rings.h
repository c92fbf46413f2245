// What the two rings of a box hold, made up: one record after the other, a microsecond apart.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "host/box/call_ring.h"
#include "host/box/trace_ring.h"

struct MadeRings {
  static constexpr pid_t kCommand = 100, kChild = 101;

  void record(std::uint32_t event, const std::vector<std::uint32_t> &values = {}, pid_t pid = kCommand) {
    box::TraceEntry entry{};
    entry.number = records.size();
    entry.time_ns = now += 1000;
    entry.level = 256;
    entry.event = event;
    entry.words[0] = static_cast<std::uint32_t>(pid);
    entry.word_count = 2;
    for (const std::uint32_t value : values) entry.words.at(entry.word_count++) = value;
    records.push_back(entry);
  }
  box::CallEntry &call(box::CallKind kind, const std::string &text, std::uint32_t first = 0, std::int32_t result = 0,
                       pid_t pid = kCommand) {
    box::CallEntry entry;
    entry.number = calls.size();
    entry.kind = kind;
    entry.pid = pid;
    entry.time_ns = now += 1000;
    entry.position = records.size();
    entry.result = result;
    entry.first = first;
    entry.whole_text = text;
    entry.text_size = text.size();
    calls.push_back(entry);
    return calls.back();
  }

  std::int64_t now = 0;
  std::vector<box::TraceEntry> records;
  std::vector<box::CallEntry> calls;
};
