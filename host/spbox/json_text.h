// JSON as scripts get it.
#pragma once

#include <nlohmann/json.hpp>
#include <string>

namespace spbox {

// With a line end. Bytes of a box that are no UTF-8 become U+FFFD: a script gets JSON whatever a box holds.
inline std::string json_text(const nlohmann::json &value) {
  return value.dump(2, ' ', false, nlohmann::json::error_handler_t::replace) + "\n";
}

}  // namespace spbox
