// Readers of the inventory over damaged records, with a client that fails. Whatever is damaged: the result is one that the
// header lists, a failure is in the trace, no session stays open and no record stays in memory.
#include <algorithm>
#include <array>
#include <iterator>
#include <memory>
#include <vector>

#include "fuzz/library/machine.h"
#include "include/lmainte.h"
#include "tests/unit/doubles/units.h"

namespace fuzz {
namespace {

using Records = std::map<std::pair<std::uint32_t, std::string>, doubles::StoredRecord>;

const Records &whole_records() {
  static const Records kept = [] {
    machine().start();
    put_model(LMAINTE_MODEL_QE1);
    doubles::put_units();
    machine().stop();
    return machine().records;
  }();
  return kept;
}

void poke(doubles::StoredRecord &record, Source &source) {
  const std::size_t at = source.below(9000);
  const Input bytes = source.bytes(source.byte() % 17);
  if (at + bytes.size() > record.bytes.size()) return;
  std::copy(bytes.begin(), bytes.end(), record.bytes.begin() + static_cast<std::ptrdiff_t>(at));
}

// A record that is damaged: cut or longer, with other bytes, gone, or one that the client hands over in a wrong way.
void damage_a_record(Source &source) {
  auto &records = machine().records;
  if (records.empty()) return;
  const auto at = std::next(records.begin(), source.below(static_cast<std::uint32_t>(records.size())));
  switch (source.byte() % 6) {
    case 0:
      at->second.bytes.resize(source.below(9000));
      break;
    case 1:
      records.erase(at);
      break;
    case 2:
      at->second.result = source.number<std::int32_t>();
      break;
    case 3:
      at->second.hands_over = false;
      at->second.result = source.byte() + 1;
      break;
    default:
      poke(at->second, source);
  }
}

// A call of the client that fails. What must give something back does not: then it would have to stay.
void fail_a_call(Source &source) {
  constexpr std::array<const char *, 4> kCalls = {"open", "lock", "get", "calloc"};
  machine().fail(kCalls.at(source.byte() % kCalls.size()), source.byte() % 40 + 1, ENOMEM, source.byte() + 1);
}

void disturb(Source &source) {
  for (int left = source.byte() % 6; left > 0; --left) {
    if (source.flag()) {
      damage_a_record(source);
    } else {
      fail_a_call(source);
    }
  }
}

struct Arguments {
  std::int32_t first, count, model;
};

// Behind as many records as a caller promises there is no room for another one.
template <typename Record>
class Room {
 public:
  explicit Room(std::int32_t count) : records_(new Record[static_cast<std::size_t>(std::max(count, 1))]) {
    std::memset(static_cast<void *>(records_.get()), 0x5A,
                sizeof(Record) * static_cast<std::size_t>(std::max(count, 1)));
  }
  Record *get() const { return records_.get(); }

