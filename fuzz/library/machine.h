// The library on the doubles of the unit tests, and the laws that hold after every call of it.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "fuzz/target.h"
#include "tests/unit/doubles/library_test.h"
#include "tests/unit/doubles/machine.h"

namespace fuzz {

using doubles::machine;

// Makes a new machine, calls `body`, and requires that the trace is in order, that no law of a double is broken, and that
// nothing is left behind: no session, lock, memory, file, descriptor or child.
void on_machine(const std::function<void()> &body);

// Requires that the trace is in order, and forgets it: there is room for some thousand records.
void check_trace();

// Whether the library has recorded an error since `from`, a count of records.
std::size_t records_so_far();
bool error_recorded_since(std::size_t from);

// Calls, and requires that the result is one of these, and that a failure left an error in the trace.
std::int32_t judged(const std::string &name, std::initializer_list<std::int32_t> results,
                    const std::function<std::int32_t()> &call);

// The marker file, time files and general records of a model by its code, with which its data can be read. 0: none.
void put_model(std::uint32_t model);

// The library looks for its model once in a process.
template <std::uint32_t Model>
void run_location(Input input);
void run_readers(Input input);
void run_lists(Input input);
void run_menus(Input input);
void run_exec_line(Input input);
void run_swap_list(Input input);

}  // namespace fuzz
