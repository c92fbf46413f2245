// The data file of the databases, forged. Whatever stands there: it is named, or LMDB reads and saves it as it should be.
#include <filesystem>
#include <fstream>
#include <map>
#include <optional>
#include <stdexcept>
#include <vector>

#include "fuzz/box/targets.h"
#include "host/box/data_pages.h"

namespace fuzz {
namespace {

using box::Database;

constexpr std::size_t kPageSize = 4096;

std::string bytes_in(const std::filesystem::path &file) {
  std::ifstream in(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

// What is said of a file that is accepted.
std::optional<box::Seal> accepted(const std::string &text) {
  // On the heap without a byte more, so that a sanitizer sees each byte that is read behind the end.
  const std::vector<std::uint8_t> bytes(text.begin(), text.end());
  std::optional<box::Seal> seal;
  try {
    const box::Heads heads = box::heads_of(bytes);
    if (heads.last_page < bytes.size() / heads.page) seal = box::examine(bytes, heads);
  } catch (const box::Damage &damage) {
    require(!std::string(damage.what()).empty(), "damage is named");
  }
  return seal;
}

// A file with records of all sizes in two databases, some in pages of their own, some changed, some gone.
struct Whole {
  explicit Whole(int saves) : folder(scratch() / ("saves" + std::to_string(saves))) {
    Database current({folder, 2}, true), own({folder, 6});
    for (int save = 1; save <= saves; ++save) {
      require(current.lock() && own.lock(), "nobody else has the locks");
      for (int i = 0; i < 40; ++i) {
        const auto size = static_cast<std::size_t>(i) * (i % 20 == 7 ? 300 : 7);
        current.put("record " + std::to_string(i), box::Bytes(size, static_cast<std::uint8_t>(save)));
      }
      current.remove("record " + std::to_string(save));
      own.put("/PSU#" + std::to_string(save), box::Bytes{'o', 'n'});
      Database::unlock_together({&current, &own});
    }
    records = Database::all_in(folder);
    bytes = bytes_in(folder / "data.mdb");
    const auto found = accepted(bytes);
    require(found.has_value(), "a file that nobody forged is accepted");
    seal = *found;
  }

  std::filesystem::path folder;
  std::array<Database::Records, 7> records;
  std::string bytes;
  box::Seal seal;
};

Whole &whole_after(int saves) {
  static std::map<int, std::unique_ptr<Whole>> all;
  auto &kept = all[saves];
  if (kept == nullptr) kept = std::make_unique<Whole>(saves);
  return *kept;
}

void forge(std::string &file, Source &source) {
  const std::size_t pages = file.size() / kPageSize;
  const unsigned how = source.byte() % 4;
  const std::size_t at = source.below(static_cast<std::uint32_t>(pages)) * kPageSize;
  if (how == 0) {
    const std::size_t from = source.below(static_cast<std::uint32_t>(pages)) * kPageSize;
    file.replace(at, kPageSize, std::string(file, from, kPageSize));
  } else if (how == 1) {
    file.resize(at + source.below(kPageSize));
  } else {
    // The first bytes of a page say most.
    const std::size_t offset = source.below(how == 2 ? 160 : kPageSize);
    const std::string bytes = text_of(source.bytes(1 + source.byte() % 16));
    file.replace(at + offset, std::min(bytes.size(), file.size() - at - offset), bytes, 0, file.size() - at - offset);
  }
}

// LMDB reads what was accepted, and saves more of it. It may still refuse a file, and then says so.
void use(const Whole &whole, const std::string &file, const box::Seal &seal) {
  write_file(whole.folder / "forged", file);
  std::filesystem::rename(whole.folder / "forged", whole.folder / "data.mdb");
  const std::string refusal = refusal_of<std::runtime_error>("a file", [&] {
    auto records = Database::all_in(whole.folder);
    const bool same_seal = seal.save == whole.seal.save && seal.sum == whole.seal.sum;
    require(!same_seal || records == whole.records, "what is accepted holds the records that were saved");
    records.at(2)["new"] = box::Bytes(5000, 1);
    Database({whole.folder, 2}).put("new", records.at(2)["new"]);
    require(Database::all_in(whole.folder) == records, "a record that is saved is there, and so are all others");
    require(accepted(bytes_in(whole.folder / "data.mdb")).has_value(), "what was saved then is accepted");
  });
  require(refusal.empty() || file != whole.bytes, "a file that nobody forged is not refused");
}

}  // namespace

void run_data_pages(Input input) {
  Source source(input);
  const unsigned kind = source.byte() % 4;
  const Whole &whole = whole_after(kind == 3 ? 1 : static_cast<int>(kind) + 1);
  std::string file = kind == 3 ? source.all_text() : whole.bytes;
  while (!source.empty() && file.size() >= kPageSize) forge(file, source);
  if (const auto seal = accepted(file)) use(whole, file, *seal);
}

}  // namespace fuzz
