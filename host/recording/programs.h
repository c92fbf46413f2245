// Control programs and their ends. The process id of one that has ended may be that of another one later.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string_view>

#include "host/recording/recording.h"

namespace recording {

// Whether a program of this line is one, and no pager or shell.
bool is_control_program(std::string_view line);

// How long a program ran, from its beginning and its end; also of forged ones it is between nothing and a day.
std::uint64_t time_of_program(const Record &began, const Record &ended);

// Those that have begun and not ended.
class RunningPrograms {
 public:
  struct Begun {
    std::size_t call;      // its number among the calls of whoever asks
    const Record *record;  // of the recording, as is
  };

  void begin(const Record &record, std::size_t call);

  // The one that ended with this record. Nothing where its beginning is not there.
  std::optional<Begun> end(const Record &record);

 private:
  std::map<pid_t, Begun> begun_;
};

}  // namespace recording
