// Where things lie in a box: a folder that is a service processor.
#pragma once

#include <array>
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <utility>

namespace box {

// The databases: ids 0 to 5 are the configuration databases, and the box has one of its own for what a real service
// processor keeps in its hardware: LEDs, maintenance flags, fan speeds, and how its control programs are bent.
inline constexpr std::uint32_t kDatabaseCount = 6;
inline constexpr std::uint32_t kOwnDatabase = kDatabaseCount;  // the box's own
inline constexpr std::uint32_t kStoreSize = kDatabaseCount + 1;

// A database by the folder whose files hold all databases of a box, and its number there.
struct DatabaseName {
  std::filesystem::path folder;
  std::uint32_t number;

  std::string text() const;  // as people read it: "database 2 in box/mgb/db"
};

// Below the box's folder. Whoever writes the trace may have no memory to allocate a path.
inline constexpr char kTracePath[] = "mgb/log/trace";
inline constexpr char kCallsPath[] = "mgb/log/calls";
inline constexpr char kPointsPath[] = "mgb/db/points";

class Place {
 public:
  // `root` is the box's folder; inside the root of a running command it is "/".
  explicit Place(std::filesystem::path root) : root_(std::move(root)) {}

  // The box in which this process runs: the folder in the environment variable LMAINTE_HOST_ROOT, or "/".
  static Place here();

  const std::filesystem::path &root() const { return root_; }
  std::filesystem::path databases() const { return root_ / "mgb/db"; }
  DatabaseName database(std::uint32_t db_id) const { return {databases(), db_id}; }
  DatabaseName hardware() const { return {databases(), kOwnDatabase}; }
  std::filesystem::path trace() const { return root_ / kTracePath; }
  std::filesystem::path calls() const { return root_ / kCallsPath; }
  std::filesystem::path points() const { return root_ / kPointsPath; }
  std::filesystem::path events() const { return root_ / "mgb/log/events"; }
  std::filesystem::path daemons() const { return root_ / "mgb/run"; }
  std::filesystem::path clock() const { return root_ / "mgb/lib/clock"; }  // not seen in a command's root
  std::filesystem::path etc() const { return root_ / "mgb/cli/etc"; }
  std::filesystem::path tmp() const { return root_ / "tmp"; }

 private:
  std::filesystem::path root_;
};

// What the configuration databases are for, by id.
inline constexpr std::array<std::string_view, kDatabaseCount> kDatabaseNames{"general", "setup", "current",
                                                                             "local",   "FRU",   "reserved"};

}  // namespace box
