// The message catalogue as a maintenance command binds it: which texts are translated, and which are not.

#include <libintl.h>

#include <clocale>
#include <cstdlib>

#include <gtest/gtest.h>

#include "tests/unit/dialogue/boards_test.h"
#include "tests/unit/dialogue/slots_test.h"

namespace {

using doubles::foot;
using doubles::head;
using doubles::in_a_process_of_its_own;
using doubles::Lines;
using doubles::machine;

// A command that speaks a language. What stands between bars is of the catalogue.
class Catalogue : public doubles::BoardsTest {
 protected:
  void SetUp() override {
    BoardsTest::SetUp();
    machine().catalogue_is_real = true;
  }

  // Sets a locale and the language that is wanted in it. The locale is one made for these tests: a machine may have none
  // but C and C.UTF-8, in which a newer C library translates nothing.
  static bool speak(const char *language) {
    setenv("LOCPATH", LOCALES_FOLDER, 1);
    setenv("LANGUAGE", language, 1);
    return setlocale(LC_ALL, "en_US.UTF-8") != nullptr;
  }

  // Runs as a command that has bound the domain to the translations in a folder.
  static void in_language(const char *language, const char *folder, const std::function<void()> &body) {
    in_a_process_of_its_own([&] {
      ASSERT_TRUE(speak(language)) << "no locale en_US.UTF-8 in " LOCALES_FOLDER;
      ASSERT_NE(bindtextdomain("cli_cmn_msg", folder), nullptr);
      body();
    });
  }
  static void in_marked_language(const std::function<void()> &body) { in_language("xx", MARKED_FOLDER, body); }
  static void in_german(const std::function<void()> &body) { in_language("de", TRANSLATIONS_FOLDER, body); }

  PsuData psu(const char *location, uint32_t status, uint32_t mainte_status) {
    auto record = unit<PsuData>(location, status, mainte_status);
    record.flags = 0;
    return record;
  }
  std::string psu_list() {
    const PsuData psus[] = {psu("/PSU#0", kInstalled, 0x20000000), psu("/PSU#1", 0, 0)};
    return page_of([&] { return lmainte_show_psu_list(-1, 2, psus, lines_); });
  }
  std::string psu_status() {
    const PsuData one = psu("/PSU#0", kInstalled, 0x10000000);
    return page_of([&] { return lmainte_show_psu_status(-1, &one, lines_); });
  }
  std::string ddca_status() {
    const auto ddc = unit<BpUnitData>("/DDC_A#0", 0xFFFFFFFF, 0xFFFFFFFF);
    return page_of([&] { return lmainte_show_ddca_status(-1, &ddc, lines_); });
  }
  // One board that runs and has a degraded module, and one that is absent.
  std::string board_list() {
    SbData boards[] = {board("/CMU#0", "/IOU#0"), board("/CMU#1", "/IOU#1")};
    set_cmu(boards[0], kInstalled, 0, 0x10000000);
    set_cmu(boards[1], 0, 0);
    boards[0].cmu.xsb[3] = 1;
    XsbData xsbs[5] = {};
    xsbs[0].active = 1;
    xsbs[0].current_domain = 3;
    xsbs[1].setup_domain = -1;
    return page_of([&] { return lmainte_show_cmu_iou_list(-1, 0, 2, boards, xsbs, lines_); });
  }
  std::string board_status() {
    SbData one = board("/CMU#0", "/IOU#0");
    one.cmu.cpum[0] = unit<UnitData>("/CPUM#0", kInstalled, 0);
    return page_of([&] { return lmainte_show_sb_status(-1, 0, &one, lines_); });
  }
  std::string slot_list() {
    SbData one = board("/CMU#0", "/IOU#0");
    uint32_t(&slots)[80] = one.iou.reserved;
    std::fill(slots, slots + 80, 0U);
    for (uint32_t k = 0; k < 2; ++k) {
      uint32_t unit_id[2];
      locate(unit_id, "/IOU#0/PCI#" + std::to_string(k));
      uint32_t *slot = slots + size_t{10} * k;
      slot[2] = unit_id[0];
      slot[3] = unit_id[1];
      slot[4] = kInstalled;
      slot[6] = k;
      slot[7] = k == 0 ? 0x40000000 : 0;
    }
    return page_of([&] { return lmainte_show_ioupci_list(-1, 2, &one, lines_); });
  }
  static std::string progress() {
    machine().children_are_real = true;
    const DotParam request = {1, "Testing: ", 31};
    return doubles::printed_by([&] { lmainte_dot_end(lmainte_dot_start(&request)); });
  }

