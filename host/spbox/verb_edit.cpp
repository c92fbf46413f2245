// One record of a box, changed as the text of a dump or by bytes.
#include <algorithm>
#include <memory>

#include "host/base/number.h"
#include "host/base/told.h"
#include "host/box/advice.h"
#include "host/box/confinement.h"
#include "host/box/contents.h"
#include "host/box/record_set.h"
#include "host/box/record_words.h"
#include "host/recorder/deed.h"
#include "host/script/values.h"
#include "host/spbox/answer.h"
#include "host/spbox/dump.h"
#include "host/spbox/editor.h"
#include "host/spbox/record_targets.h"
#include "host/spbox/standard_output.h"
#include "host/spbox/verbs.h"

namespace spbox {
namespace {

// "44:0180" puts two bytes from byte 44 on.
struct BytesAt {
  std::size_t at;
  box::Bytes bytes;
};

struct EditOptions {
  std::filesystem::path box;
  std::string target;
  std::vector<std::string> words;
  std::vector<BytesAt> changes;
  bool identity = false, prints = false;
};

BytesAt bytes_in(const std::string &word) {
  const std::size_t colon = std::min(word.find(':'), word.size());
  const auto at = base::number_in<std::size_t>(word.substr(0, colon));
  const std::string digits = word.substr(std::min(colon + 1, word.size()));
  BytesAt change{at.value_or(0), {}};
  bool is_good = at && !digits.empty() && digits.size() % 2 == 0;
  for (std::size_t i = 0; is_good && i < digits.size(); i += 2) {
    const auto high = script::hexadecimal_digit(digits[i]), low = script::hexadecimal_digit(digits[i + 1]);
    is_good = high && low;
    if (is_good) change.bytes.push_back(static_cast<std::uint8_t>(*high * 16 + *low));
  }
  if (is_good) return change;
  throw UsageError("`" + word + "` is not a place and its bytes, such as 44:0180: byte 44 is 01, and byte 45 is 80.");
}

// The record as it is now, in contents that have no other one. Their model tells how it is written down.
box::Contents contents_with(const box::Place &place, const EditOptions &options) {
  const box::RecordName record = records_named(place, {options.target}, options.identity).front();
  box::Contents contents;
  contents.model = box::model_of_box(place);
  const auto bytes = box::Database(place.database(record.db_id)).get(record.name);
  if (!bytes) {
    throw box::BoxError("record " + record.name + " is missing. " + box::advice({"mend", place.root(), record.name}) +
                        " restores one that was broken on purpose.");
  }
  contents.records.at(record.db_id).emplace(record.name, *bytes);
  return contents;
}

// A record with its bytes, the most significant one of a word first, as a dump has them.
struct Written {
  box::RecordName record;
  box::Bytes bytes;
};

std::vector<Written> written_in(const box::Contents &contents) {
  std::vector<Written> all;
  for (std::uint32_t db_id = 0; db_id < box::kDatabaseCount; ++db_id) {
    for (const auto &[name, bytes] : contents.records.at(db_id)) {
      all.push_back({{db_id, name}, bytes});
      box::swap_to_big_endian(name, all.back().bytes);
    }
  }
  return all;
}

// Under the database's lock: what somebody else has written meanwhile is not lost.
void save(const box::Place &place, const Written &before, const Written &after) {
  box::Bytes was = before.bytes, now = after.bytes;
  box::swap_to_big_endian(before.record.name, was);
  box::swap_to_big_endian(after.record.name, now);
  box::Database database(place.database(before.record.db_id));
  box::lock(database);
  if (database.get(before.record.name) != was) {
    throw box::BoxError("somebody else has changed the record meanwhile. Nothing is changed.");
  }
  database.put(before.record.name, now);
  box::save({&database});
}

Written changed(Written record, const std::vector<BytesAt> &changes) {
  for (const BytesAt &change : changes) {
    const std::size_t room = record.bytes.size() - std::min(change.at, record.bytes.size());
    if (room < change.bytes.size()) {
      throw box::BoxError("record " + record.record.name + " has " + std::to_string(record.bytes.size()) +
                          " bytes, which end before " + std::to_string(change.at) + ":... does.");
    }
    std::ranges::copy(change.bytes, record.bytes.begin() + static_cast<std::ptrdiff_t>(change.at));
  }
  return record;
}

// What the user has written is taken only where it is the same record in its whole length.
Written taken(const Written &before, const std::string &text) {
  const std::vector<Written> all = written_in(read_dump(text, "the text"));
  if (all.size() != 1 || !(all.front().record == before.record)) {
    throw box::BoxError("the text is to hold record " + before.record.name + " of database " +
                        std::to_string(before.record.db_id) + ", and nothing else.");
  }
  if (all.front().bytes.size() != before.bytes.size()) {
    throw box::BoxError("the text has a record of " + std::to_string(all.front().bytes.size()) +
                        " bytes, it should be " + std::to_string(before.bytes.size()) + ".");
  }
  return all.front();
}

// The step of a play that makes the same change: a word for each run of bytes that differ.
std::vector<std::string> step_of(const Written &before, const Written &after) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  std::vector<std::string> step{"spbox", "edit", before.record.name};
  const auto differs = [&](std::size_t at) { return at < after.bytes.size() && before.bytes[at] != after.bytes[at]; };
  for (std::size_t at = 0; at < after.bytes.size(); ++at) {
    if (!differs(at)) continue;
    std::string word = std::to_string(at) + ":";
    for (; differs(at); ++at) {
      word.push_back(kDigits[after.bytes[at] >> 4U]);
      word.push_back(kDigits[after.bytes[at] & 15U]);
    }
    step.push_back(word);
  }
  return step;
}

int edit_by_hand(const box::Place &place, const EditOptions &options) {
  const std::string before = box::in_confinement(place, [&] { return dump_of_records(contents_with(place, options)); });
  EditedText file(before);
  const std::string after = file.edited();
  if (after == before) {
    print_line("Nothing is changed.");
    return 0;
  }
  try {
    const Written was = written_in(read_dump(before, "the record")).front(), now = taken(was, after);
    recorder::Deed deed(place, step_of(was, now));
    box::in_confinement(place, [&] {
      save(place, was, now);
      return std::string();
    });
    deed.was_done();
  } catch (const std::exception &error) {
    throw box::BoxError(base::told(error) + " What you have written is in " + file.keep().string() + ".");
  }
  return 0;
}

int edit(const EditOptions &options) {
  const box::Place place(options.box);
  if (options.changes.empty() && !options.prints) return edit_by_hand(place, options);
  box::confine_to(place);
  const box::Contents contents = contents_with(place, options);
  if (options.prints) {
    const std::string text = dump_of_records(contents);
    show({{"dump", text}}, text);
  } else {
    const Written record = written_in(contents).front();
    save(place, record, changed(record, options.changes));
  }
  return 0;
}

void check(EditOptions &options) {
  for (const std::string &word : options.words) options.changes.push_back(bytes_in(word));
  if (options.prints && !options.words.empty()) throw UsageError("--print changes nothing: leave the bytes out.");
}

}  // namespace

