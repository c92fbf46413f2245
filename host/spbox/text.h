// Numbers, times and tables as people read them.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace spbox {

std::string hexadecimal(std::uint32_t number, int digits = 8);  // "0x110C02F0"

std::string time_of_day(std::int64_t time_ns);    // local: "05:40:12.123456"
std::string date_and_time(std::int64_t time_ns);  // local: "2026-11-21 05:40:12"
std::string utc(std::int64_t time_ns);            // for scripts: "2026-11-21T05:40:12.123456Z"

// Lines of cells, which may hold any bytes and are shown, never obeyed. Each column is as wide as its widest cell; the last
// cell of a line may run on over the columns to its right. Nothing is left at the end of a line.
std::string aligned(std::vector<std::vector<std::string>> lines);

}  // namespace spbox
