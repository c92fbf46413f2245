// The trace events of src/inventory.
#pragma once

#include "trace_events/event.h"

namespace trace_events {

struct Inventory;

// lmainte_get_sb_data
struct GetSbData : PlainBlock<Inventory, 0x003> {
  enum Error : Code {
    kNotOpened = error(1),
    kNotLocked,
    kNotUnlocked,
    kNotClosed,
    kRefused,
    kNoModel,
    kCmuNotRead,
    kIouNotRead
  };
};

// lmainte_get_sb_data, where it reads a CMU
struct ReadCmu : PlainBlock<Inventory, 0x004> {
  enum Error : Code { kNotOpened = error(1), kNotLocked, kNotUnlocked, kNotClosed, kNoRecord, kModulesNotRead };
};

// lmainte_get_sb_data, where it reads the CPU modules of a CMU
struct ReadCpuModules : PlainBlock<Inventory, 0x005> {
  enum Error : Code { kNotOpened = error(1), kNotLocked, kNotUnlocked, kNotClosed, kNoBoard, kNoRecord, kNoFruRecord };
};

// lmainte_get_sb_data, where it reads an IOU
struct ReadIou : SecondBlock<Inventory, 0x00A> {
  enum Error : Code { kNotOpened = error(1), kNotLocked, kNotUnlocked, kNotClosed, kNoRecord };
};

// lmainte_get_sb_data, where it reads the memory modules of a CMU
struct ReadDimms : SecondBlock<Inventory, 0x00B> {
  enum Error : Code { kNotOpened = error(1), kNotLocked, kNotUnlocked, kNotClosed, kNoBoard, kNoRecord, kNoFruRecord };
};

// lmainte_get_xsb_data
struct GetXsbData : SecondBlock<Inventory, 0x000> {
  enum Error : Code { kRefused = error(1), kNoSetup, kNoCurrent, kNoRecord };
};

// lmainte_get_fantray_data
struct GetFantrayData : PlainBlock<Inventory, 0x03E> {
  enum Error : Code { kRefused = error(1), kNoCurrent, kNoFruRecords };
};

// lmainte_get_fantray_data, where it reads the trays out of the records
struct ReadFantrays : PlainBlock<Inventory, 0x03F> {
  enum Error : Code { kNoEntry = error(1), kNoFantray, kNoFruRecord, kNoRecord };
};

// lmainte_get_coolgrp_data
struct GetCoolgrpData : PlainBlock<Inventory, 0x056> {
  enum Error : Code { kNoResult = error(1), kNoModel, kNoGroup };
};

// lmainte_get_psu_data
struct GetPsuData : PlainBlock<Inventory, 0x040> {
  enum Error : Code { kRefused = error(1), kNotRead };
};

// lmainte_get_psu_data, where it fetches the records
struct FetchPsus : PlainBlock<Inventory, 0x048> {
  enum Error : Code { kNoCurrent = error(1), kNoFruRecords, kNoRecord };
};

// lmainte_get_psu_data, where it reads the power supplies out of the records
struct ReadPsus : PlainBlock<Inventory, 0x049> {
  enum Error : Code { kNoEntry = error(1), kNoFruRecord };
};

// lmainte_get_system_status
struct GetSystemStatus : PlainBlock<Inventory, 0x041> {
  enum Error : Code { kNoResult = error(1), kNotRead, kNoRecord };
};

// lmainte_get_domain_data
struct GetDomainData : PlainBlock<Inventory, 0x042> {
  enum Error : Code { kRefused = error(1), kNoModel, kNotRead, kNoRecord };
};

// lmainte_get_bp32_data
struct GetBp32Data : SecondBlock<Inventory, 0x011> {
  enum Error : Code { kRefused = error(1), kNoCurrent, kNoBackplane, kNoDdcs, kNoRecord, kNoFruRecord };
};

// lmainte_get_ddca_data
struct GetDdcaData : SecondBlock<Inventory, 0x012> {
  enum Error : Code { kRefused = error(1), kNoUnits, kNotRead };
};

// lmainte_get_fru_data
struct GetFruData : PlainBlock<Inventory, 0x06A> {
  enum Error : Code { kRefused = error(1), kNoModel, kNoType, kNotRead };
};

// lmainte_chk_fru_install
struct ChkFruInstall : PlainBlock<Inventory, 0x06B> {
  enum Error : Code { kRefused = error(1), kNotOpened, kNotLocked, kNotUnlocked, kNotClosed };
};

// lmainte_chk_fru_install, where it waits for the state, and where it looks at the unit
struct AwaitState : PlainBlock<Inventory, 0x06C> {
  enum Error : Code { kNotRead = error(1), kNotReached };
};
struct TestState : PlainBlock<Inventory, 0x06D> {
  enum Error : Code { kNoType = error(1) };
};

// lmainte_get_emgbu_data
struct GetEmgbuData : SecondBlock<Inventory, 0x021> {
  enum Error : Code { kRefused = error(1), kNotOpened, kNotLocked, kNotUnlocked = error(6), kNotClosed };
};

// lmainte_get_emgbr_data
struct GetEmgbrData : SecondBlock<Inventory, 0x022> {
  enum Error : Code { kRefused = error(1), kNotOpened, kNotLocked, kNotUnlocked = error(6), kNotClosed };
};

// lmainte_get_emgb_data, in the block of lmainte_get_emgbr_data
struct GetEmgbData : SecondBlock<Inventory, 0x022, 8> {
  enum Error : Code { kNoType = error(1), kNotRead };
};

// Both readers above, where they read the units, and where they add what the local record says
struct ReadEmgbs : SecondBlock<Inventory, 0x023> {
  enum Error : Code { kNoRecord = error(1), kNoUnit, kNoFruRecord };
};
struct MergeLocal : SecondBlock<Inventory, 0x024> {
  enum Error : Code { kNoRecord = error(1) };
};

// lmainte_get_emgb_data_all and lmainte_get_emgb_data_pair
struct GetEmgbDataAll : SecondBlock<Inventory, 0x02E> {
  enum Error : Code {
    kNoResult = error(1),
    kNotOpened,
    kNotLocked,
    kEmgbusNotRead,
    kEmgbrsNotRead,
    kNotUnlocked,
    kNotClosed,
    kNoPairs,
    kNoMemory,
    kNotRead
  };
};

struct Inventory : Room<GetSbData, ReadCmu, ReadCpuModules, ReadIou, ReadDimms, GetXsbData, GetFantrayData,
                        ReadFantrays, GetCoolgrpData, GetPsuData, FetchPsus, ReadPsus, GetSystemStatus, GetDomainData,
                        GetBp32Data, GetDdcaData, GetFruData, ChkFruInstall, AwaitState, TestState, GetEmgbuData,
                        GetEmgbrData, GetEmgbData, ReadEmgbs, MergeLocal, GetEmgbDataAll> {};

}  // namespace trace_events
