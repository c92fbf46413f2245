// How the help of spbox is laid out: for a terminal of 80 columns, without the parser's own words for types.
#pragma once

#include <memory>

namespace CLI {
class FormatterBase;
}

namespace spbox {

std::shared_ptr<CLI::FormatterBase> help_format();

}  // namespace spbox
