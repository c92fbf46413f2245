// Records broken on purpose, to see what a command makes of them. Their whole content is kept until they are mended.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "host/box/place.h"

namespace box {

enum class Breakage { kMissing, kShort, kLong };

// A record by its database and name.
struct RecordName {
  std::uint32_t db_id;
  std::string name;

  bool operator==(const RecordName &) const = default;
};

struct BrokenRecord {
  RecordName record;
  std::optional<std::size_t> size;  // as it is; none: missing
  std::size_t whole;                // as it should be

  bool rewritten() const { return size == whole; }  // a command has written it anew since it was broken
};

// The record of this name, in whichever database it is or was before it was broken. Throws BoxError when there is
// none, and when there are several.
RecordName find_record(const Place &place, const std::string &name);
bool has_record(const Place &place, const std::string &name);

// Takes the records away, or their last bytes, or gives each a byte more: all or, when one cannot be broken so, none. One
// that is broken already is broken anew: what is kept of it stays or, where a command has written it anew since, becomes
// what the command wrote.
std::vector<BrokenRecord> break_records(const Place &place, const std::vector<RecordName> &records, Breakage breakage);

// The records that are broken on purpose.
std::vector<BrokenRecord> broken_records(const Place &place);

enum class Mended {
  kRestored,   // the content is as it was
  kRewritten,  // a command has written it anew since, in its right size: it stays
  kWhole       // nothing was broken on purpose
};
std::vector<Mended> mend_records(const Place &place, const std::vector<RecordName> &records);  // all or none

// The key under which the box's own database keeps the whole content of a broken record, and back.
std::string whole_key(const RecordName &record);
std::optional<RecordName> record_of_key(const std::string &key);

}  // namespace box
