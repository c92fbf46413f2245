// What the box reads from others: scripts, dumps, files, messages, the bytes of a terminal, command lines.
#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "fuzz/target.h"
#include "host/box/contents.h"
#include "host/box/database.h"
#include "host/box/place.h"

namespace fuzz {

void run_dump(Input input);
void run_play(Input input);
void run_technician(Input input);
void run_trace_ring(Input input);
void run_event_log(Input input);
void run_data_pages(Input input);
void run_daemon(Input input);
void run_screen(Input input);
void run_program(Input input);
void run_recording(Input input);

// A folder that is gone with the process.
const std::filesystem::path &scratch();

void write_file(const std::filesystem::path &file, const std::string &text);

// Calls, and requires that it ends in no other way than these: by itself, or by throwing `Refusal`. Its text, or nothing.
template <typename Refusal, typename Call>
std::string refusal_of(const std::string &what, Call call) {
  std::string said;
  try {
    call();
  } catch (const Refusal &refusal) {
    said = refusal.what();
    require(!said.empty(), what + " that is refused says why");
  } catch (const std::exception &other) {
    require(false, what + " is refused in a way of its own, and not by: " + other.what());
  }
  return said;
}

// A box of a model, made once; what is in it; and its databases, which stay open, as opening them takes long.
struct KeptBox {
  box::Place place;
  box::Contents contents;
  std::vector<std::unique_ptr<box::Database>> databases;
};
KeptBox &box_of(std::uint32_t model);

bool same(const box::Contents &one, const box::Contents &other);

}  // namespace fuzz
