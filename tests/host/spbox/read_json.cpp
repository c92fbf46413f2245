#include "tests/host/spbox/read_json.h"

#include <nlohmann/json.hpp>
#include <ostream>

using nlohmann::json;

ReadJson::ReadJson(const std::string &text) : ReadJson(std::make_shared<const json>(json::parse(text))) {}
ReadJson::ReadJson(std::shared_ptr<const json> value) : value_(std::move(value)) {}

// A part lives as long as somebody has it or the whole.
ReadJson ReadJson::part(const json &value) const {
  return ReadJson(std::shared_ptr<const json>(value_, &value));
}

ReadJson ReadJson::operator[](std::string_view name) const {
  return part(value_->at(std::string(name)));
}

ReadJson ReadJson::operator[](std::size_t index) const {
  return part(value_->at(index));
}

std::vector<ReadJson> ReadJson::entries() const {
  std::vector<ReadJson> all;
  for (const json &entry : *value_) all.push_back(part(entry));
  return all;
}

std::size_t ReadJson::size() const {
  return value_->size();
}

bool ReadJson::is_null() const {
  return value_->is_null();
}

std::string ReadJson::string() const {
  return value_->get<std::string>();
}

std::string ReadJson::text() const {
  return value_->dump();
}

bool ReadJson::operator==(const ReadJson &other) const {
  return *value_ == *other.value_;
}

bool ReadJson::operator==(std::string_view text) const {
  return *value_ == text;
}

bool ReadJson::is_truth(bool value) const {
  return *value_ == value;
}

bool ReadJson::is_number(std::int64_t value) const {
  return value_->is_number_integer() && *value_ == value;
}

std::ostream &operator<<(std::ostream &out, const ReadJson &value) {
  return out << value.text();
}
