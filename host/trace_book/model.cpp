#include "trace_events/model.h"
#include "host/trace_book/phrases.h"

namespace trace_book {

using namespace trace_events;

namespace {

constexpr std::array kSharedOfModel{
    SharedPhrase{"null-argument", "an argument is null"},
};

}  // namespace

template <>
inline constexpr Page kPage<GetModelData>{
    "lmainte_get_model_data",
    {
        {GetModelData::kModel, "the model is known", kModel},
        {GetModelData::kBothNull, "both arguments are null"},
        {GetModelData::kNoCurrent, "the current system record was not read"},
        {GetModelData::kNoSetup, "the setup system record was not read"},
        {GetModelData::kNoGeneral, "the general system record was not read"},
        {GetModelData::kNoCount, "no count for this model", kModel},
        {GetModelData::kNoModel, "no such model", kModel},
    },
};

template <>
inline constexpr Page kPage<FindModel>{
    "lmainte_get_model_data:find-model",
};

template <>
inline constexpr Page kPage<ReadTimeFile>{
    "lmainte_get_model_data:read-time-file",
    {
        {ReadTimeFile::kNotOpened, "the time file cannot be opened", "result", kErrno},
        {ReadTimeFile::kNotRead, "the time file was not read in full", "bytes read", kErrno},
        {ReadTimeFile::kNotClosed, "the time file was not closed", "result", kErrno},
    },
};

template <>
inline constexpr Page kPage<GetUnitPositionId>{
    "lmainte_get_unit_position_id",
    {
        {GetUnitPositionId::kNoMode, "no such mode", "mode"},
        {GetUnitPositionId::kNullArgument, "the path or the position is null", "mode"},
        {GetUnitPositionId::kNotWellFormed, "the path is not well formed", "mode"},
        {GetUnitPositionId::kModelNotRead, "the model was not found out", "mode", kResult},
        {GetUnitPositionId::kNotSplit, "the path cannot be split", "mode", "result"},
        {GetUnitPositionId::kNoModel, "no such model", "mode", kModel},
        {GetUnitPositionId::kNoLocation, "the model has no such location", "mode"},
        {GetUnitPositionId::kNotReplaceable, "the location is none of a field-replaceable unit", "mode", "type"},
        {GetUnitPositionId::kNoIds, "the location has no such number or name", "mode", "result"},
    },
};

template <>
inline constexpr Page kPage<SplitPath>{
    "lmainte_get_unit_position_id:split",
    {
        {SplitPath::kTooLong, "a component of the path is too long", "mode", "characters"},
    },
};

template <>
inline constexpr Page kPage<FindIds>{
    "lmainte_get_unit_position_id:find-ids",
    {
        {FindIds::kNoUnit, "the model has no unit of this number or name", "mode", "number"},
    },
};

template <>
inline constexpr Page kPage<ReplaceMemLocation>{
    "replace_mem_location",
};

template <>
inline constexpr Page kPage<ReplaceMemLocationQa>{
    "replace_mem_location_qa",
};

template <>
inline constexpr Page kPage<ConvertStrtofrutype>{
    "lmainte_convert_strtofrutype",
    {
        {ConvertStrtofrutype::kNotConverted, "the name is that of no unit", "result"},
    },
};

Functions model_functions() {
  static constexpr auto kFunctions = functions_of<kSharedOfModel>(Model{});
  return kFunctions;
}

}  // namespace trace_book
