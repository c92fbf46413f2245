// What spbox prints for scripts, as a script reads it. Only read_json.cpp needs the whole of the library that reads it.
#pragma once

#include <concepts>
#include <cstdint>
#include <iosfwd>
#include <memory>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <string_view>
#include <vector>

class ReadJson {
 public:
  explicit ReadJson(const std::string &text);  // throws where it is no JSON

  // A member, an entry. Throws where there is none.
  ReadJson operator[](std::string_view name) const;
  ReadJson operator[](std::size_t index) const;
  std::vector<ReadJson> entries() const;
  std::size_t size() const;
  bool is_null() const;
  std::string string() const;  // of a string: itself; throws for anything else
  std::string text() const;    // on one line

  bool operator==(const ReadJson &other) const;
  bool operator==(std::string_view text) const;
  template <std::integral Value>
  bool operator==(Value value) const {
    if constexpr (std::same_as<Value, bool>) return is_truth(value);
    return is_number(static_cast<std::int64_t>(value));
  }

 private:
  explicit ReadJson(std::shared_ptr<const nlohmann::json> value);
  ReadJson part(const nlohmann::json &value) const;
  bool is_truth(bool value) const;
  bool is_number(std::int64_t value) const;

  std::shared_ptr<const nlohmann::json> value_;
};

std::ostream &operator<<(std::ostream &out, const ReadJson &value);
