#include "host/spbox/json.h"

#include <nlohmann/json.hpp>

#include "host/base/shown.h"

namespace spbox {
namespace {

using nlohmann::json;

struct Writing {
  json operator()(const Json::List &values) const {
    json list = json::array();
    for (const Json &value : values) list.push_back(std::visit(*this, value.value()));
    return list;
  }
  json operator()(const Json::Object &members) const {
    json object = json::object();
    for (const Json::Member &member : members) object[member.name] = std::visit(*this, member.value.value());
    return object;
  }
  json operator()(const auto &plain) const { return plain; }
};

// The library escapes the control characters below the blank and leaves the others: rubout, and those of two bytes.
std::string without_controls(const std::string &written) {
  std::string text;
  for (std::size_t at = 0; at < written.size(); ++at) {
    if (written[at] == '\x7f') {
      text += "\\u007f";
    } else if (written[at] == '\xc2' && base::character_size(written.substr(at, 2)) == 0) {
      text += "\\u00" + base::escape_of(written[++at]).substr(2);
    } else {
      text += written[at];
    }
  }
  return text;
}

}  // namespace

std::string Json::text() const {
  return without_controls(std::visit(Writing(), *value_).dump(2, ' ', false, json::error_handler_t::replace)) + "\n";
}

}  // namespace spbox
