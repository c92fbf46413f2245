// The server of a recording, in a box that is made of the records that were read and written: a picture of it at each record.
#pragma once

#include <cstddef>
#include <optional>

#include "host/box/place.h"
#include "host/play/own_folder.h"
#include "host/recording/recording.h"
#include "host/report/report.h"

namespace spbox {

class RecordingServer {
 public:
  // Makes the box. Throws.
  explicit RecordingServer(const recording::Recording &recording);

  // As the databases' records tell that were read or written before the recording's record of this number, in lines. What none has told
  // yet is unknown there. Null where the recording has no model or no contents. Numbers come in their order. Throws.
  report::Picture picture_before(std::size_t number);

 private:
  bool take_records_before(std::size_t number);

  const recording::Recording &recording_;
  std::optional<play::OwnFolder> folder_;
  std::optional<box::Place> place_;
  std::size_t next_ = 0;  // of the recording's records
  report::Picture picture_;
};

}  // namespace spbox
