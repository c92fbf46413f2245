// What a verb prints has to arrive where it should, and nowhere else.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace spbox {

// Without it, a file of the box could take the place of a standard output that is closed, and get what is printed.
void keep_standard_descriptors();

// Lines on standard output, with their ends; a line there; a line on standard error, behind "spbox: ". All that spbox says
// goes through one of them: the terminal shows what stands in a text, and never obeys it.
void print(std::string_view lines);
void print_line(std::string_view line);
void complain(std::string_view line);
void complain_in_lines(std::string_view lines);  // without the head

// Lines that are kept instead, while that is wanted: those of standard output, and errors, without their heads.
struct KeptOutput {
  bool is_wanted = false;
  std::vector<std::string> lines;
};
KeptOutput &kept_output();

// What standard output is: a terminal with so many columns, or something without any. It has colours where it is a terminal that
// knows some, and NO_COLOR is not set.
struct Window {
  std::size_t columns = 0;
  bool has_colours = false;
};
Window window_of_output();

// What a line is, beside what it says: with colours, it looks so.
enum class Ink { kPlain, kHead, kQuiet, kError, kGood, kCare };
void print_in(Ink ink, std::string_view lines, const Window &window);

// The beginning of a line on a terminal, which the next text is written over.
void print_over(std::string_view text);

// Says so without any memory of its own, and returns the exit status. The C++ library ends the process in some places where
// it finds no memory: from the second one on, it says so there, too.
int out_of_memory();
void say_out_of_memory_at_any_end();

// Judges what was printed: a verb that could not print what it was asked for has failed, and says so. Returns the exit
// status.
int with_output_judged(int status);

}  // namespace spbox
