#include "host/spbox/json.h"

#include <nlohmann/json.hpp>

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

}  // namespace

std::string Json::text() const {
  return std::visit(Writing(), value_).dump(2, ' ', false, json::error_handler_t::replace) + "\n";
}

}  // namespace spbox
