// The language of the operator: translations are found from the build folder and from an installed prefix, also where the
// locale itself was never made on the machine.

#include <cstdlib>

#include "tests/end_to_end/box_test.h"

namespace end_to_end {
namespace {

using terminal::Ending;
namespace fs = std::filesystem;

class Language : public BoxTest {
 protected:
  void SetUp() override {
    make_box("qa");
    for (const char *name : {"LC_MESSAGES", "LANG", "LANGUAGE"}) unsetenv(name);
    setenv("LC_ALL", "de_DE.UTF-8", 1);
  }

  // The words of the procedure, and the library's own at the end of a progress line.
  void expect_german(const std::string &command) {
    start({command, "psu"});
    answers("Netzteil ersetzen:", "1\n");
    answers("Nehme /PSU#0 außer Betrieb");
    answers("fertig");
    answers("Ziehen Sie jetzt /PSU#0 heraus.", "q\n");
    EXPECT_EQ(ending(), (Ending{false, 2}));
  }
};

TEST_F(Language, IsSpokenFromTheBuildFolder) {
  expect_german(procedure("replace_unit"));
}

TEST_F(Language, IsSpokenFromAnInstalledPrefix) {
  const fs::path prefix = box().parent_path() / "prefix";
  fs::create_directories(prefix / "bin");
  fs::create_directories(prefix / "share");
  fs::copy(procedure("replace_unit"), prefix / "bin");
  fs::copy(TRANSLATIONS, prefix / "share/locale", fs::copy_options::recursive);
  expect_german(prefix / "bin/replace_unit");
}

}  // namespace
}  // namespace end_to_end
