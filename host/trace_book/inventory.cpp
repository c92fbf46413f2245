#include "trace_events/inventory.h"
#include "host/trace_book/phrases.h"

namespace trace_book {

using namespace trace_events;

namespace {

constexpr std::array kSharedOfInventory{
    SharedPhrase{"not-opened", "a database was not opened", kDatabase, kResult},
    SharedPhrase{"not-locked", "a database was not locked", kDatabase, kResult},
    SharedPhrase{"not-unlocked", "a database was not unlocked", kDatabase, kResult},
    SharedPhrase{"not-closed", "a database was not closed", kDatabase, kResult},
    SharedPhrase{"refused", "an argument is refused", "count", kModel},
    SharedPhrase{"no-model", "no such model", kModel},
    SharedPhrase{"no-board", "no such board", "board"},
    SharedPhrase{"no-current", "the current record was not read"},
    SharedPhrase{"no-result", "the record is null"},
};

}  // namespace

template <>
inline constexpr Page kPage<GetSbData>{
    "lmainte_get_sb_data",
    {
        {GetSbData::kRefused, "an argument is refused", "count"},
        {GetSbData::kCmuNotRead, "a CMU was not read", kResult},
        {GetSbData::kIouNotRead, "an IOU was not read", kResult},
    },
};

template <>
inline constexpr Page kPage<ReadCmu>{
    "lmainte_get_sb_data:cmu",
    {
        {ReadCmu::kNoRecord, "a record of the CMU was not read", kResult, "board"},
        {ReadCmu::kModulesNotRead, "the CMU's modules were not read", kResult, "board"},
    },
};

template <>
inline constexpr Page kPage<ReadCpuModules>{
    "lmainte_get_sb_data:cpu-modules",
    {
        {ReadCpuModules::kNoRecord, "a record of the board's modules was not read", kResult, "board"},
        {ReadCpuModules::kNoFruRecord, "the module's FRU record was not read", kResult, "number"},
    },
};

template <>
inline constexpr Page kPage<ReadIou>{
    "lmainte_get_sb_data:iou",
    {
        {ReadIou::kNoRecord, "a record of the IOU was not read", kResult, "board"},
    },
};

template <>
inline constexpr Page kPage<ReadDimms>{
    "lmainte_get_sb_data:dimms",
    {
        {ReadDimms::kNoRecord, "a record of the board's modules was not read", kResult, "board"},
        {ReadDimms::kNoFruRecord, "the module's FRU record was not read", kResult, "number"},
    },
};

template <>
inline constexpr Page kPage<GetXsbData>{
    "lmainte_get_xsb_data",
    {
        {GetXsbData::kNoSetup, "the setup records were not read"},
        {GetXsbData::kNoCurrent, "the current records were not read"},
        {GetXsbData::kNoRecord, "a record is missing", "number", "place"},
    },
};

template <>
inline constexpr Page kPage<GetFantrayData>{
    "lmainte_get_fantray_data",
    {
        {GetFantrayData::kNoCurrent, "the current record was not read", kDatabase},
        {GetFantrayData::kNoFruRecords, "the FRU records were not read", kDatabase, "first"},
    },
};

template <>
inline constexpr Page kPage<ReadFantrays>{
    "lmainte_get_fantray_data:read",
    {
        {ReadFantrays::kNoEntry, "no such fan tray", "number"},
        {ReadFantrays::kNoFantray, "the model has no such fan tray", "number"},
        {ReadFantrays::kNoFruRecord, "an installed fan tray has no FRU record", "number"},
        {ReadFantrays::kNoRecord, "the current record is missing"},
    },
};

template <>
inline constexpr Page kPage<GetCoolgrpData>{
    "lmainte_get_coolgrp_data",
    {
        {GetCoolgrpData::kNoModel, "the model has no cooling groups", kModel},
        {GetCoolgrpData::kNoGroup, "the unit is in no cooling group", "number"},
    },
};

template <>
inline constexpr Page kPage<GetPsuData>{
    "lmainte_get_psu_data",
    {
        {GetPsuData::kNotRead, "the power supplies were not read", "first", "count"},
    },
};

template <>
inline constexpr Page kPage<FetchPsus>{
    "lmainte_get_psu_data:fetch",
    {
        {FetchPsus::kNoFruRecords, "the FRU records were not read", "first", "count"},
        {FetchPsus::kNoRecord, "the current record is missing"},
    },
};

template <>
inline constexpr Page kPage<ReadPsus>{
    "lmainte_get_psu_data:read",
    {
        {ReadPsus::kNoEntry, "no such power supply", "number"},
        {ReadPsus::kNoFruRecord, "an installed power supply has no FRU record", "number"},
    },
};

template <>
inline constexpr Page kPage<GetSystemStatus>{
    "lmainte_get_system_status",
    {
        {GetSystemStatus::kNotRead, "the system's record was not read"},
        {GetSystemStatus::kNoRecord, "the system's record is missing"},
    },
};

template <>
inline constexpr Page kPage<GetDomainData>{
    "lmainte_get_domain_data",
    {
        {GetDomainData::kRefused, "an argument is refused", "count"},
        {GetDomainData::kNotRead, "the domains' records were not read"},
        {GetDomainData::kNoRecord, "a domain's record is missing", "number", "place"},
    },
};

template <>
inline constexpr Page kPage<GetBp32Data>{
    "lmainte_get_bp32_data",
    {
        {GetBp32Data::kNoBackplane, "the backplane's FRU record was not read"},
        {GetBp32Data::kNoDdcs, "the DDC units' FRU records were not read"},
        {GetBp32Data::kNoRecord, "a record is missing"},
        {GetBp32Data::kNoFruRecord, "an installed DDC unit has no FRU record", "number"},
    },
};

template <>
inline constexpr Page kPage<GetDdcaData>{
    "lmainte_get_ddca_data",
    {
        {GetDdcaData::kNoUnits, "no such DDC units", "number", "count"},
        {GetDdcaData::kNotRead, "the backplane was not read", kResult},
    },
};

template <>
inline constexpr Page kPage<GetFruData>{
    "lmainte_get_fru_data",
    {
        {GetFruData::kRefused, "an argument is refused", "count"},
        {GetFruData::kNoType, "no such type of unit", "type"},
        {GetFruData::kNotRead, "the unit was not read", kResult},
    },
};

template <>
inline constexpr Page kPage<ChkFruInstall>{
    "lmainte_chk_fru_install",
    {
        {ChkFruInstall::kRefused, "an argument is refused", "number", kModel},
    },
};

template <>
inline constexpr Page kPage<AwaitState>{
    "lmainte_chk_fru_install:await",
    {
        {AwaitState::kNotRead, "the unit was not read", kResult},
        {AwaitState::kNotReached, "the unit did not reach the expected state, or did not keep it", kResult},
    },
};

template <>
inline constexpr Page kPage<TestState>{
    "lmainte_chk_fru_install:test",
    {
        {TestState::kNoType, "units of this type are not checked", "type"},
    },
};

template <>
inline constexpr Page kPage<GetEmgbuData>{
    "lmainte_get_emgbu_data",
    {
        {GetEmgbuData::kNotOpened, "a database was not opened", kResult, kDatabase},
        {GetEmgbuData::kNotLocked, "a database was not locked", kResult, kDatabase},
        {GetEmgbuData::kNotUnlocked, "a database was not unlocked", kResult, kDatabase},
        {GetEmgbuData::kNotClosed, "a database was not closed", kResult, kDatabase},
    },
};

template <>
inline constexpr Page kPage<GetEmgbrData>{
    "lmainte_get_emgbr_data",
    {
        {GetEmgbrData::kNotOpened, "a database was not opened", kResult, kDatabase},
        {GetEmgbrData::kNotLocked, "a database was not locked", kResult, kDatabase},
        {GetEmgbrData::kNotUnlocked, "a database was not unlocked", kResult, kDatabase},
        {GetEmgbrData::kNotClosed, "a database was not closed", kResult, kDatabase},
    },
};

template <>
inline constexpr Page kPage<GetEmgbData>{
    "lmainte_get_emgb_data",
    {
        {GetEmgbData::kNoType, "no service processor unit has this type", "type"},
        {GetEmgbData::kNotRead, "the units were not read", "type", kResult},
    },
};

template <>
inline constexpr Page kPage<ReadEmgbs>{
    "lmainte_get_emgbu_data:read",
    {
        {ReadEmgbs::kNoRecord, "the current record was not read", kResult, "type"},
        {ReadEmgbs::kNoUnit, "no such service processor unit", "number"},
        {ReadEmgbs::kNoFruRecord, "the unit's FRU record was not read", kResult, "number"},
    },
};

template <>
inline constexpr Page kPage<MergeLocal>{
    "lmainte_get_emgbu_data:local-record",
    {
        {MergeLocal::kNoRecord, "the local record was not read", kResult, "type"},
    },
};

template <>
inline constexpr Page kPage<GetEmgbDataAll>{
    {"lmainte_get_emgb_data_all", "lmainte_get_emgb_data_pair"},
    {
        {GetEmgbDataAll::kNoResult, "the records are null"},
        {GetEmgbDataAll::kNotOpened, "a database was not opened", kResult, kDatabase},
        {GetEmgbDataAll::kNotLocked, "a database was not locked", kResult, kDatabase},
        {GetEmgbDataAll::kEmgbusNotRead, "the units of the first kind were not read", kResult},
        {GetEmgbDataAll::kEmgbrsNotRead, "the units of the second kind were not read", kResult},
        {GetEmgbDataAll::kNotUnlocked, "a database was not unlocked", kResult, kDatabase},
        {GetEmgbDataAll::kNotClosed, "a database was not closed", kResult, kDatabase},
        {GetEmgbDataAll::kNoPairs, "the model has no pairs", kModel},
        {GetEmgbDataAll::kNoMemory, "no memory for the units", kErrno},
        {GetEmgbDataAll::kNotRead, "the units were not read", kResult},
    },
};

Functions inventory_functions() {
  static constexpr auto kFunctions = functions_of<kSharedOfInventory>(Inventory{});
  return kFunctions;
}

}  // namespace trace_book
