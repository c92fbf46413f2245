// The system boards of a box: how each is divided into extended system boards, and which of these a domain uses.
#pragma once

#include <cstdint>
#include <string>

#include "host/box/hardware.h"
#include "host/box/record_set.h"

namespace programs {

// Questions about the boards, which take no lock. The models that divide no board have no extended system boards: the
// server runs on all that they have. Throws where a database fails.
class Boards {
 public:
  Boards(const box::Place &place, std::uint32_t model);

  std::uint32_t count() const;
  bool can_be_divided() const;
  std::uint32_t parts(std::uint32_t board);  // extended system boards that the board is: 1 or 4

  // True when a domain runs on the board, or on this part of it.
  bool is_active(std::uint32_t board);
  bool is_active(std::uint32_t board, std::uint32_t part);
  // True when every domain that runs on the board also runs on another one.
  bool can_be_spared(std::uint32_t board);

 protected:
  box::Bytes &setup(std::uint32_t board, std::uint32_t part);
  box::Bytes &current(std::uint32_t board, std::uint32_t part);
  box::Bytes &cmu(std::uint32_t board);

  std::uint32_t model_;
  box::RecordSet setup_, current_;

 private:
  bool runs_elsewhere(std::uint32_t domain, std::uint32_t board);
};

// Changes to the boards: from construction to save nobody else changes their records or the hardware, so what is asked here
// stays true. What is set in the hardware meanwhile is saved with the records, or dropped with them.
class BoardChange : public Boards {
 public:
  BoardChange(const box::Place &place, std::uint32_t model);

  void stop(std::uint32_t board);   // no domain runs on it any more
  void start(std::uint32_t board);  // the domains to which its parts are assigned do
  void assign_to_none(std::uint32_t board, std::uint32_t part);
  void divide(std::uint32_t board, std::uint32_t parts);

  void save();

 private:
  box::Hardware hardware_;
};

}  // namespace programs