Verb edit_verb() {
  auto options = std::make_shared<EditOptions>();
  return {.name = "edit",
          .line = "Change one record, in your editor or by bytes",
          .works_on_box = true,
          .words = {box_word(options->box),
                    {.name = "UNIT|RECORD",
                     .help = "The name of a record, or a unit that is written in it",
                     .to = &options->target,
                     .need = Need::kRequired},
                    {.name = "PLACE:BYTES",
                     .help = "These bytes from this one on, without an editor, such as\n"
                             "44:0180; of a word, the most significant one first",
                     .to = &options->words},
                    {.name = "--fru",
                     .help = "The unit's identity record, not that of its state",
                     .to = &options->identity},
                    {.name = "--print", .help = "Print the text, and change nothing", .to = &options->prints}},
          .footer =
              "The editor is that of VISUAL or EDITOR. The record is taken back only when it is\n"
              "whole, has its size, and nobody else has changed it meanwhile. Otherwise what\n"
              "you have written stays in a file. `spbox break` makes a record shorter or\n"
              "longer.\n\n"
              "Examples:\n"
              "  spbox edit box /PSU#3\n"
              "  spbox edit box current_domain_info_05 44:01",
          .check = [options] { check(*options); },
          .act = [options] { return edit(*options); },
          .acts_confined = false,  // an editor is run; all else is confined
          .as_step = step_of_verb("edit", [options] { return !options->changes.empty(); })};
}

}  // namespace spbox
