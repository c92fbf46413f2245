#include "host/spbox/help.h"

#include <CLI/CLI.hpp>

namespace spbox {
namespace {

constexpr std::size_t kColumn = 18;

class Format : public CLI::Formatter {
 public:
  Format() {
    column_width(kColumn);
    label("SUBCOMMAND", "VERB");
    label("Positionals", "Arguments");
  }

  std::string make_option_opts(const CLI::Option *option) const override {
    return option->get_option_text().empty() ? "" : " " + option->get_option_text();
  }
};

}  // namespace

std::shared_ptr<CLI::FormatterBase> help_format() {
  return std::make_shared<Format>();
}

}  // namespace spbox
