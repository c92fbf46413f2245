#include <bit>
#include <istream>
#include <optional>
#include <set>

#include "host/box/breakage.h"
#include "host/box/hardware.h"
#include "host/box/inventory.h"
#include "host/box/number.h"
#include "host/box/record_words.h"
#include "host/spbox/dump.h"

namespace spbox {
namespace {

constexpr std::size_t kLargestRecord = std::size_t{1} << 20U;
constexpr std::size_t kLongestName = 127, kLongestKey = 511;  // of the library, and of the files

int digit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

// The words of a line, up to its comment. Throws std::string, which says what is wrong.
class Words {
 public:
  explicit Words(std::string_view line) : line_(line) {}

  std::vector<std::string> all() {
    std::vector<std::string> words;
    while (skip_blanks()) words.push_back(line_.front() == '"' ? in_quotes() : plain());
    return words;
  }

 private:
  bool skip_blanks() {
    while (!line_.empty() && (line_.front() == ' ' || line_.front() == '\t')) line_.remove_prefix(1);
    return !line_.empty() && line_.front() != '#';
  }

  char take() {
    if (line_.empty()) throw std::string("a text in quotes does not end");
    const char c = line_.front();
    line_.remove_prefix(1);
    return c;
  }

  std::string plain() {
    std::string word(line_.substr(0, line_.find_first_of(" \t")));
    line_.remove_prefix(word.size());
    return word;
  }

  std::string in_quotes() {
    std::string word;
    take();
    for (char c = take(); c != '"'; c = take()) word += c == '\\' ? escaped() : c;
    return word;
  }

  char escaped() {
    const char c = take();
    if (c == '"' || c == '\\') return c;
    const int high = c == 'x' ? digit(take()) : -1;
    const int low = high < 0 ? -1 : digit(take());
    if (low < 0) throw std::string("in quotes, a backslash stands before \\, \" or xHH only");
    return static_cast<char>(high << 4 | low);
  }

  std::string_view line_;
};

class Reader {
 public:
  box::Contents contents(std::istream &in, const std::string &name) {
    std::string line;
    while (std::getline(in, line)) {
      ++line_number_;
      if (!line.empty() && line.back() == '\r') line.pop_back();
      try {
        statement(Words(line).all(), line);
      } catch (const std::string &what) {
        throw at_line(name, what);
      }
    }
    if (!headed_) throw box::InventoryError(name + " is no dump: it does not begin with `" + kDumpHead + "`.");
    if (!ended_) throw box::InventoryError(name + " is cut off: it ends without the line `end`.");
    return finished();
  }

 private:
  using Arguments = std::vector<std::string>;

  box::InventoryError at_line(const std::string &name, const std::string &what) const {
    return box::InventoryError(name + ", line " + std::to_string(line_number_) + ": " + what + ".");
  }

  void statement(const Arguments &words, const std::string &line) {
    if (words.empty()) return;
    if (!headed_) {
      if (line != kDumpHead) throw "this is no dump: it does not begin with `" + std::string(kDumpHead) + "`";
      headed_ = true;
      return;
    }
    if (ended_) throw std::string("something stands behind the line `end`");
    if (words.front().ends_with(':')) return row(words);
    for (const Statement &known : kStatements) {
      if (words.front() != known.word) continue;
      if (words.size() != known.words) throw "`" + words.front() + "` is written: " + known.form;
      return (this->*known.read)(words);
    }
    throw "`" + words.front() + "` is not known";
  }

  void order(const Arguments &words) {
    if (order_) throw std::string("the byte order is given a second time");
    if (words[1] != "big" && words[1] != "little") throw "there is no byte order `" + words[1] + "`: big or little";
    order_ = words[1] == "big" ? std::endian::big : std::endian::little;
  }

  void model(const Arguments &words) {
    if (contents_.model != LMAINTE_MODEL_NONE) throw std::string("the model is given a second time");
    const box::Model *found = box::find_model(words[1]);
    if (found == nullptr) throw "there is no model `" + words[1] + "`: " + box::model_names();
    contents_.model = found->code;
  }

