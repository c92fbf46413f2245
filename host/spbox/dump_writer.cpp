#include <algorithm>
#include <set>

#include "host/box/breakage.h"
#include "host/box/inventory_kinds.h"
#include "host/box/inventory_records.h"
#include "host/box/partitions.h"
#include "host/box/record_words.h"
#include "host/box/records.h"
#include "host/script/script.h"
#include "host/spbox/dump.h"

namespace spbox {
namespace {

constexpr std::size_t kRow = 16, kGroup = 4, kPlaceWidth = 6;
constexpr std::string_view kDigits = "0123456789abcdef";

bool printable(std::string_view text) {
  return std::all_of(text.begin(), text.end(), [](char c) { return c >= ' ' && c <= '~'; });
}

// What is written down where: names by the offset in a record.
using Labels = std::map<std::size_t, std::string>;
using Book = std::map<std::string, Labels>;

Book book_of(std::uint32_t model) {
  Book book;
  for (const box::UnitPlace &place : box::places_of(model)) {
    for (const box::UnitEntry &entry : place.entries) {
      book[entry.record][entry.at == box::kNowhere ? entry.status_at : entry.at] = place.name;
      if (!entry.fru_record.empty()) book[entry.fru_record][0] = place.name;
      if (entry.type == LMAINTE_TYPE_CMU) book[box::kSetupCmu.of(entry.number)][0] = place.name;
    }
  }
  const box::Model *row = box::find_model(model);
  for (std::uint32_t xsb = 0; row != nullptr && xsb < row->xsbs; ++xsb) {
    for (const box::RecordLayout &layout : {box::kSetupXsb, box::kCurrentXsb}) {
      book[layout.of(xsb)][0] = "XSB " + box::xsb_name(xsb);
    }
  }
  return book;
}

// The text in an identity record is a row of its own, with the text beside it.
void add_fru_text(const std::string &name, const box::Bytes &record, Labels &rows) {
  for (const box::Kind &kind : box::kinds()) {
    const box::FruLayout &fru = kind.fru;
    if (fru.record.empty() || !box::stands_for(fru.record, name)) continue;
    if (const auto text = box::fru_name_in(fru, record)) {
      rows[std::min(fru.length_at, fru.name_at)] = printable(*text) ? *text : "";
    }
    return;
  }
}

class Writer {
 public:
  explicit Writer(const box::Contents &contents) : contents_(contents), book_(book_of(contents.model)) {}

  std::string text() {
    add_head();
    for (std::uint32_t db_id = 0; db_id < box::kDatabaseCount; ++db_id) add_database(db_id);
    add_hardware();
    return out_ + "\nend\n";
  }
  std::string text_of_records() {
    add_head();
    for (std::uint32_t db_id = 0; db_id < box::kDatabaseCount; ++db_id) {
      if (!contents_.records.at(db_id).empty()) add_database(db_id);
    }
    return out_ + "\nend\n";
  }

 private:
  void add_head() {
    out_ = std::string(kDumpHead) + "\norder big\nmodel " + std::string(box::model_name(contents_.model)) + "\n";
  }

  void add_database(std::uint32_t db_id) {
    out_ += "\ndatabase " + std::to_string(db_id) + "  # " + std::string(box::kDatabaseNames.at(db_id)) + "\n";
    for (const auto &[name, record] : contents_.records.at(db_id)) add_record(name, name, record);
  }

  // Settings are texts; what is kept of a broken record is a record itself.
  void add_hardware() {
    out_ += "\ndatabase box  # its hardware, and how its programs are bent\n";
    for (const auto &[key, value] : contents_.hardware) {
      if (const auto kept = box::record_of_key(key)) {
        add_record(key, kept->name, box::Bytes(value.begin(), value.end()));
      } else {
        out_ += "setting " + script::as_word(key) + " " + script::as_word(value) + "\n";
      }
    }
  }

  void add_record(const std::string &key, const std::string &name, box::Bytes record) {
    box::swap_to_big_endian(name, record);
    Labels rows;
    if (const auto known = book_.find(name); known != book_.end()) rows = known->second;
    out_ += "record " + script::as_word(key) + " " + std::to_string(record.size());
    if (rows.size() == 1 && rows.begin()->first == 0) {
      out_ += "  # " + rows.begin()->second;
      rows.clear();
    }
    out_ += "\n";
    add_fru_text(name, record, rows);
    rows.try_emplace(0);
    for (auto row = rows.begin(); row != rows.end(); ++row) {
      const std::size_t next = std::next(row) == rows.end() ? record.size() : std::next(row)->first;
      add_rows(record, row->first, std::min(next, record.size()), row->second);
    }
  }

  // Rows of zeros are left out.
  void add_rows(const box::Bytes &record, std::size_t first, std::size_t end, const std::string &label) {
    for (std::size_t at = first; at < end; at += kRow) {
      const std::size_t size = std::min(kRow, end - at);
      const auto begin = record.begin() + static_cast<std::ptrdiff_t>(at);
      if (std::all_of(begin, begin + static_cast<std::ptrdiff_t>(size), [](std::uint8_t byte) { return byte == 0; })) {
        continue;
      }
      const std::string place = std::to_string(at);
      out_ += std::string(place.size() < kPlaceWidth ? kPlaceWidth - place.size() : 0, ' ') + place + ":";
      for (std::size_t i = 0; i < size; ++i) {
        if (i % kGroup == 0) out_ += ' ';
        out_ += kDigits[record[at + i] >> 4];
        out_ += kDigits[record[at + i] & 15];
      }
      out_ += (at == first && !label.empty() ? "  # " + label : "") + "\n";
    }
  }

  const box::Contents &contents_;
  Book book_;
  std::string out_;
};

}  // namespace

std::string dump_of(const box::Contents &contents) {
  return Writer(contents).text();
}

std::string dump_of_records(const box::Contents &contents) {
  return Writer(contents).text_of_records();
}

}  // namespace spbox
