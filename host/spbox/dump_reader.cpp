#include <bit>
#include <optional>
#include <set>
#include <span>
#include <stdexcept>
#include <utility>

#include "host/base/number.h"
#include "host/box/breakage.h"
#include "host/box/hardware.h"
#include "host/box/inventory.h"
#include "host/box/record_words.h"
#include "host/script/form.h"
#include "host/script/values.h"
#include "host/spbox/dump.h"

namespace spbox {
namespace {

constexpr std::size_t kMostBytes = std::size_t{64} << 20U;    // of all records: a box holds no more
constexpr std::size_t kLongestName = 127, kLongestKey = 510;  // of the library, and of the files

[[noreturn]] void wrong(const std::string &reason) {
  throw std::invalid_argument(reason);
}

class DumpReader {
 public:
  box::Contents contents(std::string text, const std::string &name) {
    script::Reader lines(std::move(text), name, {.has_quotes = true, .has_semicolons = false});
    try {
      while (auto line = lines.next()) take(*line);
    } catch (const script::Error &error) {
      if (!headed_ || !lines.line_is_cut()) throw box::BoxError(error.what() + std::string("."));
      throw box::BoxError(name + " is cut off in line " + std::to_string(lines.line()) +
                          ", its last one: the line has no end.");
    }
    if (!headed_) throw box::BoxError(name + " is no dump: it does not begin with `" + kDumpHead + "`.");
    if (!ended_) throw box::BoxError(name + " is cut off: it ends without the line `end`.");
    check_model();
    return finished();
  }

 private:
  using Arguments = script::Words;

  void take(script::Statement &line) {
    place_ = line.place;
    try {
      if (headed_) return statement(line.words);
      head(line.words);
      headed_ = true;
    } catch (const std::invalid_argument &wrong) {
      throw line.error(wrong.what());
    }
  }

  static void head(const Arguments &words) {
    if (script::joined(words) != kDumpHead) {
      wrong("this is no dump: it does not begin with `" + std::string(kDumpHead) + "`");
    }
  }

  void statement(Arguments &words) {
    if (ended_) wrong("this stands behind the line `end`");
    if (words.front().ends_with(':')) return bytes_at(words);
    const LineRow &line = script::take_row(std::span<const LineRow>(kLines), words, "line");
    (this->*line.read)(words);
  }

  void order(const Arguments &words) {
    if (order_) wrong("the byte order is given a second time");
    if (words[0] != "big" && words[0] != "little") wrong("the byte order is big or little");
    order_ = words[0] == "big" ? std::endian::big : std::endian::little;
  }

  void model(const Arguments &words) {
    if (contents_.model != LMAINTE_MODEL_NONE) wrong("the model is given a second time");
    const box::Model *found = box::find_model(words[0]);
    if (found == nullptr) wrong("there is no model \"" + words[0] + "\"; the models are " + box::model_names());
    contents_.model = found->code;
    model_place_ = place_;
  }

  // A record that this model does not have and another one has: the dump is one of that model.
  void check_model() const {
    const auto own = box::new_server(contents_.model).records;
    for (const box::Model &other : box::models()) {
      const auto others = box::new_server(other.code).records;
      for (std::size_t db_id = 0; db_id < own.size(); ++db_id) {
        for (const auto &[name, record] : contents_.records.at(db_id)) {
          if (own.at(db_id).contains(name) || !others.at(db_id).contains(name)) continue;
          throw box::BoxError(model_place_ + ": the model is " + std::string(box::model_name(contents_.model)) +
                              ", but the dump has the record " + name + " of database " + std::to_string(db_id) +
                              ", which model " + std::string(other.name) +
                              " has. Write the model of the server that the dump was taken from.");
        }
      }
    }
  }

  void database(const Arguments &words) {
    const auto db_id = base::number_in<std::size_t>(words[0]);
    if (words[0] != "box" && (!db_id || *db_id >= box::kDatabaseCount)) {
      wrong("there is no database \"" + words[0] + "\"; there are 0 to " + std::to_string(box::kDatabaseCount - 1) +
            " and box");
    }
    if (!databases_.insert(words[0]).second) wrong("the database comes a second time");
    in_box_ = words[0] == "box";
    database_ = in_box_ ? nullptr : &contents_.records.at(*db_id);
    record_ = nullptr;
  }

