// Values as scripts get them. Only json.cpp knows the library that writes them.
#pragma once

#include <concepts>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace spbox {

class Json {
 public:
  struct Member;
  using List = std::vector<Json>;
  using Object = std::vector<Member>;
  using Value = std::variant<std::nullptr_t, bool, std::int64_t, std::string, List, Object>;

  // Each is a value as it stands, so that rows of them can be written down.
  Json();
  Json(std::nullptr_t);
  Json(bool value);
  template <std::integral Number>
  Json(Number value);
  Json(const char *text);
  Json(std::string_view text);
  Json(std::string text);
  Json(List values);
  Json(Object members);
  template <typename Some>
  Json(const std::optional<Some> &value);

  const Value &value() const { return *value_; }

  // With a line end; an object's members come in the order of their names. Bytes of a box that are no UTF-8 become
  // U+FFFD, and control characters are written as escapes: a script gets JSON, and a terminal text, whatever a box holds.
  std::string text() const;

 private:
  // A copy needs no memory of its own: where there is none, gcc 12 destroys the half of a variant that it did not copy.
  std::shared_ptr<const Value> value_;
};

struct Json::Member {
  std::string name;
  Json value;
};

// Here, where a member is whole: an object can only be destroyed by who knows what is in it.
inline Json::Json() : Json(nullptr) {}
inline Json::Json(std::nullptr_t) : value_(std::make_shared<Value>(nullptr)) {}
inline Json::Json(bool value) : value_(std::make_shared<Value>(value)) {}
template <std::integral Number>
Json::Json(Number value) : value_(std::make_shared<Value>(static_cast<std::int64_t>(value))) {}
inline Json::Json(const char *text) : Json(std::string(text)) {}
inline Json::Json(std::string_view text) : Json(std::string(text)) {}
inline Json::Json(std::string text) : value_(std::make_shared<Value>(std::move(text))) {}
inline Json::Json(List values) : value_(std::make_shared<Value>(std::move(values))) {}
inline Json::Json(Object members) : value_(std::make_shared<Value>(std::move(members))) {}
template <typename Some>
Json::Json(const std::optional<Some> &value) : Json(value ? Json(*value) : Json()) {}

}  // namespace spbox
