// What a box, a dump, a script or a command line has in it is shown by the terminal, and never obeyed.
#include <fstream>
#include <set>
#include <sstream>

#include "host/base/quoted.h"
#include "tests/host/spbox/spbox_test.h"

namespace {

namespace fs = std::filesystem;

// An erasure in each form that terminals know, a bell, a rubout, and a byte that is no text.
const std::string kBytes = "\x1b[2J\x07\x7f\xc2\x9bm\xff";
const std::string kShown = R"(\x1b[2J\x07\x7f\xc2\x9bm\xff)";
const std::string kInJson = R"(\u001b[2J\u0007\u007f\u009bm)"
                            "\xef\xbf\xbd";

class Shown : public SpboxTest {
 protected:
  // A box of a dump in which names, settings and a FRU name are hostile.
  void make_hostile_box() {
    make_box("qe1");
    std::string dump = done({"dump", "box"});
    dump.erase(dump.rfind("\nend\n"));
    for (const char *known : {"setting fan ", "setting \"power /IOX@0A21\" "}) {
      const std::size_t line = dump.find(known);
      dump.erase(line, dump.find('\n', line) - line);
    }
    for (const char *key : {"fan", "led /PSU#0", "power /IOX@0A21", "led /odd", "mirror 1", "link /CMU#0"}) {
      dump += "\nsetting \"" + std::string(key) + "\" \"" + kShown + "\"";
    }
    dump += "\nsetting \"led " + kShown + "\" on";
    dump += "\nrecord \"whole 5 " + kShown + "\" 0";
    dump += "\nsetting \"ran ctlled\" \"1 2 3 " + kShown + "\"\nend\n";
    write("hostile.dump", dump);
    done({"load", "hostile.dump", "box", "--force"});
    box::Bytes fru = record(4, "fru_psu_qe_info_00");
    fru[79] = static_cast<std::uint8_t>(kBytes.size());
    std::copy(kBytes.begin(), kBytes.end(), fru.begin() + 80);
    box::Database(place().database(4)).put("fru_psu_qe_info_00", fru);
  }

  std::string output(const Words &words) const { return spbox(words).output; }

  void expect_shown(const Words &words, const std::string &form = kShown) const {
    std::string line = "spbox";
    for (const std::string &word : words) line += " " + base::quoted(word);
    const std::string text = output(words);
    for (const char *const bytes : {"\x1b", "\x07", "\x7f", "\xc2\x9b", "\xff"}) {
      EXPECT_EQ(text.find(bytes), std::string::npos) << line << " lets " << base::quoted(bytes) << " through";
    }
    EXPECT_NE(text.find(form), std::string::npos) << line << " shows nothing of it:\n" << text;
  }
};

TEST_F(Shown, IsWhatABoxHolds) {
  make_hostile_box();
  expect_shown({"units", "box"});
  EXPECT_NE(output({"units", "box"}).find("fans " + kShown + "\n"), std::string::npos) << "in the heading";
  expect_shown({"units", "box", "/PSU#0"});
  expect_shown({"show", "box", "/PSU#0"});
  expect_shown({"show", "box", "/IOX@0A21"});
  expect_shown({"break", "box"});
  expect_shown({"break", "box", kBytes, "--short"});
  expect_shown({"program", "box", "ctlled"});
  expect_shown({"dump", "box"});
  expect_shown({"mend", "box"});
}

TEST_F(Shown, IsWhatAScriptReadsAsJson) {
  make_hostile_box();
  expect_shown({"units", "box", "--json"}, kInJson);
  expect_shown({"show", "box", "/PSU#0", "--json"}, kInJson);
  expect_shown({"show", "box", "/IOX@0A21", "--json"}, kInJson);
  expect_shown({"program", "box", "ctlled", "--json"}, kInJson);
}

TEST_F(Shown, IsWhatACommandLineOrAFileSays) {
  make_box("qa");
  write("hostile.dump", "spbox dump 1\n" + kBytes + "\n");
  write("hostile.play", "box " + kBytes + "\n");
  write("hostile.txt", "pull " + kBytes + "\n");
  expect_shown({kBytes});
  expect_shown({"units", kBytes});
  expect_shown({"units", "box", kBytes});
  expect_shown({"show", "box", kBytes});
  expect_shown({"break", "box", kBytes, "--short"});
  expect_shown({"pull", "box", kBytes});
  expect_shown({"program", "box", kBytes});
  expect_shown({"create", kBytes, "--model", "qa"});
  expect_shown({"load", "hostile.dump", "new"});
  expect_shown({"load", kBytes, "new"});
  expect_shown({"play", "hostile.play"});
  expect_shown({"technician", "box", "hostile.txt"});
  expect_shown({"run", "box", "--", kBytes});
}

// A shell gets the record's name back, byte by byte.
TEST_F(Shown, AdviceCanBeTypedAsItStands) {
  make_box("qe1");
  box::Database(place().database(5)).put("odd\x1b[2J", box::Bytes(3));
  const std::string text = done({"break", "box", "odd\x1b[2J", "--missing"});
  EXPECT_EQ(text, "Record odd\\x1b[2J (database 5) is missing.\n`spbox mend box $'odd\\x1b[2J'` restores it.\n");
  const std::size_t advice = text.find('`') + 1;
  const std::string line = SPBOX + text.substr(advice + 5, text.rfind('`') - advice - 5);
  const Done mended = run_to_end({"/usr/bin/env", "-C", scratch_.path(), "bash", "-c", line});
  EXPECT_EQ(mended.output, "Record odd\\x1b[2J (database 5) is as it was.\n");
}

// Whoever prints around print(), print_line() and complain() prints what a terminal may obey.
TEST(ShownByVerbs, IsAllThatSpboxPrints) {
  std::set<std::string> printing;
  for (const auto &file : fs::directory_iterator(HOST "/spbox")) {
    std::ifstream in(file.path());
    std::ostringstream text;
    text << in.rdbuf();
    for (const char *call : {"std::printf(", "fprintf(", "puts(", "putchar(", "cout <<", "std::cerr"}) {
      if (text.str().find(call) != std::string::npos) printing.insert(file.path().filename());
    }
  }
  EXPECT_EQ(printing, (std::set<std::string>{"pages_main.cpp", "standard_output.cpp"}));
}

}  // namespace