  void database(const Arguments &words) {
    const auto db_id = box::number_in<std::size_t>(words[1]);
    if (words[1] != "box" && (!db_id || *db_id >= box::kDatabaseCount)) {
      throw "there is no database `" + words[1] + "`: 0 to " + std::to_string(box::kDatabaseCount - 1) + ", or box";
    }
    if (!databases_.insert(words[1]).second) throw "the database " + words[1] + " comes a second time";
    in_box_ = words[1] == "box";
    database_ = in_box_ ? nullptr : &contents_.records.at(*db_id);
    record_ = nullptr;
  }

  void record(const Arguments &words) {
    if (database_ == nullptr && !in_box_) throw std::string("a record stands outside the databases");
    const auto size = box::number_in<std::size_t>(words[2]);
    if (!size || *size > kLargestRecord) {
      throw "a record has 0 to " + std::to_string(kLargestRecord) + " bytes, not `" + words[2] + "`";
    }
    check_name(words[1], in_box_ ? kLongestKey : kLongestName);
    if (in_box_ && !box::record_of_key(words[1]))
      throw std::string("the database box holds no records but broken ones");
    auto &records = in_box_ ? broken_ : *database_;
    const auto [at, is_new] = records.try_emplace(words[1], *size);
    if (!is_new) throw "the record " + words[1] + " comes a second time";
    record_ = &at->second;
    row_end_ = 0;
  }

  static void check_name(const std::string &name, std::size_t longest) {
    if (name.empty() || name.size() > longest) {
      throw "a name has 1 to " + std::to_string(longest) + " characters, this one " + std::to_string(name.size());
    }
  }

  void setting(const Arguments &words) {
    if (!in_box_) throw std::string("a setting stands outside the database box");
    check_name(words[1], kLongestKey);
    if (!contents_.hardware.emplace(words[1], words[2]).second)
      throw "the setting " + words[1] + " comes a second time";
    record_ = nullptr;
  }

  void row(const Arguments &words) {
    if (record_ == nullptr) throw std::string("bytes stand outside a record");
    const auto at = box::number_in<std::size_t>(std::string_view(words[0]).substr(0, words[0].size() - 1));
    if (!at) throw "`" + words[0] + "` is no place in a record";
    if (*at < row_end_) throw "byte " + std::to_string(*at) + " comes a second time, or out of order";
    row_end_ = *at;
    for (std::size_t i = 1; i < words.size(); ++i) bytes(words[i]);
  }

  void bytes(const std::string &word) {
    if (word.size() % 2 != 0) throw "`" + word + "` is no bytes: two digits make one";
    for (std::size_t i = 0; i < word.size(); i += 2) {
      const int high = digit(word[i]), low = digit(word[i + 1]);
      if (high < 0 || low < 0) throw "`" + word + "` is no bytes: they are written in hexadecimal";
      if (row_end_ >= record_->size()) {
        throw "there are more bytes than the record's " + std::to_string(record_->size());
      }
      record_->at(row_end_++) = static_cast<std::uint8_t>(high << 4 | low);
    }
  }

  void end(const Arguments & /*words*/) {
    if (!order_) throw std::string("no byte order is given: `order big` or `order little`");
    if (contents_.model == LMAINTE_MODEL_NONE) throw std::string("no model is given, as by `model qe1`");
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

  struct Statement {
    const char *word;
    std::size_t words;
    const char *form;
    void (Reader::*read)(const Arguments &);
  };
  static constexpr Statement kStatements[] = {
      {"order", 2, "order big|little", &Reader::order},          {"model", 2, "model NAME", &Reader::model},
      {"database", 2, "database NUMBER|box", &Reader::database}, {"record", 3, "record NAME SIZE", &Reader::record},
      {"setting", 3, "setting KEY VALUE", &Reader::setting},     {"end", 1, "end", &Reader::end},
  };

  box::Contents contents_;
  std::map<std::string, box::Bytes> broken_;
  std::optional<std::endian> order_;
  std::set<std::string> databases_;
  std::map<std::string, box::Bytes> *database_ = nullptr;
  box::Bytes *record_ = nullptr;
  std::size_t row_end_ = 0;
  std::size_t line_number_ = 0;
  bool headed_ = false, ended_ = false, in_box_ = false;
};

}  // namespace

box::Contents read_dump(std::istream &in, const std::string &name) {
  return Reader().contents(in, name);
}

}  // namespace spbox
