// The kinds of unit that a procedure handles on a server: how many there are, their records, their list and their status table.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "include/lmainte.h"
#include "procedure/server.h"
#include "procedure/text.h"

namespace lmainte::procedure {

// Room for the record of any unit; a board's is the largest.
struct AnyRecord {
  alignas(SbData) std::byte bytes[sizeof(SbData)];

  template <class Record>
  const Record &as() const {
    static_assert(sizeof(Record) <= sizeof bytes);
    return *reinterpret_cast<const Record *>(bytes);
  }
};

struct Kind {
  const char *word;  // on the command line
  const char *one;
  const char *many;
  int32_t type;
  int32_t event_kind;                 // in the log: LMAINTE_KIND_...
  uint32_t (*count)(const Server &);  // how many the model holds
  size_t record_size;                 // of what lmainte_get_fru_data fills in for a unit
  size_t head;                        // where the unit stands in it: a board's record is of two units
  const char *columns;                // over the list
  const char *legend[2];              // under it: what its columns and signs mean; null: the number of units
  int32_t (*show_list)(const Server &, uint32_t count, const void *records, const ListLine *);
  int32_t (*show_status)(const AnyRecord &, const ListLine *);

  bool is_board() const { return type == LMAINTE_TYPE_CMU || type == LMAINTE_TYPE_IOU; }
};

struct Kinds {
  static constexpr size_t kMost = 8;  // room for all of them

  const Kind *begin() const;
  const Kind *end() const;
};
constexpr Kinds kKinds;

// Null where there is none.
const Kind *kind_named(const char *word);
const Kind *kind_of_type(int32_t type);

// A unit as the operations and the log take it, and its status word.
struct Unit {
  UnitRecord record{};
  uint32_t status = 0;

  const char *name() const { return record.name; }
  bool is_installed() const { return (status & LMAINTE_STATUS_INSTALLED) != 0; }
  bool is_faulted() const { return (status & LMAINTE_STATUS_FAULTED) != 0; }
  bool is_healthy() const {
    return is_installed() && (status & (LMAINTE_STATUS_FAULTED | LMAINTE_STATUS_DEGRADED)) == 0;
  }
};

// The unit of a record. False where it has no location.
bool take_unit(const Kind &kind, const void *record, Unit &unit);
uint32_t status_of(const Kind &kind, const void *record);

int32_t read_one(const Server &server, const Kind &kind, int32_t number, AnyRecord &record);

// All units of a kind, in the order of their list: the number on the list is the record's place, counted from 1.
class Units {
 public:
  Units(const Server &server, const Kind &kind) : server_(server), kind_(kind), count_(kind.count(server)) {}
  ~Units() { free(records_); }
  Units(const Units &) = delete;
  Units &operator=(const Units &) = delete;

  int32_t read();
  uint32_t count() const { return count_; }
  const void *at(size_t place) const { return records_ + place * kind_.record_size; }
  int32_t show() const;

 private:
  const Server &server_;
  const Kind &kind_;
  uint32_t count_;
  std::byte *records_ = nullptr;
};

// The domains that run on a board of the high end: "domain 1", "domains 2, 7"; empty where none does.
int32_t read_domains(const Server &server, int32_t board, Text &domains);

}  // namespace lmainte::procedure
