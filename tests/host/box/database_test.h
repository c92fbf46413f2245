// What the tests of databases share: texts as records, and what is said where something fails.
#pragma once

#include <filesystem>
#include <fstream>
#include <functional>
#include <stdexcept>
#include <string>

#include "host/box/database.h"

inline box::Bytes bytes(const std::string &text) {
  return {text.begin(), text.end()};
}

inline box::Bytes bytes_of_file(const std::filesystem::path &file) {
  box::Bytes bytes(std::filesystem::file_size(file));
  std::ifstream(file, std::ios::binary).read(reinterpret_cast<char *>(bytes.data()), static_cast<long>(bytes.size()));
  return bytes;
}

inline std::string message_of(const std::function<void()> &call) {
  try {
    call();
  } catch (const std::runtime_error &error) {
    return error.what();
  }
  return "";
}
