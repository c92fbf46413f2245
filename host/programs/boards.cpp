#include "host/programs/boards.h"

#include "host/box/inventory_records.h"
#include "host/box/model.h"
#include "host/box/partitions.h"
#include "host/box/records.h"
#include "include/lmainte.h"

namespace programs {

using box::kMostParts;

Boards::Boards(const box::Place &place, std::uint32_t model)
    : model_(model), setup_(place, LMAINTE_DB_SETUP), current_(place, LMAINTE_DB_CURRENT) {}

std::uint32_t Boards::count() const {
  return box::boards_of(model_);
}

bool Boards::can_be_divided() const {
  return box::is_high_end(model_);
}

box::Bytes &Boards::setup(std::uint32_t board, std::uint32_t part) {
  return setup_.at(box::kSetupXsb.of(board * kMostParts + part), box::kSetupXsb.size);
}

box::Bytes &Boards::current(std::uint32_t board, std::uint32_t part) {
  return current_.at(box::kCurrentXsb.of(board * kMostParts + part), box::kCurrentXsb.size);
}

box::Bytes &Boards::cmu(std::uint32_t board) {
  return current_.at(box::kCurrentCmu.of(board), box::kCurrentCmu.size);
}

std::uint32_t Boards::parts(std::uint32_t board) {
  return box::word_at(cmu(board), box::kBoardParts) == 1 ? 1 : kMostParts;
}

bool Boards::is_active(std::uint32_t board, std::uint32_t part) {
  return !can_be_divided() || current(board, part)[box::kXsbActive] == 1;
}

bool Boards::is_active(std::uint32_t board) {
  for (std::uint32_t part = 0; part < kMostParts; ++part) {
    if (is_active(board, part)) return true;
  }
  return false;
}

bool Boards::runs_elsewhere(std::uint32_t domain, std::uint32_t board) {
  for (std::uint32_t other = 0; other < count(); ++other) {
    for (std::uint32_t part = 0; part < kMostParts && other != board; ++part) {
      if (is_active(other, part) && box::word_at(current(other, part), box::kXsbDomain) == domain) return true;
    }
  }
  return false;
}

bool Boards::can_be_spared(std::uint32_t board) {
  if (!can_be_divided()) return false;
  for (std::uint32_t part = 0; part < kMostParts; ++part) {
    if (is_active(board, part) && !runs_elsewhere(box::word_at(current(board, part), box::kXsbDomain), board))
      return false;
  }
  return true;
}

BoardChange::BoardChange(const box::Place &place, std::uint32_t model) : Boards(place, model), hardware_(place) {
  setup_.lock();
  current_.lock();
  hardware_.lock();
}

void BoardChange::stop(std::uint32_t board) {
  if (can_be_divided()) box::stop_board(current_, board);
}

void BoardChange::start(std::uint32_t board) {
  for (std::uint32_t part = 0; can_be_divided() && part < parts(board); ++part) {
    const std::uint32_t domain = box::word_at(setup(board, part), box::kXsbSetupDomain);
    if (domain > box::kLastDomain) continue;
    box::put_word(current(board, part), box::kXsbDomain, domain);
    current(board, part)[box::kXsbActive] = 1;
  }
}

void BoardChange::assign_to_none(std::uint32_t board, std::uint32_t part) {
  box::put_word(setup(board, part), box::kXsbSetupDomain, box::kNoDomain);
  box::put_word(current(board, part), box::kXsbDomain, box::kNoDomain);
}

// What the new division does not have is nobody's.
void BoardChange::divide(std::uint32_t board, std::uint32_t parts) {
  box::put_word(cmu(board), box::kBoardParts, parts);
  for (std::uint32_t part = parts; part < kMostParts; ++part) assign_to_none(board, part);
}

void BoardChange::save() {
  box::save({&setup_.changed(), &current_.changed(), &hardware_.database()});
}

}  // namespace programs