  const ListLine lines_[3] = {head("Head\n"), foot("Foot\n"), doubles::end_mark()};
};

TEST_F(Catalogue, FormatsOfUnitLinesAreTranslated) {
  in_marked_language([this] {
    EXPECT_EQ(psu_list(), "Head\n[1|PSU#0|Faulted]\n[2|PSU#1|Not installed]\nFoot\n");
    EXPECT_EQ(psu_status(), "Head\n[Degraded|PSU#0]\nFoot\n");
    EXPECT_EQ(ddca_status(), "Head\n[(null)|DDC_A#0]\nFoot\n");
    EXPECT_EQ(board_list(), "Head\n[1|CMU#0|3|3|3|SP|On|Normal   *]\n[2|CMU#1|--|--|--|--|---|Not installed]\nFoot\n");
    EXPECT_EQ(board_status(), "Head\n[Normal|CMU#0]\n[-|CPUM#0|Normal]\nFoot\n");
    EXPECT_EQ(slot_list(), "Head\n[1|IOU#0/PCI#0|0|On]\n[2|IOU#0/PCI#1|1|Off]\nFoot\n");
  });
}

TEST_F(Catalogue, LastWordOfTheIndicatorAloneIsTranslated) {
  in_marked_language([] { EXPECT_EQ(progress(), "Testing:    0.....  30[100%]\n\n"); });
}

TEST_F(Catalogue, MenusAndPromptsAreTheCommandsOwn) {
  in_marked_language([this] {
    EXPECT_EQ(page_of([this] { return lmainte_show_menu(lines_); }), "Head\nFoot\n");
    int32_t choice = 0;
    doubles::printed_by([&] { lmainte_ask_select(1, &choice, "Which one? "); });
    EXPECT_EQ(machine().asked.at(0).prompt, "Which one? ");
  });
}

TEST_F(Catalogue, GermanOperatorReadsGerman) {
  in_german([this] {
    EXPECT_EQ(progress(), "Testing:    0.....  30fertig\n\n");
    machine().children_are_real = false;
    EXPECT_EQ(psu_list(), "Head\n 1. PSU#0           Faulted\n 2. PSU#1           Not installed\nFoot\n");
  });
}

TEST_F(Catalogue, TranslationsKeepTheColumns) {
  in_german([this] {
    EXPECT_EQ(psu_status(), "Head\nPSU#0         Degraded\nFoot\n");
    EXPECT_EQ(board_list(),
              "Head\n 1. CMU#0             3     3     3    SP  On    Normal   *\n"
              " 2. CMU#1            --    --    --    --  ---   Not installed\nFoot\n");
    EXPECT_EQ(board_status(), "Head\nCMU#0         Normal\n    CPUM#0    Normal\nFoot\n");
    EXPECT_EQ(slot_list(),
              "Head\n 1. IOU#0/PCI#0          0         On\n 2. IOU#0/PCI#1          1         Off\nFoot\n");
  });
}

// The library takes the locale and the folder as the command has set them.
TEST_F(Catalogue, CommandThatSetsNoLocaleGetsTheTextsAsTheyAre) {
  in_a_process_of_its_own([this] {
    setenv("LANGUAGE", "xx", 1);
    ASSERT_NE(bindtextdomain("cli_cmn_msg", MARKED_FOLDER), nullptr);
    EXPECT_EQ(psu_status(), "Head\nPSU#0         Degraded\nFoot\n");
    EXPECT_EQ(progress(), "Testing:    0.....  30done\n\n");
    EXPECT_STREQ(setlocale(LC_ALL, nullptr), "C");
  });
}

TEST_F(Catalogue, CommandThatBindsNoFolderGetsTheTextsAsTheyAre) {
  in_a_process_of_its_own([this] {
    ASSERT_TRUE(speak("xx")) << "no locale en_US.UTF-8 in " LOCALES_FOLDER;
    EXPECT_EQ(psu_status(), "Head\nPSU#0         Degraded\nFoot\n");
    EXPECT_EQ(progress(), "Testing:    0.....  30done\n\n");
  });
}

TEST_F(Catalogue, LanguageMayLeadOutOfTheFolder) {
  in_language("../xx", MARKED_FOLDER "/xx", [this] { EXPECT_EQ(psu_status(), "Head\n[Degraded|PSU#0]\nFoot\n"); });
}

// Another domain of the command's is the command's.
TEST_F(Catalogue, CommandsOwnDomainIsLeftAlone) {
  in_marked_language([this] {
    textdomain("some_command");
    EXPECT_EQ(psu_status(), "Head\n[Degraded|PSU#0]\nFoot\n");
    EXPECT_STREQ(textdomain(nullptr), "some_command");
  });
}

}  // namespace
