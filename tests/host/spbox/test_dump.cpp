#include <fstream>
#include <sstream>

#include "host/box/program_list.h"
#include "host/spbox/dump.h"
#include "tests/host/spbox/spbox_test.h"

namespace {

namespace fs = std::filesystem;

class Dump : public SpboxTest {
 protected:
  std::string read(const std::string &name) const {
    std::ostringstream text;
    text << std::ifstream(scratch_.path() / name, std::ios::binary).rdbuf();
    return text.str();
  }
  static std::string lines_from(const std::string &text, const std::string &first, int count) {
    const std::size_t at = text.find("\n" + first);
    if (at == std::string::npos) return "nothing begins with " + first;
    std::size_t end = at;
    while (count-- > 0) end = text.find('\n', end + 1);
    return text.substr(at + 1, end - at);
  }
};

class DumpOfModel : public Dump, public testing::WithParamInterface<const char *> {};

TEST_P(DumpOfModel, MakesTheSameBoxAgain) {
  make_box(GetParam());
  done({"fault", "box", "/PSU#1"});
  done({"pull", "box", "/PSU#0", "/FAN_A#0"});
  box::TextDatabase(place()).set("led /PSU#1", "blink");
  done({"program", "box", "ctlled", "--delay", "3", "--exit", "206"});
  box::TextDatabase hardware(place());
  box::set_last_run(hardware, "ctlfan", {.time_ns = 7, .pid = 8, .status = 0, .arguments = "-c \"low\" \\ \n"});
  done({"break", "box", "current_psu_info", "--short"});
  done({"break", "box", "current_fantray_info", "--long"});
  done({"break", "box", "/PSU#1", "--fru", "--missing"});
  box::Database(place().database(5)).put("some key # \" \x01", box::Bytes{1, 2, 3});
  box::Database(place().database(5)).put("empty", box::Bytes());

  EXPECT_EQ(done({"dump", "box", "first.dump"}), "");
  const std::string made = done({"load", "first.dump", "copy"});
  EXPECT_TRUE(made.starts_with("Made copy: model " + std::string(GetParam()) + ", ")) << made;
  EXPECT_EQ(done({"dump", "copy"}), read("first.dump"));

  const box::Contents box = box::contents_of(place()), copy = box::contents_of(box::Place(scratch_ / "copy"));
  EXPECT_EQ(box.model, copy.model);
  EXPECT_EQ(box.records, copy.records);
  EXPECT_EQ(box.hardware, copy.hardware);

  done({"mend", "copy"});
  done({"mend", "box"});
  EXPECT_EQ(done({"dump", "copy"}), done({"dump", "box"})) << "what was broken is mended in the copy, too";
}

INSTANTIATE_TEST_SUITE_P(Models, DumpOfModel, testing::Values("qa", "qb1", "qb2", "qe1", "qe2", "qe3"),
                         [](const auto &row) { return std::string(row.param); });

TEST_F(Dump, IsATextForPeople) {
  make_box("qe1");
  const std::string text = done({"dump", "box"});
  EXPECT_TRUE(
      text.starts_with("spbox dump 1\norder big\nmodel qe1\n\ndatabase 0  # general\nrecord gen_system_info 1408\n"))
      << text.substr(0, 200);
  EXPECT_TRUE(text.ends_with("\nend\n"));
  EXPECT_EQ(lines_from(text, "record current_cmu_info_01", 4),
            "record current_cmu_info_01 1760  # /CMU#1\n"
            "     0: 01010100 00000000 80000000 00000000\n"
            "    16: 00000000 00000000 00070002 00080002\n"
            "    32: 00000000 00000001 00000000 000c0002\n");
  EXPECT_EQ(lines_from(text, "   504: 5901", 2),
            "   504: 59012800 00000000 80000000 00000000  # /PSU#40\n"
            "   520: 00000000 00000000 0a000000 00000000\n");
  EXPECT_EQ(lines_from(text, "record fru_psu_qe_info_09", 2),
            "record fru_psu_qe_info_09 320  # /PSU#40\n"
            "    79: 0f50572d 31363030 2d453520 32373332  # PW-1600-E5 2732\n");
  EXPECT_EQ(lines_from(text, "record fru_dimm_info_033", 2),
            "record fru_dimm_info_033 256  # /CMU#1/MEM#02A\n"
            "    95: 44303333 00000000 00000000 00000000  # D033\n");
  EXPECT_EQ(lines_from(text, "record current_xsb_info_14", 1), "record current_xsb_info_14 152  # XSB 03-2\n");
  EXPECT_EQ(lines_from(text, "database box", 2),
            "database box  # its hardware, and how its programs are bent\nsetting fan low\n");
}

TEST_F(Dump, ChangesInTheLinesOfWhatChanged) {
  make_box("qe3");
  done({"dump", "box", "before"});
  done({"fault", "box", "/PSU#41"});
  done({"dump", "box", "after"});
  std::istringstream before(read("before")), after(read("after"));
  std::string one, other, changes;
  while (std::getline(before, one) && std::getline(after, other)) {
    if (one != other) changes.append(one).append("\n").append(other).append("\n");
  }
  EXPECT_EQ(changes,
            "  1752: 00000000 00000000 20000000 00000000\n"
            "  1752: 00000000 20000000 20000000 00000000\n")
      << "the flag byte of /PSU#41";
}

// Written by hand, in the notation that is easiest for whoever dumps: no zeros left out, one word a line, carriage
// returns as a terminal leaves them.
constexpr const char *kByHand =
    "spbox dump 1\r\n"
    "# from a board\r\n"
    "order big\r\n"
    "model qa\r\n"
    "\r\n"
    "database 2\r\n"
    "record current_psu_info 56   # cut short, and loaded as it is\r\n"
    "0: c3010000\r\n"
    "4: 00 00 00 00\r\n"
    "8: A0008001\r\n"
    "12: 01020304\r\n"
    "20: 20 00 00 00 07\r\n"
    "record \"unknown kind\" 5\r\n"
    "0: 0102030405\r\n"
    "end\r\n";

TEST_F(Dump, OfABoardOfAnotherByteOrderIsLoaded) {
  write("board.dump", kByHand);
  EXPECT_EQ(done({"load", "board.dump", "box"}),
            "Made box: model qa, 2 records of board.dump. `spbox units box` lists its units.\n");
  const box::Bytes psus = record(2, "current_psu_info");
  ASSERT_EQ(psus.size(), 56u);
  EXPECT_EQ(word(psus, 0), 0xC3010000u) << "a word keeps its value";
  EXPECT_EQ(word(psus, 8), 0xA0008001u);
  EXPECT_EQ(box::Bytes(psus.begin() + 12, psus.begin() + 28),
            (box::Bytes{1, 2, 3, 4, 0, 0, 0, 0, 0x20, 0, 0, 0, 7, 0, 0, 0}))
      << "bytes keep their places";
  EXPECT_EQ(record(2, "unknown kind"), (box::Bytes{1, 2, 3, 4, 5}));
  EXPECT_EQ(box::TextDatabase(place()).get("fan"), "low") << "the hardware is as after power-on";
  EXPECT_TRUE(box::Hardware(place()).flag("/PSU#0")) << "its status says that it is under maintenance";
  EXPECT_FALSE(box::Hardware(place()).flag("/PSU#1"));
  EXPECT_TRUE(fs::exists(place().tmp() / ".qa"));
  done({"units", "box"});
}

TEST_F(Dump, OfALittleEndianMachineIsLoaded) {
  std::string text = kByHand;
  text.replace(text.find("order big"), 9, "order little");
  write("desk.dump", text);
  done({"load", "desk.dump", "box"});
  EXPECT_EQ(word(record(2, "current_psu_info"), 0), 0x000001C3u);
  EXPECT_EQ(record(2, "current_psu_info").at(20), 0x20);
}

TEST_F(Dump, ComesFromStandardInputToo) {
  make_box("qb1");
  const Done result = run_to_end(
      {"/bin/sh", "-c", "cd " + scratch_.path().string() + " && " SPBOX " dump box | " SPBOX " load - copy"});
  EXPECT_EQ(result.output, "Made copy: model qb1, 55 records of standard input. `spbox units copy` lists its units.\n");
  EXPECT_EQ(done({"dump", "copy"}), done({"dump", "box", "-"}));
}

TEST_F(Dump, OfMoreAndLargerRecordsThanAServerHasIsLoaded) {
  make_box("qa");
  for (int i = 0; i < 17; ++i) {
    box::Database(place().database(5)).put("r" + std::to_string(i), box::Bytes(1'048'576, 0));
  }
  box::Database(place().database(5)).put("large", box::Bytes(1'048'577, 0xA5));
  done({"dump", "box", "large.dump"});
  done({"load", "large.dump", "copy"});
  EXPECT_EQ(box::contents_of(box::Place(scratch_ / "copy")).records, box::contents_of(place()).records);
}

// A few bytes of text that ask for a large record, again and again.
std::string large_records(int count) {
  std::string text;
  for (int i = 0; i < count; ++i) text += "record r" + std::to_string(i) + " 1048576\n";
  return text;
}

struct BadRow {
  const char *says;
  std::string text;   // behind "spbox dump 1"
  std::string error;  // behind "spbox: bad.dump"
};
const BadRow kBad[] = {
    {"no byte order", "model qa\nend\n", ":3: `end`: no byte order is given: `order big` or `order little`."},
    {"another byte order", "order middle\n", ":2: `order middle`: the byte order is big or little."},
    {"two byte orders", "order big\norder big\n", ":3: `order big`: the byte order is given a second time."},
    {"no model", "order big\nend\n", ":3: `end`: no model is given, as by `model qe1`."},
    {"another model", "model qz\n",
     ":2: `model qz`: there is no model \"qz\"; the models are qa, qb1, qb2, qe1, qe2 or qe3."},
    {"two models", "model qa\nmodel qa\n", ":3: `model qa`: the model is given a second time."},
    {"a database above 5", "database 6\n", ":2: `database 6`: there is no database \"6\"; there are 0 to 5 and box."},
    {"a database twice", "database 1\ndatabase 1\n", ":3: `database 1`: the database comes a second time."},
    {"an unknown word", "frob 1\n",
     ":2: `frob 1`: there is no line \"frob\"; there are order, model, database, record, setting and end."},
    {"one word too few", "record x\n", ":2: `record x`: write it as: record NAME SIZE."},
    {"a record outside a database", "record x 1\n", ":2: `record x 1`: a record stands outside the databases."},
    {"no size", "database 2\nrecord x many\n", ":3: `record x many`: a record has 0 to 67108864 bytes."},
    {"too much in all", "database 2\n" + large_records(65),
     ":67: `record r64 1048576`: the records of a dump have at most 67108864 bytes in all."},
    {"too large", "database 2\nrecord x 67108865\n", ":3: `record x 67108865`: a record has 0 to 67108864 bytes."},
    {"no name", "database 2\nrecord \"\" 1\n", ":3: `record \"\" 1`: a name has 1 to 127 characters, this one has 0."},
    {"a name too long", "database 2\nrecord " + std::string(128, 'x') + " 1\n",
     ":3: `record " + std::string(128, 'x') + " 1`: a name has 1 to 127 characters, this one has 128."},
    {"a setting's name too long", "database box\nsetting " + std::string(511, 'x') + " b\n",
     ":3: `setting " + std::string(192, 'x') + "...`: a name has 1 to 510 characters, this one has 511."},
    {"a record twice", "database 2\nrecord x 1\nrecord x 1\n", ":4: `record x 1`: the record comes a second time."},
    {"bytes outside a record", "database 2\n0: 00\n", ":3: `0: 00`: bytes stand outside a record."},
    {"more bytes than the record has", "database 2\nrecord x 2\n0: 000000\n",
     ":4: `0: 000000`: there are more bytes than the record's 2."},
    {"bytes after the end of the record", "database 2\nrecord x 2\n9: 00\n",
     ":4: `9: 00`: there are more bytes than the record's 2."},
    {"half a byte", "database 2\nrecord x 2\n0: 000\n",
     ":4: `0: 000`: \"000\" is not a row of bytes: each has two digits."},
    {"no digits", "database 2\nrecord x 2\n0: 0g\n",
     ":4: `0: 0g`: \"0g\" is not a row of bytes: their digits are hexadecimal."},
    {"an offset that is no number", "database 2\nrecord x 2\n0x: 00\n",
     ":4: `0x: 00`: \"0x:\" is not a place in a record; write its number and a colon."},
    {"overlapping", "database 2\nrecord x 9\n0: 0000\n1: 00\n",
     ":5: `1: 00`: byte 1 comes a second time, or out of order."},
    {"a setting outside the box's database", "setting a b\n",
     ":2: `setting a b`: a setting stands outside the database box."},
    {"a setting twice", "database box\nsetting a b\nsetting a c\n",
     ":4: `setting a c`: the setting comes a second time."},
    {"a plain record in the box's database", "database box\nrecord x 1\n",
     ":3: `record x 1`: the database box holds no records but broken ones."},
    {"an open quote", "database box\nsetting \"a b\n", ":3: `setting \"a b`: the closing \" is missing."},
    {"a wrong escape", "database box\nsetting \"\\q\" b\n",
     R"(:3: `setting "\q" b`: there is no escape \q; there are \n, \t, \r, \e, \", \\, \003 and \x03.)"},
    {"a line after the end", "order big\nmodel qa\nend\nmodel qa\n",
     ":5: `model qa`: this stands behind the line `end`."},
    {"cut off", "order big\nmodel qa\ndatabase 2\n", " is cut off: it ends without the line `end`."},
    {"cut off in a row of bytes", "order big\nmodel qa\ndatabase 2\nrecord x 2\n0: 0",
     " is cut off in line 6, its last one: the line has no end."},
    {"cut off in a number", "order big\nmodel qa\ndatabase 2\nrecord x 64\n0: 00\n3",
     " is cut off in line 7, its last one: the line has no end."},
    {"cut off in quotes", "order big\nmodel qa\ndatabase box\nsetting \"led /PS",
     " is cut off in line 5, its last one: the line has no end."},
    {"another model's record", "order big\nmodel qa\ndatabase 4\nrecord fru_psu_qb_info_00 320\nend\n",
     ":3: the model is qa, but the dump has the record fru_psu_qb_info_00 of database 4, which model qb1 has. Write "
     "the "
     "model of the server that the dump was taken from."},
};

TEST_F(Dump, ThatIsBadIsRefusedWithItsLineAndLeavesNoBox) {
  for (const BadRow &row : kBad) {
    write("bad.dump", std::string("spbox dump 1\n") + row.text);
    EXPECT_EQ(refused({"load", "bad.dump", "box"}), std::string("spbox: bad.dump") + row.error + "\n") << row.says;
    EXPECT_FALSE(fs::exists(place().root())) << row.says;
  }
}

// Of each model that is written in place of the right one, where the two do not have the same records.
TEST_F(Dump, OfOneModelIsRefusedUnderTheNameOfAnother) {
  const struct {
    const char *is, *written, *record;
  } rows[] = {
      {"qb1", "qa", "fru_psu_qb_info_00 of database 4, which model qb1"},
      {"qa", "qb1", "fru_psu_qe_info_00 of database 4, which model"},
      {"qb2", "qb1", "setup_cmu_info_01 of database 1, which model qb2"},
      {"qe1", "qe2", "current_bp32_info of database 2, which model qe1"},
  };
  for (const auto &row : rows) {
    done({"create", row.is, "--model", row.is});
    std::string text = done({"dump", row.is});
    const std::string model = std::string("\nmodel ") + row.is;
    text.replace(text.find(model), model.size(), std::string("\nmodel ") + row.written);
    write("bad.dump", text);
    const std::string says = refused({"load", "bad.dump", "box"});
    EXPECT_NE(says.find(std::string(" but the dump has the record ") + row.record), std::string::npos) << says;
    EXPECT_FALSE(fs::exists(place().root())) << says;
    fs::remove_all(scratch_ / row.is);
  }
}

TEST_F(Dump, ThatIsNoDumpIsRefused) {
  write("letter", "dear\n");
  EXPECT_EQ(refused({"load", "letter", "box"}),
            "spbox: letter:1: `dear`: this is no dump: it does not begin with `spbox dump 1`.\n");
  write("empty", "");
  EXPECT_EQ(refused({"load", "empty", "box"}), "spbox: empty is no dump: it does not begin with `spbox dump 1`.\n");
  EXPECT_EQ(refused({"load", "none", "box"}), "spbox: none: there is no such file.\n");
  EXPECT_EQ(refused({"load", ".", "box"}), "spbox: .: this is a folder, not a file.\n");
  EXPECT_FALSE(fs::exists(place().root()));
}

TEST_F(Dump, ReplacesABoxOnlyByForceAndNotWithABadOne) {
  make_box("qa");
  done({"dump", "box", "good.dump"});
  EXPECT_EQ(refused({"load", "good.dump", "box"}),
            "spbox: box is a box already. --force makes it anew, and all that it holds is lost.\n");
  done({"fault", "box", "/PSU#0"});
  const std::string faulted = done({"dump", "box"});
  write("bad.dump", "spbox dump 1\norder big\n");
  refused({"load", "bad.dump", "box", "--force"});
  EXPECT_EQ(done({"dump", "box"}), faulted);
  done({"load", "good.dump", "box", "--force"});
  EXPECT_EQ(done({"dump", "box"}), read("good.dump"));
}

TEST_F(Dump, ThatCannotBeWrittenSaysSo) {
  make_box("qa");
  EXPECT_EQ(refused({"dump", "box", "no/such/folder/x.dump"}),
            "spbox: no/such/folder/x.dump could not be written: No such file or directory.\n");
  EXPECT_EQ(refused({"dump", "box", "box"}), "spbox: box could not be written: Is a directory.\n");
  EXPECT_EQ(refused({"dump", "box", "/dev/full"}), "spbox: /dev/full could not be written: No space left on device.\n");
  fs::create_symlink("circle", scratch_ / "circle");
  EXPECT_EQ(refused({"dump", "box", "circle"}),
            "spbox: circle could not be written: Too many levels of symbolic links.\n");
}

TEST_F(Dump, ReplacesAFileThatKeepsItsPermissionsBehindItsLink) {
  make_box("qa");
  fs::create_directory(scratch_ / "kept");
  write("kept/old.dump", "old\n");
  fs::permissions(scratch_ / "kept/old.dump", fs::perms{0640});
  fs::create_symlink("kept/old.dump", scratch_ / "link");
  done({"dump", "box", "link"});
  EXPECT_TRUE(fs::is_symlink(scratch_ / "link"));
  EXPECT_EQ(read("kept/old.dump"), done({"dump", "box"}));
  EXPECT_EQ(fs::status(scratch_ / "kept/old.dump").permissions(), fs::perms{0640});
  EXPECT_EQ(std::distance(fs::directory_iterator(scratch_ / "kept"), {}), 1) << "nothing else is left";
  fs::create_symlink("kept/new.dump", scratch_ / "leads_to_a_new_one");
  done({"dump", "box", "leads_to_a_new_one"});
  EXPECT_EQ(read("kept/new.dump"), read("kept/old.dump"));
}

TEST_F(Dump, GoesToWhatIsOpenAsItIs) {
  make_box("qa");
  const std::string script = "cd " + scratch_.path().string() +
                             " || exit 9; umask 027\n" SPBOX " dump box >whole; { echo before; " SPBOX
                             " dump box /dev/stdout; echo behind; } >out\n"
                             "{ echo before; cat whole; echo behind; } | cmp - out && echo in a file\n" SPBOX
                             " dump box /dev/stdout | cmp - whole && echo in a pipe\n"
                             "mkfifo pipe; cat pipe >read & " SPBOX
                             " dump box pipe; wait; cmp read whole && echo in a fifo\n" SPBOX
                             " dump box new && stat -c %a new";
  EXPECT_EQ(run_to_end({"/bin/sh", "-c", script}).output, "in a file\nin a pipe\nin a fifo\n640\n");
}

// The program of docs/host-platform.md, with the list that it takes, run in a box of its own.
TEST_F(Dump, OfTheProgramInTheDocumentationIsTheSame) {
  make_box("qe1");
  const std::string whole = done({"dump", "box"});
  write("run", "awk '/^database [0-9]/ {db = $2} /^record/ {print db, $2}' list.dump | " SPBOX " run box -- " BOARD_DUMP
               " qe1 >board.dump\n");
  done({"dump", "box", "list.dump"});
  const Done run = run_to_end({"/bin/sh", "-c", "cd " + scratch_.path().string() + " && . ./run"});
  EXPECT_EQ(run.exit_status, 0) << run.output;
  done({"load", "board.dump", "copy"});
  const std::string copy = done({"dump", "copy"});
  const auto records = [](const std::string &text) { return text.substr(0, text.find("\ndatabase box")); };
  EXPECT_EQ(records(copy), records(whole));
}

}  // namespace
