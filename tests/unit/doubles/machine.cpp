#include "tests/unit/doubles/machine.h"

#include <sys/mman.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include <gtest/gtest.h>

#include "tests/unit/doubles/shared.h"

namespace doubles {

Shared &shared() {
  static void *const memory = mmap(nullptr, sizeof(Shared), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  if (memory == MAP_FAILED) std::abort();
  return *static_cast<Shared *>(memory);
}

Machine &Machine::instance() {
  static auto *the_machine = new Machine;
  return *the_machine;
}

void Machine::start() {
  *this = Machine{};
  forget_records();
  active = true;
}

void Machine::forget_records() {
  auto &common = shared();
  common.records = 0;
  common.calls = 0;
  common.executed = {};
  common.failed_in_child[0] = '\0';
  common.left_by_exit = false;
  common.blocks_left = 0;
}

void Machine::stop() {
  active = false;
}

void Machine::note(const std::string &call) {
  if (!in_child) {
    calls.push_back(call);
    return;
  }
  auto &common = shared();
  const uint32_t place = common.calls++;
  if (place >= Shared::kMostCalls) std::abort();
  std::snprintf(common.child_calls[place], Shared::kCallSize, "%s", call.c_str());
}

const Failure *Machine::enter(const std::string &call) {
  const Failure *at_this_step = step(call);
  note(call);
  if (at_this_step != nullptr) return at_this_step;
  for (auto &failure : failures) {
    const bool fits = call == failure.call || call.rfind(failure.call + " ", 0) == 0;
    if (fits && (++failure.seen == failure.nth || failure.nth == 0)) return &failure;
  }
  return nullptr;
}

const Failure *Machine::step(const std::string &call) {
  meanwhile(call);
  if (++steps != fail_at) return nullptr;
  failed_call = call;
  if (in_child) std::snprintf(shared().failed_in_child, Shared::kCallSize, "%s", call.c_str());
  return &way;
}

void Machine::begin_child() {
  in_child = true;
  ++pid;
  steps = 0;
  fail_at = fail_in_child_at;
}

void Machine::add_trace(const TraceRecord &record) {
  auto &common = shared();
  const uint32_t place = common.records++;
  if (place >= Shared::kMostRecords) std::abort();
  common.trace[place] = record;
}

void Machine::own(void *block) {
  if (block == nullptr) return;
  if (owned == kMostBlocks) std::abort();
  owned_blocks[owned++] = block;
}

void Machine::disown(void *block) {
  auto *const end = owned_blocks + owned;
  auto *const place = std::find(owned_blocks, end, block);
  if (place == end) return;
  *place = owned_blocks[--owned];
  owned_blocks[owned] = nullptr;
}

Lines Machine::calls_of(const std::set<std::string> &verbs) const {
  Lines some;
  for (const auto &call : calls)
    if (verbs.contains(call.substr(0, call.find(' ')))) some.push_back(call);
  return some;
}

Lines Machine::child_calls() const {
  Lines lines;
  for (uint32_t i = 0; i < shared().calls; ++i) lines.emplace_back(shared().child_calls[i]);
  return lines;
}

std::vector<TraceRecord> Machine::trace_records(bool of_child) const {
  std::vector<TraceRecord> some;
  for (uint32_t i = 0; i < shared().records; ++i)
    if (shared().trace[i].in_child == of_child) some.push_back(shared().trace[i]);
  return some;
}

const Executed &Machine::executed() const {
  return shared().executed;
}

std::string Machine::failed_in_child() const {
  return shared().failed_in_child;
}

bool Machine::child_left_by_exit() const {
  return shared().left_by_exit;
}

uint32_t Machine::blocks_left_in_child() const {
  return shared().blocks_left;
}

Lines Machine::left_behind() const {
  Lines left;
  for (size_t id = 0; id < std::size(databases); ++id) {
    if (databases[id].locked) left.push_back("database " + std::to_string(id) + " locked");
    if (databases[id].open) left.push_back("database " + std::to_string(id) + " open");
  }
  for (const auto &[fd, descriptor] : descriptors) left.push_back("descriptor of " + descriptor.path);
  for (const auto &[file, stream] : streams) left.push_back("stream of " + stream->path);
  for (const auto &[path, text] : disk) left.push_back("file " + path);
  for (const auto &[child, state] : children) left.push_back("child " + std::to_string(child));
  if (owned != 0) left.push_back(std::to_string(owned) + " blocks of memory");
  return left;
}

}  // namespace doubles
