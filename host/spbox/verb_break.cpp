// Records that are broken on purpose, and mended.
#include <memory>

#include "host/box/advice.h"
#include "host/box/breakage.h"
#include "host/box/inventory.h"
#include "host/spbox/bent_text.h"
#include "host/spbox/record_targets.h"
#include "host/spbox/standard_output.h"
#include "host/spbox/text.h"
#include "host/spbox/verbs.h"

namespace spbox {
namespace {

struct BreakOptions {
  std::filesystem::path box;
  std::vector<std::string> targets;
  bool identity = false, missing = false, shorter = false, longer = false;
};

std::vector<box::RecordName> records_of(const BreakOptions &options) {
  return records_named(box::Place(options.box), options.targets, options.identity);
}

std::string what_it_is(const box::BrokenRecord &broken) {
  if (!broken.size) return "is missing";
  if (broken.rewritten()) return "was written again after it was broken, and is whole";
  return "is " + std::to_string(*broken.size) + " bytes, should be " + std::to_string(broken.whole);
}

std::string record_text(const box::RecordName &record) {
  return "Record " + record.name + " (database " + std::to_string(record.db_id) + ")";
}

}  // namespace

std::string broken_text(const box::BrokenRecord &broken) {
  return record_text(broken.record) + " " + what_it_is(broken);
}

namespace {

// What can no longer be read, as far as it fits on a line; empty where it is no unit.
std::string spoiled(const box::Inventory &inventory, const std::string &record) {
  std::vector<std::string> units;
  for (const box::UnitPlace &place : inventory.places()) {
    for (const box::UnitEntry &entry : place.entries) {
      if (entry.record == record || entry.fru_record == record) units.push_back(place.name);
    }
  }
  if (units.empty()) return "";
  const std::string more = units.size() > 1 ? " and " + std::to_string(units.size() - 1) + " more" : "";
  return "It holds " + units.front() + more + ".";
}

int list_broken(const box::Place &place) {
  const std::vector<box::BrokenRecord> all = box::broken_records(place);
  if (all.empty()) print_line("No record is broken on purpose.");
  for (const box::BrokenRecord &broken : all) print_line(broken_text(broken) + ".");
  return 0;
}

int break_records(const BreakOptions &options) {
  const box::Place place(options.box);
  const box::Inventory inventory(place);
  if (options.targets.empty()) return list_broken(place);
  const box::Breakage breakage = options.missing   ? box::Breakage::kMissing
                                 : options.shorter ? box::Breakage::kShort
                                                   : box::Breakage::kLong;
  for (const box::BrokenRecord &broken : box::break_records(place, records_of(options), breakage)) {
    const std::string &name = broken.record.name;
    print_line(broken_text(broken) + ".");
    if (const std::string units = spoiled(inventory, name); !units.empty()) print_line(units);
    print_line(box::advice({"mend", place.root(), name}) + " restores it.");
  }
  return 0;
}

const char *what_became_of_it(box::Mended mended) {
  switch (mended) {
    case box::Mended::kRestored:
      return "is as it was";
    case box::Mended::kRewritten:
      return "was written again after it was broken, and stays";
    case box::Mended::kWhole:
      break;
  }
  return "was not broken on purpose";
}

int mend_records(const BreakOptions &options) {
  const box::Place place(options.box);
  std::vector<box::RecordName> records = records_of(options);
  if (options.targets.empty()) {
    for (const box::BrokenRecord &broken : box::broken_records(place)) records.push_back(broken.record);
    if (records.empty()) print_line("No record is broken on purpose.");
  }
  const std::vector<box::Mended> mended = box::mend_records(place, records);
  for (std::size_t i = 0; i < records.size(); ++i) {
    print_line(record_text(records[i]) + " " + what_became_of_it(mended[i]) + ".");
  }
  return 0;
}

void check_identity(const BreakOptions &options) {
  if (options.targets.empty() && options.identity) throw UsageError("--fru needs a unit, and no unit is named.");
}

void check_breakage(const BreakOptions &options) {
  check_identity(options);
  const bool how_is_said = options.missing || options.shorter || options.longer;
  if (options.targets.empty() && how_is_said) throw UsageError("no unit and no record is named.");
  if (!options.targets.empty() && !how_is_said) {
    throw UsageError("how is the record to be broken? Give --missing, --short or --long.");
  }
}

Word targets_word(BreakOptions &options, const std::string &help) {
  return {.name = "UNIT|RECORD", .help = help, .to = &options.targets};
}

Word identity_option(BreakOptions &options) {
  return {.name = "--fru", .help = "The unit's identity record, not that of its state", .to = &options.identity};
}

}  // namespace

Verb break_verb() {
  auto options = std::make_shared<BreakOptions>();
  return {.name = "break",
          .line = "Break records on purpose: missing, too short, too long",
          .works_on_box = true,
          .words = {box_word(options->box),
                    targets_word(*options, "Units or names of records; without any, what is broken is\nshown"),
                    identity_option(*options),
                    {.name = "--missing",
                     .help = "The record is not there",
                     .to = &options->missing,
                     .excludes = {"--short", "--long"}},
                    {.name = "--short",
                     .help = "The record is one byte too short",
                     .to = &options->shorter,
                     .excludes = {"--long"}},
                    {.name = "--long", .help = "The record is one byte too long", .to = &options->longer}},
          .footer =
              "Many units may share a record; it is broken for all of them. `spbox show` names\n"
              "the records of a unit. A dump keeps what is broken. If one record cannot be\n"
              "broken, none is.\n\n"
              "Examples:\n"
              "  spbox break box /PSU#3 --fru --missing      its identity record\n"
              "  spbox break box current_domain_info_05 --short\n"
              "  spbox break box                             what is broken",
          .check = [options] { check_breakage(*options); },
          .act = [options] { return break_records(*options); },
          .as_step = step_of_verb("break", [options] { return !options->targets.empty(); })};
}

Verb mend_verb() {
  auto options = std::make_shared<BreakOptions>();
  return {.name = "mend",
          .line = "Restore the records that were broken on purpose",
          .works_on_box = true,
          .words = {box_word(options->box), targets_word(*options, "Only these; without any, all"),
                    identity_option(*options)},
          .footer = "Examples:\n  spbox mend box\n  spbox mend box /PSU#3 --fru",
          .check = [options] { check_identity(*options); },
          .act = [options] { return mend_records(*options); },
          .as_step = step_of_verb("mend")};
}

}  // namespace spbox
