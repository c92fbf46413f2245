#include "host/spbox/trace/phrases.h"

namespace spbox {
namespace {

constexpr Phrase kSessions[] = {
    error(0, "a database was not opened", "database", "result"),
    error(1, "a database was not locked", "database", "result"),
    error(2, "a database was not unlocked", "database", "result"),
    error(3, "a database was not closed", "database", "result"),
};

constexpr Phrase kSbData[] = {
    error(5, "an argument is refused", "count"),
    error(6, "no such model", "model"),
    error(7, "a CMU was not read", "result"),
    error(8, "an IOU was not read", "result"),
};
constexpr Phrase kReadCmu[] = {
    error(5, "a record of the CMU was not read", "result", "board"),
    error(6, "the CMU's modules were not read", "result", "board"),
};
constexpr Phrase kReadModules[] = {
    error(5, "no such board", "board"),
    error(6, "a record of the board's modules was not read", "result", "board"),
    error(7, "the module's FRU record was not read", "result", "number"),
};
constexpr Phrase kReadIou[] = {
    error(5, "a record of the IOU was not read", "result", "board"),
};
constexpr Phrase kXsbData[] = {
    error(1, "an argument is refused", "count", "model"),
    error(2, "the setup records were not read"),
    error(3, "the current records were not read"),
    error(4, "a record is missing", "number", "place"),
};
constexpr Phrase kFantrayData[] = {
    error(1, "an argument is refused", "count", "model"),
    error(2, "the current record was not read", "database"),
    error(3, "the FRU records were not read", "database", "first"),
};
constexpr Phrase kFantrayRead[] = {
    error(1, "no such fan tray", "number"),
    error(2, "the model has no such fan tray", "number"),
    error(3, "an installed fan tray has no FRU record", "number"),
    error(4, "the current record is missing"),
};
constexpr Phrase kCoolingGroup[] = {
    error(1, "the record is null"),
    error(2, "the model has no cooling groups", "model"),
    error(3, "the unit is in no cooling group", "number"),
};
constexpr Phrase kPsuData[] = {
    error(1, "an argument is refused", "count", "model"),
    error(2, "the power supplies were not read", "first", "count"),
};
constexpr Phrase kPsuFetch[] = {
    error(1, "the current record was not read"),
    error(2, "the FRU records were not read", "first", "count"),
    error(3, "the current record is missing"),
};
constexpr Phrase kPsuRead[] = {
    error(1, "no such power supply", "number"),
    error(2, "an installed power supply has no FRU record", "number"),
};
constexpr Phrase kSystemStatus[] = {
    error(1, "the record is null"),
    error(2, "the system's record was not read"),
    error(3, "the system's record is missing"),
};
constexpr Phrase kDomainData[] = {
    error(1, "an argument is refused", "count"),
    error(2, "no such model", "model"),
    error(3, "the domains' records were not read"),
    error(4, "a domain's record is missing", "number", "place"),
};
constexpr Phrase kBackplaneData[] = {
    error(1, "an argument is refused", "count", "model"),
    error(2, "the current record was not read"),
    error(3, "the backplane's FRU record was not read"),
    error(4, "the DDC units' FRU records were not read"),
    error(5, "a record is missing"),
    error(6, "an installed DDC unit has no FRU record", "number"),
};
constexpr Phrase kDdcData[] = {
    error(1, "an argument is refused", "count", "model"),
    error(2, "no such DDC units", "number", "count"),
    error(3, "the backplane was not read", "result"),
};
constexpr Phrase kFruData[] = {
    error(1, "an argument is refused", "count"),
    error(2, "no such model", "model"),
    error(3, "no such type of unit", "type"),
    error(4, "the unit was not read", "result"),
};
constexpr Phrase kCheckInstall[] = {
    error(1, "an argument is refused", "number", "model"),
};
constexpr Phrase kAwaitState[] = {
    error(1, "the unit was not read", "result"),
    error(2, "the unit did not reach the expected state, or did not keep it", "result"),
};
constexpr Phrase kTestState[] = {
    error(1, "units of this type are not checked", "type"),
};
constexpr Phrase kProcessorUnits[] = {
    error(1, "an argument is refused", "count", "model"),
    error(2, "a database was not opened", "result", "database"),
    error(3, "a database was not locked", "result", "database"),
    error(6, "a database was not unlocked", "result", "database"),
    error(7, "a database was not closed", "result", "database"),
};
constexpr Phrase kProcessorUnitsByType[] = {
    error(1, "no service processor unit has this type", "type"),
    error(2, "the units were not read", "type", "result"),
};
constexpr Phrase kReadProcessorUnits[] = {
    error(1, "the current record was not read", "result", "type"),
    error(2, "no such service processor unit", "number"),
    error(3, "the unit's FRU record was not read", "result", "number"),
};
constexpr Phrase kMergeLocal[] = {
    error(1, "the local record was not read", "result", "type"),
};
constexpr Phrase kSeveralProcessorUnits[] = {
    error(1, "the records are null"),
    error(2, "a database was not opened", "result", "database"),
    error(3, "a database was not locked", "result", "database"),
    error(4, "the units of the first kind were not read", "result"),
    error(5, "the units of the second kind were not read", "result"),
    error(6, "a database was not unlocked", "result", "database"),
    error(7, "a database was not closed", "result", "database"),
    error(8, "the model has no pairs", "model"),
    error(9, "no memory for the units", "errno"),
    error(10, "the units were not read", "result"),
};

constexpr Function kFunctions[] = {
    {"lmainte_get_sb_data", Space::kPlain, 0x003, kSbData, {kSessions, 1}},
    {"lmainte_get_sb_data (CMU)", Space::kPlain, 0x004, kReadCmu, {kSessions, 1}},
    {"lmainte_get_sb_data (CPU modules)", Space::kPlain, 0x005, kReadModules, {kSessions, 1}},
    {"lmainte_get_sb_data (IOU)", Space::kSecond, 0x00A, kReadIou, {kSessions, 1}},
    {"lmainte_get_sb_data (DIMMs)", Space::kSecond, 0x00B, kReadModules, {kSessions, 1}},
    {"lmainte_get_xsb_data", Space::kSecond, 0x000, kXsbData},
    {"lmainte_get_fantray_data", Space::kPlain, 0x03E, kFantrayData},
    {"lmainte_get_fantray_data (read)", Space::kPlain, 0x03F, kFantrayRead},
    {"lmainte_get_coolgrp_data", Space::kPlain, 0x056, kCoolingGroup},
    {"lmainte_get_psu_data", Space::kPlain, 0x040, kPsuData},
    {"lmainte_get_psu_data (fetch)", Space::kPlain, 0x048, kPsuFetch},
    {"lmainte_get_psu_data (read)", Space::kPlain, 0x049, kPsuRead},
    {"lmainte_get_system_status", Space::kPlain, 0x041, kSystemStatus},
    {"lmainte_get_domain_data", Space::kPlain, 0x042, kDomainData},
    {"lmainte_get_bp32_data", Space::kSecond, 0x011, kBackplaneData},
    {"lmainte_get_ddca_data", Space::kSecond, 0x012, kDdcData},
    {"lmainte_get_fru_data", Space::kPlain, 0x06A, kFruData},
    {"lmainte_chk_fru_install", Space::kPlain, 0x06B, kCheckInstall, {kSessions, 2}},
    {"lmainte_chk_fru_install (await)", Space::kPlain, 0x06C, kAwaitState},
    {"lmainte_chk_fru_install (test)", Space::kPlain, 0x06D, kTestState},
    {"lmainte_get_emgbu_data", Space::kSecond, 0x021, kProcessorUnits},
    {"lmainte_get_emgbr_data", Space::kSecond, 0x022, kProcessorUnits},
    {"lmainte_get_emgb_data", Space::kSecond, 0x022, kProcessorUnitsByType, {}, 8},
    {"lmainte_get_emgbu_data (read)", Space::kSecond, 0x023, kReadProcessorUnits},
    {"lmainte_get_emgbu_data (local record)", Space::kSecond, 0x024, kMergeLocal},
    {"lmainte_get_emgb_data_all or _pair", Space::kSecond, 0x02E, kSeveralProcessorUnits},
};

}  // namespace

Functions inventory_functions() {
  return kFunctions;
}

}  // namespace spbox
