#include "host/spbox/trace/phrases.h"

namespace spbox {
namespace {

constexpr Phrase kGetModelData[] = {
    point(2, "the model is known", "model"),
    error(1, "both arguments are null"),
    error(2, "the current system record was not read"),
    error(3, "the setup system record was not read"),
    error(4, "the general system record was not read"),
    error(5, "no count for this model", "model"),
    error(6, "no such model", "model"),
};
constexpr Phrase kReadTimeFile[] = {
    error(1, "the time file cannot be opened", "result", "errno"),
    error(2, "the time file was not read in full", "bytes read", "errno"),
    error(3, "the time file was not closed", "result", "errno"),
};
constexpr Phrase kGetPosition[] = {
    error(1, "no such mode", "mode"),
    error(2, "the path or the position is null", "mode"),
    error(3, "the path is not well formed", "mode"),
    error(4, "the model was not found out", "mode", "result"),
    error(5, "the path cannot be split", "mode", "result"),
    error(6, "no such model", "mode", "model"),
    error(7, "the model has no such location", "mode"),
    error(8, "the location is none of a field-replaceable unit", "mode", "type"),
    error(9, "the location has no such number or name", "mode", "result"),
};
constexpr Phrase kSplit[] = {
    error(1, "a component of the path is too long", "mode", "characters"),
};
constexpr Phrase kFindIds[] = {
    error(1, "the model has no unit of this number or name", "mode", "number"),
};
constexpr Phrase kReplaceMemory[] = {
    error(1, "an argument is null"),
};
constexpr Phrase kConvertType[] = {
    error(1, "an argument is null"),
    error(2, "the name is that of no unit", "result"),
};

constexpr Function kFunctions[] = {
    {"lmainte_get_model_data", Space::kPlain, 0x044, kGetModelData},
    {"lmainte_get_model_data (find model)", Space::kPlain, 0x045},
    {"lmainte_get_model_data (read time file)", Space::kPlain, 0x046, kReadTimeFile},
    {"lmainte_get_unit_position_id", Space::kPlain, 0x04A, kGetPosition},
    {"lmainte_get_unit_position_id (split)", Space::kPlain, 0x04B, kSplit},
    {"lmainte_get_unit_position_id (find ids)", Space::kPlain, 0x04C, kFindIds},
    {"replace_mem_location", Space::kPlain, 0x04D, kReplaceMemory},
    {"replace_mem_location_qa", Space::kPlain, 0x04E, kReplaceMemory},
    {"lmainte_convert_strtofrutype", Space::kPlain, 0x052, kConvertType},
};

}  // namespace

Functions model_functions() {
  return kFunctions;
}

}  // namespace spbox