 private:
  std::unique_ptr<Record[]> records_;
};

template <typename Record, std::int32_t Read(std::int32_t, std::int32_t, std::int32_t, Record *)>
std::int32_t read(const Arguments &with) {
  const Room<Record> out(with.count);
  return Read(with.first, with.count, with.model, out.get());
}

std::int32_t get_system_status(const Arguments & /*with*/) {
  const Room<SystemStatus> out(1);
  return lmainte_get_system_status(out.get());
}
std::int32_t get_backplane(const Arguments &with) {
  const Room<Bp32Data> out(1);
  return lmainte_get_bp32_data(with.first, with.count, with.model, out.get());
}
std::int32_t get_all_emgbs(const Arguments &with) {
  const Room<EmgbUnitData> out(4);
  return lmainte_get_emgb_data_all(with.model, out.get());
}
std::int32_t get_emgb_pairs(const Arguments &with) {
  const Room<EmgbUnitData> out(4);
  return lmainte_get_emgb_data_pair(with.first, with.model, out.get());
}
std::int32_t get_coolgrp(const Arguments &with) {
  const Room<CoolgrpData> out(1);
  return lmainte_get_coolgrp_data(with.count % 2 != 0 ? LMAINTE_TYPE_PSU : LMAINTE_TYPE_FANTRAY, with.first, with.model,
                                  out.get());
}
std::int32_t get_fru(const Arguments &with) {
  constexpr std::array<std::int32_t, 9> kTypes = {16, 80, 161, 162, 176, 178, 180, 212, 128};
  const Room<SbData> out(with.count);
  return lmainte_get_fru_data(kTypes.at(static_cast<std::size_t>(with.model + 9) % kTypes.size()), with.first,
                              with.count, with.model, out.get());
}
std::int32_t get_model_data(const Arguments &with) {
  lmainte_model_data data = {};
  lmainte_cmdtime times[] = {{static_cast<std::uint32_t>(with.count), 0}, {LMAINTE_CMDTIME_END, 0}};
  return lmainte_get_model_data(&data, with.count % 2 != 0 ? times : nullptr);
}

// The next record of a run, as a client reads it: one record by its kind.
std::int32_t get_one_record(const Arguments &with) {
  if (lmainte_scdb_open(2) != 0) return LMAINTE_FAILED;
  void *record = nullptr;
  const auto result = static_cast<std::int32_t>(lmainte_scdb_lget(2, static_cast<std::uint32_t>(with.model), 16,
                                                                  static_cast<std::uint32_t>(with.first), &record));
  std::free(record);
  return lmainte_scdb_close(2) == 0 ? result : LMAINTE_FAILED;
}

struct Reader {
  const char *name;
  std::int32_t (*read)(const Arguments &with);
};

constexpr std::array<Reader, 16> kReaders{{
    {"lmainte_get_psu_data", read<PsuData, lmainte_get_psu_data>},
    {"lmainte_get_sb_data", read<SbData, lmainte_get_sb_data>},
    {"lmainte_get_xsb_data", read<XsbData, lmainte_get_xsb_data>},
    {"lmainte_get_fantray_data", read<FantrayData, lmainte_get_fantray_data>},
    {"lmainte_get_domain_data", read<DomainData, lmainte_get_domain_data>},
    {"lmainte_get_ddca_data", read<BpUnitData, lmainte_get_ddca_data>},
    {"lmainte_get_emgbu_data", read<EmgbUnitData, lmainte_get_emgbu_data>},
    {"lmainte_get_emgbr_data", read<EmgbUnitData, lmainte_get_emgbr_data>},
    {"lmainte_get_system_status", get_system_status},
    {"lmainte_get_bp32_data", get_backplane},
    {"lmainte_get_emgb_data_all", get_all_emgbs},
    {"lmainte_get_emgb_data_pair", get_emgb_pairs},
    {"lmainte_get_coolgrp_data", get_coolgrp},
    {"lmainte_get_fru_data", get_fru},
    {"lmainte_get_model_data", get_model_data},
    {"lmainte_scdb_lget", get_one_record},
}};

Arguments arguments_of(Source &source) {
  const auto first = static_cast<std::int8_t>(source.byte());
  const auto count = static_cast<std::int32_t>(source.byte() % 40) - 2;
  const bool is_large = source.byte() == 0xFF;
  const auto odd = source.number<std::int32_t>();
  return {is_large ? odd : first, count, static_cast<std::int32_t>(source.byte() % 9) - 1};
}

}  // namespace

void run_readers(Input input) {
  Source source(input);
  const Records &whole = whole_records();
  on_machine([&] {
    put_model(LMAINTE_MODEL_QE1);
    machine().records = whole;
    for (int calls = 0; calls < 4 && (calls == 0 || !source.empty()); ++calls) {
      disturb(source);
      const Reader &reader = kReaders.at(source.byte() % kReaders.size());
      const Arguments with = arguments_of(source);
      judged(reader.name, {LMAINTE_FAILED}, [&] { return reader.read(with); });
      check_trace();
      const doubles::Lines left = machine().left_behind();
      require(left.empty(), std::string(reader.name) + " leaves nothing behind" + (left.empty() ? "" : ": " + left[0]));
    }
  });
}

}  // namespace fuzz
