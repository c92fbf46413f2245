// What is no unit: the extended system boards and domains that a server is divided into, and the server as a whole.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/box/place.h"
#include "host/box/record_set.h"

namespace box {

// Each has why it cannot be read, as RecordSet complains; empty when it can.
struct Xsb {
  std::string name;  // "03-2": board and part
  bool active;
  std::uint32_t domain, setup_domain;  // numbers above 23 are of no domain
  std::string unreadable;
};

struct Domain {
  std::uint32_t number;
  std::uint32_t word_0;
  std::uint8_t byte_44;
  std::string unreadable;
};

struct Server {
  std::uint32_t status;             // system status word
  std::uint32_t service_processor;  // number of the unit that runs
  std::string unreadable;
};

// The number in "/CMU#3", "/IOU#3/PCI#1" or "/MBU_A"; nothing for a unit that is no system board and sits on none.
std::optional<std::uint32_t> board_of(std::string_view unit);

// A part of a board: an extended system board.
struct BoardPart {
  std::uint32_t board, part;
};

// "03-2" for number 14, and the name taken apart; nothing for a word that names no part, whether or not the board exists.
std::string xsb_name(std::uint32_t number);
std::optional<BoardPart> board_part_in(std::string_view xsb_name);

// No domain runs on the board any more, as far as its records in the current database can be read.
void stop_board(RecordSet &current, std::uint32_t board);

std::vector<Xsb> xsbs_of(const Place &place, std::uint32_t model);
std::vector<Domain> domains_of(const Place &place, std::uint32_t model);
Server server_of(const Place &place);

}  // namespace box
