// What rings in a box at a moment of its time: the alarms, timers and descriptors that stand on the page.
#pragma once

#include <map>
#include <optional>

#include "host/base/descriptor.h"
#include "host/clock/crowd.h"
#include "host/clock/table.h"

namespace box_time {

class Bells {
 public:
  struct Now {
    nanoseconds passed, wall;
    bool is_quiet;
  };

  std::optional<nanoseconds> next(const box_time_page &page) const;
  void ring(const box_time_page &page, Now now, const Crowd &crowd, const Table &table);
  void forget();  // another page comes

 private:
  struct Rung {
    std::uint32_t turn;
    nanoseconds next;
    std::uint64_t overruns;
  };
  struct Copy {
    std::uint64_t number = 0;
    base::Descriptor descriptor;
    nanoseconds looked{0};  // on the wall, whether somebody still has it
  };

  std::optional<nanoseconds> next_of(int row, const box_time_alarm &alarm) const;
  bool is_of_nobody(int row, const box_time_alarm &alarm, Now now, const Crowd &crowd);
  void ring_once(int row, const box_time_alarm &alarm, nanoseconds moment, const Crowd &crowd, const Table &table);
  void send(int row, const box_time_alarm &timer, bool again, const Table &table);

  std::map<int, Rung> rung_;
  std::map<int, Copy> copies_;
};

}  // namespace box_time
