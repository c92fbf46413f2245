// What the tests of databases share: texts as records, and what is said where something fails.
#pragma once

#include <functional>
#include <stdexcept>
#include <string>

#include "host/box/database.h"

inline box::Bytes bytes(const std::string &text) {
  return {text.begin(), text.end()};
}

inline std::string message_of(const std::function<void()> &call) {
  try {
    call();
  } catch (const std::runtime_error &error) {
    return error.what();
  }
  return "";
}
