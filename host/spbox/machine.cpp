#include "host/spbox/machine.h"

#include <elf.h>
#include <endian.h>
#include <sys/auxv.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string_view>
#include <system_error>

#include "host/box/box_error.h"
#include "host/emulator/emulator.h"
#include "host/spbox/found_program.h"
#include "host/spbox/run_mark.h"
#include "host/spbox/standard_output.h"
#include "host/wire/message.h"

namespace spbox {
namespace {

namespace fs = std::filesystem;

constexpr const char *kName = "powerpc", *kEmulator = "qemu-ppc", *kLibraries = "/usr/powerpc-linux-gnu";
constexpr const char *kLoader = "lib/ld.so.1";

// In the root of a command.
constexpr const char *kProgramsInside = "/mgb/lib/programs";

// And in the folder of links.
constexpr const char *kCommands = "commands", *kPrograms = "programs";

// ---- Which machine a program is of: the words of its head that tell

struct Kind {
  unsigned char word_size = 0, byte_order = 0;
  std::uint16_t machine = 0;
  bool operator==(const Kind &) const = default;
};
constexpr Kind kTarget{EMULATED_WORD_SIZE, EMULATED_BYTE_ORDER, EMULATED_MACHINE};
constexpr Kind kCut{};  // it ends before its head does

// None where it is no program that the system loads by itself, such as a script.
std::optional<Kind> kind_of(const fs::path &program) {
  std::array<unsigned char, EMULATED_HEAD_SIZE> head{};
  std::ifstream file(program, std::ios::binary);
  file.read(reinterpret_cast<char *>(head.data()), head.size());
  if (std::memcmp(head.data(), "\177ELF", 4) != 0) return std::nullopt;
  if (!file) return kCut;
  const bool is_big = head[5] == 2;
  const auto machine = static_cast<std::uint16_t>(is_big ? head[18] << 8U | head[19] : head[19] << 8U | head[18]);
  return Kind{head[4], head[5], machine};
}

// How many bytes a program of the target has at the least, by its table of segments; the emulator would run it into what is missing.
std::uint64_t needed_by(const fs::path &program) {
  std::ifstream file(program, std::ios::binary);
  Elf32_Ehdr head{};
  file.read(reinterpret_cast<char *>(&head), sizeof head);
  std::uint64_t needed = be32toh(head.e_phoff) + std::uint64_t{be16toh(head.e_phnum)} * sizeof(Elf32_Phdr);
  file.seekg(be32toh(head.e_phoff));
  Elf32_Phdr segment{};
  for (int i = 0; i < be16toh(head.e_phnum); ++i) {
    if (!file.read(reinterpret_cast<char *>(&segment), sizeof segment)) break;
    if (segment.p_type == PT_NULL) continue;
    needed = std::max(needed, std::uint64_t{be32toh(segment.p_offset)} + be32toh(segment.p_filesz));
  }
  return needed;
}

// Empty where it is no script. The system reads as much.
std::string interpreter_of(const fs::path &script) {
  std::array<char, 256> head{};
  std::ifstream(script, std::ios::binary).read(head.data(), head.size() - 1);
  std::string line, interpreter;
  std::istringstream lines(head.data());
  std::getline(lines, line);
  if (line.starts_with("#!")) std::istringstream(line.substr(2)) >> interpreter;
  return interpreter;
}

// The system starts no program of another machine for a script, and whoever started that would take it for a script of the shell.
std::string why_no_script(const fs::path &program) {
  constexpr int kMostInterpreters = 5;  // as many the system follows
  std::string interpreter = interpreter_of(program);
  for (int i = 1; i < kMostInterpreters && !interpreter.empty() && !kind_of(interpreter); ++i) {
    interpreter = interpreter_of(interpreter);
  }
  if (interpreter.empty() || kind_of(interpreter) == kind_of("/proc/self/exe")) return {};
  if (kind_of(interpreter) == kTarget) {
    return "it is a script for " + interpreter + ", a program of a " + kName +
           ", which the system does not start by itself. Run that, with the script behind it.";
  }
  return kind_of(interpreter) ? "it is a script for " + interpreter + ", which cannot be run here." : "";
}

bool begins_with_one(const std::string &path, std::initializer_list<std::string_view> folders) {
  return std::ranges::any_of(folders, [&](std::string_view folder) { return path.starts_with(folder); });
}

bool is_of_system(const fs::path &program) {
  std::error_code error;
  return begins_with_one(fs::weakly_canonical(program, error).string(), {"/usr/", "/bin/", "/sbin/", "/mgb/"});
}

// ---- The programs that somebody in the box may start by name

void add_programs_in(const fs::path &folder, std::map<std::string, fs::path> &programs) {
  std::error_code error;
  for (const fs::directory_entry &entry : fs::directory_iterator(folder, error)) {
    std::error_code ignored;
    if (!entry.is_regular_file(ignored) || access(entry.path().c_str(), X_OK) != 0) continue;
    if (kind_of(entry.path()) == kTarget) programs.emplace(entry.path().filename(), fs::absolute(entry.path()));
  }
}

std::map<std::string, fs::path> programs_on_path() {
  std::map<std::string, fs::path> programs;
  const char *path = std::getenv("PATH");  // NOLINT(concurrency-mt-unsafe): one thread
  std::istringstream folders(path == nullptr ? "" : path);
  for (std::string folder; std::getline(folders, folder, ':');) {
    if (!begins_with_one(folder + "/", {"/usr/", "/bin/", "/sbin/", "/mgb/"})) {
      add_programs_in(folder.empty() ? "." : folder, programs);
    }
  }
  return programs;
}

// A sentence that says how it is had; empty where nothing is missing.
std::string what_is_missing() {
  const fs::path loader = fs::path(kLibraries) / kLoader;
  if (find_program(kEmulator).empty()) {
    return std::string(kEmulator) + " is missing: it runs the programs of a " + kName +
           ". Install it (apt install qemu-user).";
  }
  if (access(loader.c_str(), R_OK) == 0) return {};
  return loader.string() + " is missing: it is of the C library of a " + kName +
         ". Install it (apt install libc6-powerpc-cross).";
}

// ---- Inside

// Also where the link leads to what the root of a command does not show.
bool is_machine_here() {
  std::error_code error;
  return fs::is_symlink(EMULATOR, error);
}

// As the system finds it. Of the names that several folders have, that of the machine's program comes first.
fs::path found_inside(const std::string &name) {
  const fs::path of_machine = fs::path(kProgramsInside) / name;
  std::error_code error;
  if (name.find('/') == std::string::npos && fs::exists(of_machine, error)) return fs::read_symlink(of_machine, error);
  return find_program(name);
}

// Returns why it cannot be, as become_command does.
std::string emulate(const fs::path &program, char **words) {
  emulator_become(program.c_str(), words, environ);
  const int why = errno;
  if (access(program.c_str(), R_OK | X_OK) != 0) return {};
  std::error_code error;
  return "the emulator " + fs::read_symlink(EMULATOR, error).string() +
         " cannot be run in the box: " + std::generic_category().message(why) + ".";
}

}  // namespace

std::vector<std::string> words_on_machine(std::vector<std::string> words) {
  if (words.empty() || words[0] != EMULATOR) return words;
  std::size_t at = EMULATOR_OWN;
  while (at < words.size() && words[at] == EMULATOR_SETS) at += 2;
  if (words.size() < at + EMULATOR_NAMES) return words;
  const std::string name = words[at + 1];
  words.erase(words.begin(), words.begin() + static_cast<std::ptrdiff_t>(at) + 2);
  words[0] = name;
  return words;
}

Word MachineOption::word() {
  return {.name = "--machine",
          .help = "Run the command as a program of this machine,\nemulated: powerpc",
          .to = Choice{&name_, "machine", {kName}},
          .value = "MACHINE"};
}

std::vector<std::string> MachineOption::words() const {
  if (name_.empty()) return {};
  return {"--machine", name_};
}

std::optional<Machine> MachineOption::machine() const {
  if (name_.empty()) return std::nullopt;
  if (const std::string missing = what_is_missing(); !missing.empty()) throw std::runtime_error(missing);
  return Machine{.emulator = find_program(kEmulator),
                 .libraries = kLibraries,
                 .programs = programs_on_path(),
                 .socket = kPlatformSocket + name_of_this_run(),
                 .links = {}};
}

void MachineOption::check_is_installed() const {
  const std::string missing = name_.empty() ? "" : what_is_missing();
  if (!missing.empty()) throw UsageError(missing + " Nothing was played.");
}

void check_command(const std::string &name, const std::optional<Machine> &machine) {
  const fs::path program = program_of(name, machine);
  if (program.empty()) throw box::BoxError("the program " + name + " is not found in the folders of PATH.");
  const bool is_of_box = name.starts_with("/mgb/") || name.starts_with("/tmp/");
  if (is_of_box) return;
  if (!fs::is_regular_file(program) || access(program.c_str(), X_OK) != 0) {
    throw box::BoxError(name + " is no program that can be run.");
  }
  if (const std::string why = why_refused(program, machine.has_value()); !why.empty()) {
    throw box::BoxError(name + ": " + why);
  }
}

bool is_of_target(const fs::path &program) {
  return kind_of(program) == kTarget && kind_of("/proc/self/exe") != kTarget;
}

fs::path program_of(const std::string &name, const std::optional<Machine> &machine) {
  const bool is_machines = machine && machine->programs.contains(name);
  return is_machines ? machine->programs.at(name) : find_program(name);
}

void make_links(Machine &machine, const fs::path &folder) {
  machine.links = folder;
  for (const char *part : {kCommands, kPrograms}) fs::create_directories(folder / part);
  for (const auto &[name, program] : machine.programs) {
    fs::create_symlink("../spbox", folder / kCommands / name);
    fs::create_symlink(program, folder / kPrograms / name);
  }
}

// The emulator looks for each file below the folder of the machine first: what the workstation preloads is nothing for it.
std::vector<std::string> machine_arguments(const Machine &machine) {
  const std::string libraries = EMULATOR_LIBRARIES;
  return {"--ro-bind",
          machine.libraries / "lib",
          libraries + "/lib",
          "--symlink",
          "/dev/null",
          libraries + "/etc/ld.so.preload",
          "--symlink",
          machine.emulator,
          EMULATOR,
          "--symlink",
          "/mgb/run/" + machine.socket,
          std::string("/") + wire::kSocketLink,
          "--ro-bind",
          machine.links / kCommands,
          kCommandsInside,
          "--ro-bind",
          machine.links / kPrograms,
          kProgramsInside};
}

bool is_program_of_machine() {
  const auto *name = reinterpret_cast<const char *>(getauxval(AT_EXECFN));  // NOLINT(performance-no-int-to-ptr)
  if (name == nullptr || !std::string_view(name).starts_with(kCommandsInside)) return false;
  return name[std::string_view(kCommandsInside).size()] == '/';
}

int become_program_of_machine(char **argv) {
  const fs::path called(reinterpret_cast<const char *>(getauxval(AT_EXECFN)));  // NOLINT(performance-no-int-to-ptr)
  std::error_code error;
  const fs::path program = fs::read_symlink(kProgramsInside / called.filename(), error);
  std::string why = why_refused(program, true);
  if (why.empty()) why = emulate(program, argv);
  // NOLINTNEXTLINE(concurrency-mt-unsafe): one thread
  if (why.empty()) why = program.string() + " cannot be run: " + std::strerror(errno) + ".";
  complain(called.filename().string() + ": " + why);
  return 126;
}

std::string why_refused(const fs::path &program, bool is_on_machine) {
  const std::optional<Kind> kind = kind_of(program);
  const bool is_own = kind == kind_of("/proc/self/exe");
  if (kind == kCut) return "it is cut: its head alone is longer.";
  const bool is_unreadable = access(program.c_str(), X_OK) == 0 && access(program.c_str(), R_OK) != 0;
  if (is_on_machine && is_unreadable && !is_of_system(program)) {
    return "it cannot be read, and so nobody knows of which machine it is (see its permissions).";
  }
  if (kind && !is_own && kind != kTarget) return "it is a program of another machine, which cannot be run here.";
  if (kind == kTarget && !is_on_machine) {
    return std::string("it is a program of a ") + kName + ". Give --machine " + kName + " to run it.";
  }
  if (kind && is_own && is_on_machine && !is_of_system(program)) {
    return std::string("it is a program of this workstation, and not of a ") + kName +
           ". Build it for that, or leave out --machine.";
  }
  std::error_code error;
  if (kind == kTarget && is_on_machine && fs::file_size(program, error) < needed_by(program)) {
    return "it is cut: it has " + std::to_string(fs::file_size(program, error)) + " bytes, and needs " +
           std::to_string(needed_by(program)) + ".";
  }
  return kind ? "" : why_no_script(program);
}

std::string become_command(char **command) {
  const fs::path program = found_inside(command[0]);
  if (std::string why = why_refused(program, is_machine_here()); !why.empty()) return why;
  if (kind_of(program) == kTarget) return emulate(program, command);
  execvp(command[0], command);
  return {};
}

}  // namespace spbox
