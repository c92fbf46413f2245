// The trace events of src/model.
#pragma once

#include "trace_events/event.h"

namespace trace_events {

struct Model;

// lmainte_get_model_data
struct GetModelData : PlainBlock<Model, 0x044> {
  enum Point : Code { kModel = point(2) };
  enum Error : Code { kBothNull = error(1), kNoCurrent, kNoSetup, kNoGeneral, kNoCount, kNoModel };
};

// lmainte_get_model_data, where it looks for the model
struct FindModel : PlainBlock<Model, 0x045> {};

// lmainte_get_model_data, where it reads a time file
struct ReadTimeFile : PlainBlock<Model, 0x046> {
  enum Error : Code { kNotOpened = error(1), kNotRead, kNotClosed };
};

// lmainte_get_unit_position_id
struct GetUnitPositionId : PlainBlock<Model, 0x04A> {
  enum Error : Code {
    kNoMode = error(1),
    kNullArgument,
    kNotWellFormed,
    kModelNotRead,
    kNotSplit,
    kNoModel,
    kNoLocation,
    kNotReplaceable,
    kNoIds
  };
};

// lmainte_get_unit_position_id, where it splits the path
struct SplitPath : PlainBlock<Model, 0x04B> {
  enum Error : Code { kTooLong = error(1) };
};

// lmainte_get_unit_position_id, where it looks for the numbers of the path's parts
struct FindIds : PlainBlock<Model, 0x04C> {
  enum Error : Code { kNoUnit = error(1) };
};

// replace_mem_location
struct ReplaceMemLocation : PlainBlock<Model, 0x04D> {
  enum Error : Code { kNullArgument = error(1) };
};

// replace_mem_location_qa
struct ReplaceMemLocationQa : PlainBlock<Model, 0x04E> {
  enum Error : Code { kNullArgument = error(1) };
};

// lmainte_convert_strtofrutype
struct ConvertStrtofrutype : PlainBlock<Model, 0x052> {
  enum Error : Code { kNullArgument = error(1), kNotConverted };
};

struct Model : Room<GetModelData, FindModel, ReadTimeFile, GetUnitPositionId, SplitPath, FindIds, ReplaceMemLocation,
                    ReplaceMemLocationQa, ConvertStrtofrutype> {};

}  // namespace trace_events
