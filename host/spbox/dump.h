// A box's contents as a text that people can read and compare, and the way back. docs/host-platform.md has the grammar.
#pragma once

#include <string>

#include "host/box/contents.h"

namespace spbox {

inline constexpr const char *kDumpHead = "spbox dump 1";

// The same contents give the same text, on every machine: words are written with their most significant byte first.
std::string dump_of(const box::Contents &contents);

// The same of a box's records alone: without its hardware, and without databases that have none.
std::string dump_of_records(const box::Contents &contents);

// Reads such a text, which `name` names to people. Throws BoxError, which tells the line.
box::Contents read_dump(std::string text, const std::string &name);

}  // namespace spbox