  void record(const Arguments &words) {
    if (database_ == nullptr && !in_box_) wrong("a record stands outside the databases");
    const auto size = base::number_in<std::size_t>(words[1]);
    if (!size || *size > kMostBytes) {
      wrong("a record has 0 to " + std::to_string(kMostBytes) + " bytes");
    }
    if ((bytes_ += *size) > kMostBytes) {
      wrong("the records of a dump have at most " + std::to_string(kMostBytes) + " bytes in all");
    }
    check_name(words[0], in_box_ ? kLongestKey : kLongestName);
    if (in_box_ && !box::record_of_key(words[0])) wrong("the database box holds no records but broken ones");
    auto &records = in_box_ ? broken_ : *database_;
    const auto [at, is_new] = records.try_emplace(words[0], *size);
    if (!is_new) wrong("the record comes a second time");
    record_ = &at->second;
    row_end_ = 0;
  }

  static void check_name(const std::string &name, std::size_t longest) {
    if (name.empty() || name.size() > longest) {
      wrong("a name has 1 to " + std::to_string(longest) + " characters, this one has " + std::to_string(name.size()));
    }
  }

  void setting(const Arguments &words) {
    if (!in_box_) wrong("a setting stands outside the database box");
    check_name(words[0], kLongestKey);
    if (!contents_.hardware.emplace(words[0], words[1]).second) wrong("the setting comes a second time");
    record_ = nullptr;
  }

  void bytes_at(const Arguments &words) {
    if (record_ == nullptr) wrong("bytes stand outside a record");
    const auto at = base::number_in<std::size_t>(std::string_view(words[0]).substr(0, words[0].size() - 1));
    if (!at) wrong("\"" + words[0] + "\" is not a place in a record; write its number and a colon");
    if (*at < row_end_) wrong("byte " + std::to_string(*at) + " comes a second time, or out of order");
    row_end_ = *at;
    for (std::size_t i = 1; i < words.size(); ++i) bytes(words[i]);
  }

  void bytes(const std::string &word) {
    if (word.size() % 2 != 0) wrong("\"" + word + "\" is not a row of bytes: each has two digits");
    for (std::size_t i = 0; i < word.size(); i += 2) {
      const auto high = script::hexadecimal_digit(word[i]), low = script::hexadecimal_digit(word[i + 1]);
      if (!high || !low) wrong("\"" + word + "\" is not a row of bytes: their digits are hexadecimal");
      if (row_end_ >= record_->size()) {
        wrong("there are more bytes than the record's " + std::to_string(record_->size()));
      }
      record_->at(row_end_++) = static_cast<std::uint8_t>(*high * 16 + *low);
    }
  }

  void end(const Arguments & /*words*/) {
    if (!order_) wrong("no byte order is given: `order big` or `order little`");
    if (contents_.model == LMAINTE_MODEL_NONE) wrong("no model is given, as by `model qe1`");
    ended_ = true;
  }

  box::Contents finished() {
    const bool swap = *order_ != std::endian::native;
    for (auto &records : contents_.records) {
      for (auto &[name, record] : records) {
        if (swap) box::swap_words(name, record);
      }
    }
    if (!databases_.contains("box")) {
      contents_.hardware = box::after_power_on(contents_.model);
      box::flag_marked_units(contents_);
    }
    for (auto &[key, record] : broken_) {
      if (swap) box::swap_words(box::record_of_key(key)->name, record);
      contents_.hardware[key] = std::string(record.begin(), record.end());
    }
    return std::move(contents_);
  }

  struct LineRow : script::Form {
    void (DumpReader::*read)(const Arguments &);
  };
  static constexpr LineRow kLines[] = {
      {{"order", 1, 1, "order big|little", ""}, &DumpReader::order},
      {{"model", 1, 1, "model NAME", ""}, &DumpReader::model},
      {{"database", 1, 1, "database NUMBER|box", ""}, &DumpReader::database},
      {{"record", 2, 2, "record NAME SIZE", ""}, &DumpReader::record},
      {{"setting", 2, 2, "setting KEY VALUE", ""}, &DumpReader::setting},
      {{"end", 0, 0, "end", ""}, &DumpReader::end},
  };

  box::Contents contents_;
  box::Database::Records broken_;
  std::optional<std::endian> order_;
  std::set<std::string> databases_;
  box::Database::Records *database_ = nullptr;
  box::Bytes *record_ = nullptr;
  std::size_t row_end_ = 0, bytes_ = 0;  // of a record; of all records
  std::string place_, model_place_;      // of this line, and of the model's
  bool headed_ = false, ended_ = false, in_box_ = false;
};

}  // namespace

box::Contents read_dump(std::string text, const std::string &name) {
  return DumpReader().contents(std::move(text), name);
}

}  // namespace spbox
