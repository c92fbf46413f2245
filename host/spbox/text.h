// Numbers, times and tables as people read them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace spbox {

std::string hexadecimal(std::uint32_t number, int digits = 8);  // "0x110C02F0"

std::string time_of_day(std::int64_t time_ns);    // local: "05:40:12.123456"
std::string date_and_time(std::int64_t time_ns);  // local: "2026-11-21 05:40:12"
std::string utc(std::int64_t time_ns);            // for scripts: "2026-11-21T05:40:12.123456Z"

// Of a window: as many columns as a line takes.
inline constexpr std::size_t kNoWidth = 0;

// Lines of cells, which may hold any bytes and are shown, never obeyed. Each column is as wide as its widest cell; the last
// cell of a line may run on over the columns to its right. Nothing is left at the end of a line.
std::string aligned(std::vector<std::vector<std::string>> lines);

// The same, line by line. What is behind `width` columns goes on in a line of its own, below the cell with the number `below`.
std::vector<std::string> aligned_lines(std::vector<std::vector<std::string>> lines, std::size_t width = kNoWidth,
                                       std::size_t below = 0);

// A line, which may hold any bytes, with an end of a line wherever it would be longer than `width`; what follows stands so far in.
std::string wrapped(const std::string &line, std::size_t width, std::size_t indent);

}  // namespace spbox
