#include "host/trace_book/event_names.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <set>
#include <string>

#include "host/trace_book/pages.h"

namespace {

using Names = std::vector<std::string_view>;

struct NameRow {
  const char *says;
  const char *function;
  const char *event;
  std::uint32_t code;
};

void PrintTo(const NameRow &row, std::ostream *out) {
  *out << row.says;
}

class EventName : public ::testing::TestWithParam<NameRow> {};

constexpr NameRow kNames[] = {
    {"the first point of a block is the entry", "lmainte_control_mainte", "entry", 0x110C02F0},
    {"the second point of a block is the exit", "lmainte_control_mainte", "exit", 0x110C02F1},
    {"a point counts from 2", "lmainte_control_mainte", "command", 0x110C02F2},
    {"an error of the plain space adds 0x1000", "lmainte_control_mainte", "refused", 0x110C12F3},
    {"a detach that the program refused", "lmainte_detach_fru", "refused", 0x110C1323},
    {"an error of the second space adds 0x3000", "lmainte_scdb_open", "client-refused", 0x110CB013},
    {"the second function of a block begins at point 8", "lmainte_signal_mask", "entry", 0x110C0398},
    {"its errors count from there", "lmainte_signal_mask", "no-table", 0x110C1399},
    {"the second function of a block of the second space", "lmainte_get_emgb_data", "not-read", 0x110CB22A},
    {"an internal step stands behind its function", "lmainte_exec:stop-child", "signal-sent", 0x110C0693},
    {"points may leave numbers out", "lmainte_dot_start", "signal-came", 0x110C0379},
};

INSTANTIATE_TEST_SUITE_P(Is, EventName, ::testing::ValuesIn(kNames));

TEST_P(EventName, TheNumberThatTheLibraryWrites) {
  const NameRow &row = GetParam();
  EXPECT_EQ(trace_book::event_named(row.function, row.event), row.code);
  EXPECT_TRUE(trace_book::is_written_by(row.code, row.function));
}

Names function_names() {
  Names names;
  for (const trace_book::Function &function : trace_book::all_functions()) {
    names.push_back(function.name);
    if (!function.other.empty()) names.push_back(function.other);
  }
  return names;
}

TEST(EventNames, TwoFunctionsMayWriteTheSameEvents) {
  EXPECT_EQ(trace_book::event_named("lmainte_show_iox_list", "no-lines"), 0x110C1151);
  EXPECT_EQ(trace_book::event_named("lmainte_show_ioxpsu_list", "no-lines"), 0x110C1151);
  EXPECT_TRUE(trace_book::is_written_by(0x110C1151, "lmainte_show_iox_list"));
  EXPECT_TRUE(trace_book::is_written_by(0x110C1151, "lmainte_show_ioxpsu_list"));
  EXPECT_FALSE(trace_book::is_written_by(0x110C1151, "lmainte_show_ioxpci_list"));
}

TEST(EventNames, WhatDoesNotExistHasNone) {
  EXPECT_FALSE(trace_book::event_named("lmainte_control_mainte", "no-unit"));
  EXPECT_FALSE(trace_book::event_named("lmainte_control_mainte", ""));
  EXPECT_FALSE(trace_book::event_named("lmainte_control", "entry"));
  EXPECT_FALSE(trace_book::event_named("", "entry"));
  EXPECT_FALSE(trace_book::is_written_by(0x110C02F4, "lmainte_control_mainte")) << "a point that it does not have";
  EXPECT_FALSE(trace_book::is_written_by(0x110C0FF0, "lmainte_control_mainte")) << "a block that no function has";
  EXPECT_FALSE(trace_book::is_written_by(0x000002F0, "lmainte_control_mainte")) << "another module's event";
  EXPECT_FALSE(trace_book::is_written_by(0x110D02F0, "lmainte_control_mainte")) << "another module's event";
  EXPECT_FALSE(trace_book::is_written_by(0x110C02F0, ""));
}

TEST(EventNames, AFunctionsEventsAreListedInTheirOrder) {
  EXPECT_EQ(trace_book::event_names("lmainte_detach_fru"),
            (Names{"entry", "exit", "unit", "ended", "no-time-limit", "no-unit", "refused"}));
  EXPECT_EQ(trace_book::event_names("lmainte_check_swap_fru"), (Names{"entry", "exit"}));
  EXPECT_EQ(trace_book::event_names("lmainte_detach"), Names{});
}

TEST(EventNames, AreDifferentInEachFunction) {
  for (const std::string_view function : function_names()) {
    const Names events = trace_book::event_names(function);
    EXPECT_EQ(std::set<std::string_view>(events.begin(), events.end()).size(), events.size()) << function;
    for (const std::string_view event : events) {
      EXPECT_EQ(event.find_first_not_of("abcdefghijklmnopqrstuvwxyz-"), std::string_view::npos)
          << function << " " << event;
    }
  }
}

// Four functions leave no records of their own, and the child of lmainte_dot_start records what disp_done does.
TEST(EventNames, EveryExportedFunctionHasSome) {
  const std::set<std::string> silent{"lmainte_control_ioxled", "lmainte_control_ioxpower", "lmainte_show_ioxpsu_status",
                                     "lmainte_get_iox_data"};
  const Names functions = function_names();
  std::ifstream exported(EXPORTED_NAMES);
  std::size_t seen = 0;
  for (std::string name; exported >> name;) {
    if (!name.starts_with("lmainte_") && !name.starts_with("replace_mem_")) continue;  // data, and disp_done
    EXPECT_NE(std::ranges::count(functions, name) > 0, silent.contains(name)) << name;
    ++seen;
  }
  EXPECT_GT(seen, 80U);
}

}  // namespace
