// What the public header promises of its records, and of constants that programs elsewhere know as numbers.

#include <fstream>
#include <map>
#include <regex>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

#include "include/lmainte.h"

namespace {

using Sizes = std::map<std::string, size_t>;

std::string header() {
  std::ostringstream text;
  text << std::ifstream(PUBLIC_HEADER).rdbuf();
  return text.str();
}

// The header's table: a name and a size, or the sizes with 32-bit and with 64-bit pointers.
Sizes promised() {
  const std::string all = header();
  const size_t begin = all.find("In bytes:"), end = all.find("*/", begin);
  const std::string table = all.substr(begin, end - begin);
  const std::regex row(R"((\w+) (\d+)(/(\d+))?)");
  Sizes sizes;
  for (std::sregex_iterator at(table.begin(), table.end(), row), none; at != none; ++at) {
    const bool is_second = (*at)[4].matched && sizeof(void *) == 8;
    sizes[(*at)[1]] = std::stoul((*at)[is_second ? 4 : 2]);
  }
  return sizes;
}

// The records that the header declares.
Sizes declared() {
  const std::string all = header();
  const std::regex end_of_record(R"(\n\} (\w+);)");
  Sizes records;
  for (std::sregex_iterator at(all.begin(), all.end(), end_of_record), none; at != none; ++at) records[(*at)[1]] = 0;
  return records;
}

#define RECORD(type) \
  { #type, sizeof(type) }

TEST(PublicHeader, PromisesTheSizesThatItsRecordsHave) {
  EXPECT_EQ(promised(), (Sizes{RECORD(lmainte_unit_slot),
                               RECORD(lmainte_model_data),
                               RECORD(lmainte_cmdtime),
                               RECORD(lmainte_unit_name),
                               RECORD(lmainte_unit_code),
                               RECORD(lmainte_unit_position),
                               RECORD(lmainte_fru_type),
                               RECORD(lmainte_path_component),
                               RECORD(lmainte_access_entry),
                               RECORD(UnitData),
                               RECORD(CmuData),
                               RECORD(IouData),
                               RECORD(SbData),
                               RECORD(XsbData),
                               RECORD(FanData),
                               RECORD(FantrayData),
                               RECORD(lmainte_fan_count),
                               RECORD(CoolgrpData),
                               RECORD(DomainData),
                               RECORD(SystemStatus),
                               RECORD(BpUnitData),
                               RECORD(Bp32Data),
                               RECORD(EmgbUnitData),
                               RECORD(PsuData),
                               RECORD(lmainte_signal_entry),
                               RECORD(lmainte_mask_entry),
                               RECORD(UnitRecord),
                               RECORD(ClearRequest),
                               RECORD(ListLine),
                               RECORD(IoxBoatData),
                               RECORD(IoxListData),
                               RECORD(DotParam),
                               RECORD(lmainte_event_code),
                               RECORD(EventUnit),
                               RECORD(lmainte_swap_fru)}));
}

#undef RECORD

TEST(PublicHeader, PromisesASizeForEachRecordThatItDeclares) {
  Sizes names = promised();
  for (auto &[name, size] : names) size = 0;
  EXPECT_EQ(names, declared());
}

struct Constant {
  const char *says;
  int64_t value;
  int64_t number;
};

TEST(PublicHeader, NamesTheNumbersThatOtherProgramsKnow) {
  const Constant constants[] = {
      {"a choice was made", LMAINTE_ASK_CHOSEN, 0},
      {"the operator gave up", LMAINTE_ASK_GAVE_UP, 1},
      {"the input ended", LMAINTE_ASK_END_OF_INPUT, 2},
      {"a signal came", LMAINTE_ASK_INTERRUPTED, 3},
      {"nothing could be asked", LMAINTE_ASK_FAILED, -1},
      {"the log's kind of a CMU", LMAINTE_KIND_CMU, 0},
      {"of an IOU", LMAINTE_KIND_IOU, 1},
      {"of a fan tray", LMAINTE_KIND_FANTRAY, 2},
      {"of a power supply", LMAINTE_KIND_PSU, 3},
      {"of a DDC unit", LMAINTE_KIND_DDC, 7},
      {"bit 7 of the system's flags", LMAINTE_SYSTEM_ALL_PSUS, 1 << 7},
      {"bit 15 of a status word", LMAINTE_STATUS_MARKED, 1 << 15},
      {"bit 30 of a slot's power word", LMAINTE_PCI_POWER, 1 << 30},
      {"bit 16 of a service processor unit's faults", LMAINTE_EMGB_FAULTED, 1 << 16},
      {"bit 15 of them", LMAINTE_EMGB_DEGRADED, 1 << 15},
      {"bit 31 of its role", LMAINTE_EMGBU_OTHER, int64_t{1} << 31},
      {"bit 30 of it", LMAINTE_EMGBR_OWN, 1 << 30},
      {"bit 29 of it", LMAINTE_EMGBR_OTHER, 1 << 29},
  };
  for (const Constant &constant : constants) EXPECT_EQ(constant.value, constant.number) << constant.says;
}

}  // namespace
