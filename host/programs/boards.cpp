#include "host/programs/boards.h"

#include <charconv>

#include "host/box/inventory_records.h"
#include "host/box/model.h"
#include "include/lmainte.h"

namespace programs {
namespace {

constexpr std::uint32_t kMostParts = 4, kLastDomain = 23, kNoDomain = 0xFF;
constexpr std::size_t kSetupDomain = 128, kDomain = 56, kActive = 61, kParts = 36;

}  // namespace

std::optional<std::uint32_t> board_of(std::string_view unit) {
  if (unit.starts_with("/MBU_")) return 0;
  if (!unit.starts_with("/CMU#") && !unit.starts_with("/IOU#")) return std::nullopt;
  const std::string_view digits = unit.substr(5, unit.find('/', 5) - 5);
  std::uint32_t board = 0;
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), board);
  if (error != std::errc() || end != digits.data() + digits.size()) return std::nullopt;
  return board;
}

Boards::Boards(const box::Place &place, std::uint32_t model)
    : model_(model), setup_(place, LMAINTE_DB_SETUP), current_(place, LMAINTE_DB_CURRENT) {
  setup_.lock();
  current_.lock();
}

std::uint32_t Boards::count() const {
  return box::boards_of(model_);
}

bool Boards::can_be_divided() const {
  return box::is_high_end(model_);
}

box::Bytes &Boards::setup(std::uint32_t board, std::uint32_t part) {
  return setup_.at(box::numbered("setup_xsb_info_%02d", board * kMostParts + part), 192);
}

box::Bytes &Boards::current(std::uint32_t board, std::uint32_t part) {
  return current_.at(box::numbered("current_xsb_info_%02d", board * kMostParts + part), 152);
}

box::Bytes &Boards::cmu(std::uint32_t board) {
  return current_.at(box::numbered("current_cmu_info_%02d", board), 1760);
}

std::uint32_t Boards::parts(std::uint32_t board) {
  return box::word_at(cmu(board), kParts) == 1 ? 1 : kMostParts;
}

bool Boards::is_active(std::uint32_t board, std::uint32_t part) {
  return !can_be_divided() || current(board, part)[kActive] == 1;
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
      if (is_active(other, part) && box::word_at(current(other, part), kDomain) == domain) return true;
    }
  }
  return false;
}

bool Boards::can_be_spared(std::uint32_t board) {
  if (!can_be_divided()) return false;
  for (std::uint32_t part = 0; part < kMostParts; ++part) {
    if (is_active(board, part) && !runs_elsewhere(box::word_at(current(board, part), kDomain), board)) return false;
  }
  return true;
}

void Boards::stop(std::uint32_t board) {
  for (std::uint32_t part = 0; can_be_divided() && part < kMostParts; ++part) current(board, part)[kActive] = 0;
}

void Boards::start(std::uint32_t board) {
  for (std::uint32_t part = 0; can_be_divided() && part < parts(board); ++part) {
    const std::uint32_t domain = box::word_at(setup(board, part), kSetupDomain);
    if (domain > kLastDomain) continue;
    box::put_word(current(board, part), kDomain, domain);
    current(board, part)[kActive] = 1;
  }
}

void Boards::assign_to_none(std::uint32_t board, std::uint32_t part) {
  box::put_word(setup(board, part), kSetupDomain, kNoDomain);
  box::put_word(current(board, part), kDomain, kNoDomain);
}

// What the new division does not have is nobody's.
void Boards::divide(std::uint32_t board, std::uint32_t parts) {
  box::put_word(cmu(board), kParts, parts);
  for (std::uint32_t part = parts; part < kMostParts; ++part) assign_to_none(board, part);
}

void Boards::save() {
  setup_.save();
  current_.save();
}

}  // namespace programs
