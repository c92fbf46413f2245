#include "tests/host/spbox/spbox_test.h"

#include <algorithm>
#include <cstring>
#include <fstream>

Done SpboxTest::spbox(const Words &words) const {
  Words command{"/usr/bin/env", "-C", scratch_.path(), SPBOX};
  command.insert(command.end(), words.begin(), words.end());
  return run_to_end(command);
}

std::string SpboxTest::done(const Words &words) const {
  const Done result = spbox(words);
  EXPECT_EQ(result.exit_status, 0) << "spbox " << words.front() << ": " << result.output;
  return result.output;
}

std::string SpboxTest::refused(const Words &words) const {
  const Done result = spbox(words);
  EXPECT_EQ(result.exit_status, 1) << "spbox " << words.front() << ": " << result.output;
  EXPECT_EQ(std::count(result.output.begin(), result.output.end(), '\n'), 1) << result.output;
  return result.output;
}

void SpboxTest::write(const std::string &name, const std::string &text) const {
  std::ofstream(scratch_.path() / name, std::ios::binary) << text;
}

Done SpboxTest::in_box(const Words &command) const {
  Words words{"run", "box", "--"};
  words.insert(words.end(), command.begin(), command.end());
  return spbox(words);
}

box::Bytes SpboxTest::record(std::uint32_t db_id, const std::string &name) const {
  auto found = box::Database(place().database(db_id)).get(name);
  EXPECT_TRUE(found) << "database " << db_id << " holds no " << name;
  return found.value_or(box::Bytes());
}

bool SpboxTest::has_record(std::uint32_t db_id, const std::string &name) const {
  return box::Database(place().database(db_id)).get(name).has_value();
}

std::uint32_t word(const box::Bytes &record, std::size_t at) {
  std::uint32_t value = 0;
  if (at + 4 > record.size()) return 0xDEADBEEF;
  std::memcpy(&value, record.data() + at, 4);
  return value;
}
