/*
 * lmainte.h - the maintenance library of the service processor
 *
 * Interactive commands use it to walk an operator through adding, replacing or removing a unit while the server runs:
 *
 *   1. lmainte_get_model_data      which server this is, how many units it holds, how long its steps may take
 *   2. lmainte_get_psu_data ...    the inventory, read from the configuration database into records of the caller
 *   3. lmainte_show_psu_list ...   the units as a numbered list in the pager
 *      lmainte_ask_select          the operator's choice; lmainte_tty_control keeps the terminal's echo off in between
 *   4. lmainte_control_led ...     the actions: control programs, run under a time limit
 *   5. lmainte_show_psu_status     the unit's state afterwards
 *
 * Rules that hold where a function does not say otherwise:
 *
 * - One thread. The library runs on the caller's thread, starts no other, and guards none of its state. Control
 *   programs and the pager are child processes that are waited for before the call returns; the progress indicator of
 *   lmainte_dot_start is a child that runs until lmainte_dot_end.
 * - Records and buffers are the caller's. The library allocates only for itself and frees before it returns. Three
 *   things outlive a call: the tables of lmainte_db_make_access_table, the record buffers that lmainte_scdb_get and
 *   lmainte_scdb_lget hand over, and the list of units that are marked for replacement.
 * - Readers write only what the database holds: they never clear a record first. Clear it where you rely on the rest.
 *   Only lmainte_get_ddca_data and lmainte_get_emgb_data_pair write whole records.
 * - Texts are looked up in the message catalogue "cli_cmn_msg" and are English without it. The command sets the locale
 *   and binds the catalogue (setlocale, bindtextdomain); the library does neither.
 * - Nothing is printed but what the function exists to show. A failure is a result and an error record in the trace.
 * - Results are 0 for success and LMAINTE_FAILED unless a function lists others.
 * - errno says nothing after a call, whatever the result. The trace has the errno of the system call that failed.
 * - Bits are counted from the least significant one: bit 0 has the value 1, bit 31 the value 0x80000000. Those that a
 *   command tests have names.
 * - Signal handlers call no function of the library but disp_done: a function that is interrupted may be half way through
 *   its trace record. They may read g_show_file_pid and sig_catch. A handler without SA_RESTART, which is each that
 *   lmainte_signal installs, ends the wait for the pager (see lmainte_show_file), shortens the limit of a control program
 *   (see lmainte_exec) and may end a question (see lmainte_ask_select).
 * - SIGCHLD keeps its default, or has a handler that waits for no child. Where it is ignored, or where a handler takes the
 *   child away, the exit status is lost: lmainte_exec returns LMAINTE_NOT_RUN, although the program ran to its end; the
 *   operations return LMAINTE_FAILED; lmainte_show_file returns 0, also where the pager could not be started.
 * - Forked children. A child of fork may use the library where no database was open at the fork. What was opened before,
 *   the parent alone may use and close; in the child, each call on it fails. The child has a copy of the list of marked
 *   units, and ends by _exit or execve, so that the parent's unwritten output is not written twice.
 * - The functions behind the library are those of lmainte_platform.h.
 *
 * Compatibility: within a major version, liblmainte.so.1 for 1, a program that was compiled with an earlier header runs
 * unchanged. Names, prototypes, values of constants, sizes of tables, and sizes and offsets of records stay; functions and
 * constants are added. Records have natural alignment, no packing, and the same size on every machine, but those that hold
 * a pointer, which have two sizes: with 32-bit / with 64-bit pointers. In bytes:
 *
 *   lmainte_unit_slot 12         lmainte_model_data 164       lmainte_cmdtime 8
 *   lmainte_unit_name 34         lmainte_unit_code 140/144    lmainte_unit_position 8
 *   lmainte_fru_type 32          lmainte_path_component 64    lmainte_access_entry 16/24
 *   UnitData 48                  CmuData 1816                 IouData 384
 *   SbData 2200                  XsbData 24                   FanData 8
 *   FantrayData 72               lmainte_fan_count 2          CoolgrpData 8
 *   DomainData 12                SystemStatus 8               BpUnitData 44
 *   Bp32Data 132                 EmgbUnitData 56              PsuData 44
 *   lmainte_signal_entry 8/16    lmainte_mask_entry 8         UnitRecord 148
 *   ClearRequest 1044            ListLine 52/104              IoxBoatData 324
 *   IoxListData 780              DotParam 12/24               lmainte_event_code 2
 *   EventUnit 40                 lmainte_swap_fru 28/40
 */
#ifndef LMAINTE_H
#define LMAINTE_H

#include <stdint.h>

/* The version of this header and of the library that it belongs to. */
#define LMAINTE_VERSION_MAJOR 1
#define LMAINTE_VERSION_MINOR 0
#define LMAINTE_VERSION_PATCH 0

#ifdef __cplusplus
extern "C" {
#endif

/* What this header declares is what the library exports. */
#ifdef __GNUC__
#pragma GCC visibility push(default)
#endif

/* ---- Results ----------------------------------------------------------------------------------------------------- */

enum {
  LMAINTE_OK = 0,
  LMAINTE_FAILED = 8,               /* a bad argument, a failed system or database call, any other exit status */
  LMAINTE_NOT_RUN = 127,            /* lmainte_exec: the program did not run, or left no exit status of its own */
  LMAINTE_BUSY = 128,               /* lmainte_control_mainte, lmainte_set_mainteflag: the program's own status 128 */
  LMAINTE_NO_REPLY = 128,           /* lmainte_ipc_communicate: no reply within the limit */
  LMAINTE_MODE_REFUSED = 200,       /* lmainte_control_mainte: the program's own status 200 */
  LMAINTE_REPORT_FAILED = 202,      /* lmainte_report_vanta: the notification failed */
  LMAINTE_FRU_REFUSED = 203,        /* lmainte_judge_control_fru: the unit may not be added or removed now */
  LMAINTE_FLAG_REFUSED = 204,       /* lmainte_set_mainteflag: the flag was refused */
  LMAINTE_DETACH_FAILED = 205,      /* lmainte_detach_fru: the unit was not detached */
  LMAINTE_LED_FAILED = 206,         /* lmainte_control_led: the LED was not switched */
  LMAINTE_TEST_FAILED = 208,        /* lmainte_test_fru, lmainte_test_sb: the test failed */
  LMAINTE_SETUP_FAILED = 209,       /* lmainte_set_xsb: the board was not set up */
  LMAINTE_CLEAR_FAILED = 210,       /* lmainte_clear_xsb: the board was not deleted */
  LMAINTE_IOXLED_FAILED = 217,      /* lmainte_control_ioxled: the expansion unit's LED was not switched */
  LMAINTE_IOXPOWER_FAILED = 218,    /* lmainte_control_ioxpower: the expansion unit's power was not switched */
  LMAINTE_FAN_FAILED = 219,         /* lmainte_control_fan: the fans' speed was not set */
  LMAINTE_STATUS_NOT_CLEARED = 220, /* lmainte_clear_status: the status was not cleared */
  LMAINTE_POSITION_UNKNOWN = 222,   /* lmainte_get_unit_position_id: the model has no such location */
  LMAINTE_NOT_REACHED = 224,        /* lmainte_chk_fru_install: the state was not reached, or not kept */
  LMAINTE_FANSPEED_FAILED = 225,    /* lmainte_check_fanspeed: the fans do not run as they should */
  LMAINTE_LINK_FAILED = 226,        /* lmainte_link_board: the unit was not linked */
  LMAINTE_FRU_REFUSED_2 = 232       /* lmainte_judge_control_fru: the program's second refusal */
};

/* ---- Server models ----------------------------------------------------------------------------------------------- */

/* Model codes, as lmainte_get_model_data gives them and the readers take them. */
enum {
  LMAINTE_MODEL_NONE = 0, /* no marker file was found */
  LMAINTE_MODEL_QB1 = 1,  /* mid-range */
  LMAINTE_MODEL_QB2 = 2,
  LMAINTE_MODEL_QE1 = 3, /* high-end */
  LMAINTE_MODEL_QE2 = 4,
  LMAINTE_MODEL_QE3 = 5,
  LMAINTE_MODEL_QA = 6 /* entry */
};

/* Unit slots of lmainte_model_data whose kind of unit is fixed. The other slots are carried for the commands. */
enum { LMAINTE_SLOT_CMU = 0, LMAINTE_SLOT_IOU = 1, LMAINTE_SLOT_FAN = 3, LMAINTE_SLOT_PSU = 4, LMAINTE_SLOT_BP32 = 12 };

/* One kind of unit. The two control times are in seconds: how long a procedure waits for a unit of this kind. The command
 * and the file agree on which wait each is for. Source: max_count the record "gen_system_info", the times the model's
 * control time file. */
typedef struct lmainte_unit_slot {
  uint32_t max_count;      /* units of this kind that the model holds */
  uint32_t control_time_1; /* as the file has them */
  uint32_t control_time_2;
} lmainte_unit_slot;

/* Bit 7 of system_flags: all power supplies count. Without it, the high end counts half of them. */
#define LMAINTE_SYSTEM_ALL_PSUS 0x80u

/* What server this is. */
typedef struct lmainte_model_data {
  uint32_t model;             /* LMAINTE_MODEL_... */
  uint32_t system_flags;      /* byte 148 of the record "current_system_info", widened; LMAINTE_SYSTEM_... */
  lmainte_unit_slot unit[13]; /* by LMAINTE_SLOT_...; 11 is never written, 12 has a count on the high end only */
} lmainte_model_data;

#define LMAINTE_CMDTIME_END 0xFFFFFFFFu /* cmd_id that ends a list of command times */

/* One time limit to look up. Lists are arrays of the caller, ended by LMAINTE_CMDTIME_END. */
typedef struct lmainte_cmdtime {
  uint32_t cmd_id; /* command number, 0 to 15: LMAINTE_CMD_... */
  uint32_t time;   /* receives the seconds that the control program may take on this model, from its command time file:
                      the time_limit of the operation that runs it; 0 for a command number above 15 */
} lmainte_cmdtime;

/*
 * Reads the model, its unit counts and its times.
 *
 * model_data  receives the model, or null. Clear it first: not every field is written on every model.
 * cmdtimes    a list whose times are to be filled, or null. One of the two must be given.
 *
 * The model comes from the marker files "/tmp/.qa", "/tmp/.qb1", "/tmp/.qb2", "/tmp/.qe1", "/tmp/.qe2" and "/tmp/.qe3",
 * the first that exists in this order. Once found, the model stays the same until the process ends. The times are in
 * "/mgb/cli/etc/controltime_qa" and "/mgb/cli/etc/cmdtime_qa", or _qb and _qe by the model's family.
 *
 * Databases 2, 1 and 0 are read one after the other; if model_data is null, database 2 alone. A caller that holds the
 * lock of one of them must hold the locks of all below it, too.
 *
 * Returns 0 or LMAINTE_FAILED: both arguments null; a record or a file that cannot be read or is of the wrong size; no
 * marker file (model_data->model is then LMAINTE_MODEL_NONE). What was filled before the failure stays filled.
 */
int32_t lmainte_get_model_data(lmainte_model_data *model_data, lmainte_cmdtime *cmdtimes);

/* ---- Unit locations ---------------------------------------------------------------------------------------------- */

/* Unit type codes of the database records. */
enum {
  LMAINTE_TYPE_OPNL = 2,        /* operator panel */
  LMAINTE_TYPE_CMU = 16,        /* CPU/memory unit, a system board's main part */
  LMAINTE_TYPE_CPUM = 32,       /* CPU module */
  LMAINTE_TYPE_DIMM = 40,       /* memory module */
  LMAINTE_TYPE_BP = 51,         /* backplane */
  LMAINTE_TYPE_IOU = 80,        /* I/O unit */
  LMAINTE_TYPE_PCI = 104,       /* PCI slot */
  LMAINTE_TYPE_EMGBU = 128,     /* service processor unit */
  LMAINTE_TYPE_EMGBR = 130,     /* service processor unit of the second kind */
  LMAINTE_TYPE_PSU = 161,       /* power supply */
  LMAINTE_TYPE_PSU_2 = 162,     /* power supply of the second kind */
  LMAINTE_TYPE_FANTRAY_2 = 176, /* fan trays of the second and third kind */
  LMAINTE_TYPE_FANTRAY_3 = 178,
  LMAINTE_TYPE_FANTRAY = 180, /* fan tray */
  LMAINTE_TYPE_DDC = 212      /* DDC unit of the backplane */
};

/* A unit whose number is no plain counter. A table of them ends with an empty name. */
typedef struct lmainte_unit_name {
  char name[32];  /* last component of the location, such as "PSU#41" */
  uint8_t id_fru; /* its place in the database's records, counted from 0 */
  uint8_t id_pos; /* its own number */
} lmainte_unit_name;

/* A location that the model has. A table of them ends with an empty pattern. */
typedef struct lmainte_unit_code {
  char pattern[128];              /* the location without its numbers, such as "/CMU#/MEM#" */
  uint8_t type_fru;               /* unit type code of the database records, 0 where they have none */
  uint8_t type_pos;               /* position code */
  uint8_t max[6];                 /* a component's number is below this, 0 for components that the pattern lacks */
  const lmainte_unit_name *names; /* names the last component where its number is no plain counter, else null */
} lmainte_unit_code;

/* The locations of each model. Read only, for the life of the library. */
extern const lmainte_unit_code convert_unit_code_qa[], convert_unit_code_qb1[], convert_unit_code_qb2[],
    convert_unit_code_qe1[], convert_unit_code_qe2[], convert_unit_code_qe3[];

/* The names that those locations use: power supplies, fan trays, memory modules, fan backplanes. */
extern const lmainte_unit_name convert_unit_no_qa_psu[], convert_unit_no_qb1_psu[], convert_unit_no_qb2_psu[],
    convert_unit_no_qe1_psu[], convert_unit_no_qe2_psu[], convert_unit_no_qe3_psu[];
extern const lmainte_unit_name convert_unit_no_qa_fan[], convert_unit_no_qb1_fan[], convert_unit_no_qb2_fan[],
    convert_unit_no_qe1_fan[], convert_unit_no_qe2_fan[], convert_unit_no_qe3_fan[];
extern const lmainte_unit_name convert_unit_no_qa_mem[], convert_unit_no_qb1_mem[], convert_unit_no_qb2_mem[],
    convert_unit_no_qe_mem[];
extern const lmainte_unit_name convert_unit_no_qa_fanbp[], convert_unit_no_qb1_fanbp[], convert_unit_no_qb2_fanbp[],
    convert_unit_no_qe1_fanbp[], convert_unit_no_qe2_fanbp[], convert_unit_no_qe3_fanbp[];

/* A location as bytes. */
typedef struct lmainte_unit_position {
  uint8_t type;  /* by mode: unit type code of the database records, or position code */
  uint8_t count; /* parts of the location */
  uint8_t id[6]; /* by mode: place in the database's records, or the unit's own number, of each part; 0 past count */
} lmainte_unit_position;

/* The same in words, for the unit type codes of the database records. */
typedef struct lmainte_fru_type {
  uint32_t type, count;
  uint32_t id[6];
} lmainte_fru_type;

/* One part of a location. Texts end with a NUL and are cut to their room. */
typedef struct lmainte_path_component {
  char name[16];   /* up to and with its "#", or the whole text where it has none */
  char number[16]; /* behind the "#", or "0" where it has none */
  char whole[32];
} lmainte_path_component;

enum { LMAINTE_POSITION_FRU = 0, LMAINTE_POSITION_UNIT = 1 };

/*
 * Turns a unit's location, such as "/CMU#2/MEM#13A", into its position on this model.
 *
 * mode      LMAINTE_POSITION_FRU: type of the database records, ids counted from 0; LMAINTE_POSITION_UNIT: position
 *           code, own numbers
 * path      the location: one to six parts, each begun by "/", numbers in decimal without leading zeros
 * position  receives the position; written on success only
 *
 * Reads the model with lmainte_get_model_data, under its conditions, unless the path is malformed.
 *
 * Returns 0; LMAINTE_FAILED for an unknown mode, a null argument or a model that is unknown or cannot be read;
 * LMAINTE_POSITION_UNKNOWN for a path that is malformed or names no location of the model, and with
 * LMAINTE_POSITION_FRU for a location that has no type in the database records.
 */
int32_t lmainte_get_unit_position_id(uint32_t mode, const char *path, lmainte_unit_position *position);

/* The same with LMAINTE_POSITION_FRU, in words. Writes type, count and the first count ids, on success only. It never
 * writes the other ids. */
int32_t lmainte_convert_strtofrutype(const char *path, lmainte_fru_type *result);

/*
 * Rewrite the parts of a memory module's location as the name tables have them. components has room for three parts.
 *
 * replace_mem_location     puts the second part before the third: "MEMB#5" and "MEM#2B" become "MEMB#5/MEM#2B", cut at
 *                          31 characters
 * replace_mem_location_qa  makes three parts of two: the second moves to the third place, and a part numbered "0" with
 *                          empty texts takes its place; *count becomes 3
 *
 * Each returns 0, or LMAINTE_FAILED for a null argument.
 */
int32_t replace_mem_location(lmainte_path_component *components);
int32_t replace_mem_location_qa(lmainte_path_component *components, uint32_t *count);

/* ---- Configuration database -------------------------------------------------------------------------------------- */

#define LMAINTE_DB_GEN 0u      /* general system record */
#define LMAINTE_DB_SETUP 1u    /* setup records */
#define LMAINTE_DB_CURRENT 2u  /* live state of the units */
#define LMAINTE_DB_LOCAL 3u    /* the service processor unit on which the process runs */
#define LMAINTE_DB_FRU 4u      /* identity of the units */
#define LMAINTE_DB_RESERVED 5u /* holds no record that the library knows */

/*
 * Sessions and locks. The process counts its users of each database, so nested users open and lock it once; the last
 * one to leave closes or unlocks it. Open and lock in ascending order of the ids, unlock and close in descending order:
 * the first lock and the last unlock of a database are refused while one with a higher id is locked.
 *
 * db_id  LMAINTE_DB_...
 *
 * Each returns 0, or -1 and changes nothing: an unknown id; lmainte_scdb_close without an open or lmainte_scdb_unlock
 * without a lock; a higher database locked; a failure of the database client. After a failed close the database counts
 * as open, and the next close tries again. After a failed unlock it counts as locked, and every lower database is
 * refused until an unlock succeeds: a command that cannot unlock should end.
 *
 * While another process holds a lock, the platform decides how long a call waits for it. lmainte_scdb_lock and all that
 * locks for itself, such as the readers of the inventory, wait as long as the platform does for each database, one after
 * the other. On the host platform that is three seconds; then the call fails.
 */
int32_t lmainte_scdb_open(uint32_t db_id);
int32_t lmainte_scdb_close(uint32_t db_id);
int32_t lmainte_scdb_lock(uint32_t db_id);
int32_t lmainte_scdb_unlock(uint32_t db_id);

/*
 * Read and write one record of a unit, named by four coordinates.
 *
 * db_id      LMAINTE_DB_SETUP to LMAINTE_DB_FRU
 * model      LMAINTE_MODEL_...; it matters for the FRU record of an IOU only
 * unit_type  LMAINTE_TYPE_...
 * unit_no    the unit's number, where the record's name has one
 * buf        receives a record from malloc. Set it to null first and free it whatever the result: a read that fails may
 *            hand over a record all the same. Without a read, nothing is written to it.
 * data       a record of the kind's size
 *
 * For lmainte_scdb_get, open and lock the database first. For lmainte_scdb_lget, open it: the call locks it itself.
 * lmainte_scdb_put takes no lock of its own.
 *
 * Each returns 0 or LMAINTE_FAILED: a database and a unit type that have no record together; a record that is missing
 * or of another size; a failed lock or unlock; data null. A record stays the caller's when the unlock after its read
 * fails.
 */
uint32_t lmainte_scdb_get(uint32_t db_id, uint32_t model, int32_t unit_type, uint32_t unit_no, void **buf);
uint32_t lmainte_scdb_lget(uint32_t db_id, uint32_t model, int32_t unit_type, uint32_t unit_no, void **buf);
uint32_t lmainte_scdb_put(uint32_t db_id, uint32_t model, int32_t unit_type, uint32_t unit_no, const void *data);

/* One record of a run. A table of them ends with an entry whose index is negative. */
typedef struct lmainte_access_entry {
  int32_t index;    /* the record's number in the run; -1 in the end entry */
  int32_t size;     /* bytes that the record must have; after the read, bytes that it has */
  const char *name; /* the record's name, or its pattern such as "setup_xsb_info_%02d"; the caller's, not copied */
  void *data;       /* the record; null until it is read. The table owns it. */
} lmainte_access_entry;

/*
 * Makes a table for a run of records of one kind: indices first to first + count - 1.
 *
 * first  first index, 0 or above; count  number of records, 1 or above; size  bytes of each, 1 or above
 * name   pattern with one integer conversion for the index, or none; must outlive the table
 *
 * Returns the table, to be given back with lmainte_db_free_access_table, or null: an argument out of range, or no
 * memory.
 */
lmainte_access_entry *lmainte_db_make_access_table(int32_t first, int32_t count, int32_t size, const char *name);

/*
 * Opens and locks the database, reads the records of the table in order, unlocks and closes.
 *
 * Not while a database with a higher id is locked, unless this one is locked too. Read a table once only.
 *
 * Returns 0 when every record was read and had its size; -1 for a null table, a failed open, lock, unlock or close, or
 * at the first record that is missing or of another size. Free the table all the same: it owns what was read until
 * then.
 */
int32_t lmainte_db_get_data(uint32_t db_id, lmainte_access_entry *table);

/* Frees the table with every record that it owns. A null table and a record never read leave an error in the trace. */
void lmainte_db_free_access_table(lmainte_access_entry *table);

/* ---- Inventory --------------------------------------------------------------------------------------------------- */

/* Bits of a unit's status word: 31, 29, 28 and 15. Installed, and neither faulted nor degraded, is normal. */
#define LMAINTE_STATUS_INSTALLED 0x80000000u
#define LMAINTE_STATUS_FAULTED 0x20000000u
#define LMAINTE_STATUS_DEGRADED 0x10000000u
#define LMAINTE_STATUS_MARKED 0x00008000u /* for replacement; also of SystemStatus: at least one unit is marked */

/* Bits of a unit's flag byte, for units that have one. They are merged into the status word, faulted before degraded.
 */
#define LMAINTE_FLAG_FAULTED 0x20u
#define LMAINTE_FLAG_DEGRADED 0x10u

/* A CPU module or a memory module of a system board. */
typedef struct UnitData {
  int32_t type;          /* LMAINTE_TYPE_CPUM or LMAINTE_TYPE_DIMM */
  int32_t number;        /* position 0 to 3 of the CPU module, number 0 to 31 of the memory module */
  uint32_t unit_id[2];   /* for api_conv_unit_name_get */
  int32_t status;        /* status word */
  int32_t mainte_status; /* the same */
  char fru_name[20]; /* when installed. CPU module: FRU name, not terminated, 18 bytes at most. Memory module: the four
                            bytes at byte 95 of its FRU record; the other sixteen are not written. */
  int32_t xsb;       /* extended system board to which the module belongs */
} UnitData;

/* The CMU of a system board. Source: the records "setup_cmu_info_%02d", "current_cmu_info_%02d", "fru_cmu_info_%02d"
 * and those of its modules, by the board's number. */
typedef struct CmuData {
  int32_t type;   /* LMAINTE_TYPE_CMU */
  int32_t number; /* board number */
  uint32_t unit_id[2];
  int32_t status;        /* status word */
  int32_t mainte_status; /* the same */
  uint32_t parts_status; /* status words of the installed modules: the faulted one wins, then the degraded one */
  uint32_t cur_info_6;   /* words 6 and 7 of the current record, passed through */
  uint32_t cur_info_7;
  uint32_t setup_info_0; /* words 0 and 1 of the setup record, passed through */
  uint32_t setup_info_1;
  int32_t xsb_mode;     /* 1: the board is one extended system board; any other value: four */
  uint32_t cur_info_11; /* word 11 of the current record, passed through */
  UnitData cpum[4];
  UnitData dimm[32]; /* in the order of the operator's list, not of the numbers */
  char fru_name[20]; /* when installed: FRU name, not terminated, 18 bytes at most */
  int32_t xsb[4];    /* extended system boards of the board, board number * 4 on; all alike when it is one */
} CmuData;

/* Bit 30 of the power word of a PCI slot: the slot has power. */
#define LMAINTE_PCI_POWER 0x40000000u

/* The IOU of a system board. Source: the records "current_iou_info_%02d" and "fru_iou_qb_info_%02d", on the high end
 * "fru_iou_qe_info_%02d", by the board's number. */
typedef struct IouData {
  int32_t type;   /* LMAINTE_TYPE_IOU */
  int32_t number; /* board number */
  uint32_t unit_id[2];
  int32_t status;         /* status word */
  uint32_t mainte_status; /* always installed and normal: an IOU's own fault shows in parts_status */
  int32_t parts_status;   /* the status word again */
  char fru_name[20];      /* when installed: FRU name, not terminated, 18 bytes at most */
  uint32_t reserved[80]; /* eight PCI slots of ten words each, filled by the caller: unit id in words 2 and 3 of a slot,
                             status in 4, number in 6, LMAINTE_PCI_POWER in 7 */
  int32_t xsb[4];        /* as in CmuData */
} IouData;

/* A system board. */
typedef struct SbData {
  CmuData cmu;
  IouData iou;
} SbData;

/*
 * Reads system boards.
 *
 * sb     a number: that board only, into out[0]; -1: boards 0 to count - 1
 * count  above 0; with -1, the records that out holds
 * model  LMAINTE_MODEL_QB1 to LMAINTE_MODEL_QA
 *
 * Databases 1, 2 and 4 are opened and locked, so no higher one may be locked. All CMUs are read before the first IOU.
 * Every record must be there, that of a module which is not installed too.
 *
 * Returns 0 or LMAINTE_FAILED: count not above 0, out null or an unknown model (no database is touched then); a record
 * missing or of the wrong size; a failed open, lock, unlock or close. Parts read before the failure stay filled.
 */
int32_t lmainte_get_sb_data(int32_t sb, int32_t count, int32_t model, SbData *out);

/* An extended system board. Source: the records "setup_xsb_info_%02d" and "current_xsb_info_%02d" of its number. */
typedef struct XsbData {
  int32_t number;      /* board number * 4 + 0 to 3 */
  uint32_t cur_info_0; /* words 0 and 13 of the current record, passed through */
  uint32_t cur_info_13;
  int32_t current_domain; /* domain to which it belongs while it is active */
  int32_t setup_domain;   /* domain for which it is set up */
  uint8_t active;         /* 1: active */
} XsbData;

/*
 * Reads extended system boards; high-end models only.
 *
 * xsb    a number: count boards from that number on; -1: count boards from 0 on. A number does not limit the read to
 *        one.
 * count  not 0; the records that out holds
 *
 * Returns 0 or LMAINTE_FAILED: count 0, out null or a model that is no high-end one (no database is touched then); a
 * record missing or of the wrong size (nothing is written then); a failed open, lock, unlock or close.
 */
int32_t lmainte_get_xsb_data(int32_t xsb, int32_t count, int32_t model, XsbData *out);

/* A fan of a fan tray. */
typedef struct FanData {
  int32_t status; /* status word with the flag byte merged in */
  uint8_t flags;  /* the flag byte */
} FanData;

/* A fan tray. Source: its entry in the record "current_fantray_info"; its name, on the high end only, from
 * "fru_fan_qe_info_%02d". */
typedef struct FantrayData {
  int32_t type;   /* LMAINTE_TYPE_FANTRAY */
  int32_t number; /* fan tray number, counted from 0 */
  uint32_t unit_id[2];
  int32_t status;        /* status word with the flag byte merged in */
  int32_t mainte_status; /* the same */
  int32_t fan_count;     /* fans of the tray on this model; only so many of fan are written */
  FanData fan[3];
  char fru_name[18]; /* FRU name on the high end, not terminated; written only when installed */
  uint8_t flags;     /* the flag byte */
} FantrayData;

/* The number of fans of a tray. A table of them ends with tray 255. */
typedef struct lmainte_fan_count {
  uint8_t tray;
  uint8_t fans;
} lmainte_fan_count;

/* The fan trays of each model. Read only, for the life of the library. */
extern const lmainte_fan_count max_fan_num_qa[], max_fan_num_qb1[], max_fan_num_qb2[], max_fan_num_qe1[],
    max_fan_num_qe2[], max_fan_num_qe3[];

/*
 * Reads fan trays. The model has the trays of its table max_fan_num_...: numbers 0 to 3 on qa, 0 to 5 on qb1, 0 to 7 on
 * qb2, 0 to 11 on qe1, 0 to 15 on qe2, 0 to 31 on qe3. The max_count that lmainte_get_model_data gives is what this server
 * holds of them, and is not looked at here.
 *
 * tray   a number: that tray only, into out[0]; -1: count trays, in the order of the operator's list. On qe1 that order
 *        is 2, 3, 4, 5, 0, 1, 6, 7 and so on, and the fans of the first six records are those of trays 0 to 5.
 * count  not 0; with -1, the records that out holds. Below 0 with -1, the call fails on the high end, and reads no tray
 *        and returns 0 on the other models.
 * model  LMAINTE_MODEL_QB1 to LMAINTE_MODEL_QA
 *
 * A tray that is not installed needs no FRU record. On qe1 with -1, the names are fetched of trays 0 to count - 1,
 * whatever the list shows: a count of 1 to 5 fails at the first installed tray whose number is count or above. Ask for
 * 6 at least.
 *
 * Returns 0 or LMAINTE_FAILED: count 0, out null or an unknown model (no database is touched then); a tray number that
 * the model's table lacks; a record missing or of the wrong size; a failed open, lock, unlock or close. Records filled before the
 * failure stay filled.
 */
int32_t lmainte_get_fantray_data(int32_t tray, int32_t count, int32_t model, FantrayData *out);

/* The cooling group of a unit: units with the same mask are cooled together. */
typedef struct CoolgrpData {
  uint32_t coolgrp_mask[2]; /* high word, low word */
} CoolgrpData;

/*
 * Tells the cooling group of a power supply or a fan tray on qa, qb1 or qb2.
 *
 * unit_type  LMAINTE_TYPE_PSU or LMAINTE_TYPE_FANTRAY; unit_no  its number
 *
 * Returns 0, or LMAINTE_FAILED and writes nothing: out null, another model, a unit without a cooling group.
 */
int32_t lmainte_get_coolgrp_data(int32_t unit_type, int32_t unit_no, int32_t model, CoolgrpData *out);

/* A domain. Source: its record "current_domain_info_%02d". */
typedef struct DomainData {
  int32_t number;
  uint32_t dom_info_0; /* word 0 of the record, passed through */
  uint8_t dom_byte_44; /* byte 44 of the record, passed through */
} DomainData;

/*
 * Reads domains.
 *
 * domain  a number: that domain only, into out[0]; -1: domains 0 to count - 1
 * count   not 0; with -1, the records that out holds
 * model   LMAINTE_MODEL_QB1 to LMAINTE_MODEL_QA
 *
 * Returns 0 or LMAINTE_FAILED: count 0, out null or an unknown model (no database is touched then); a record missing or
 * of the wrong size (nothing is written then); a failed open, lock, unlock or close.
 */
int32_t lmainte_get_domain_data(int32_t domain, int32_t count, int32_t model, DomainData *out);

/* The state of the whole system. Source: words 2 and 8 of the record "current_system_info". */
typedef struct SystemStatus {
  uint32_t system_status; /* LMAINTE_STATUS_MARKED: units are marked for replacement */
  uint32_t system_info_8; /* passed through */
} SystemStatus;

/* Reads the state of the system. Returns 0, or LMAINTE_FAILED and writes nothing: out null, the record missing or of
 * the wrong size, a failed open, lock, unlock or close. */
int32_t lmainte_get_system_status(SystemStatus *out);

/* The database holds nothing of the I/O expansion units: reads and writes nothing, leaves no trace, returns 0. */
int32_t lmainte_get_iox_data(void);

/* The backplane of qe1, or one of its two DDC units. Source: the record "current_bp32_info"; the name from
 * "fru_bpa_info" or "fru_ddca_info_%02d". */
typedef struct BpUnitData {
  int32_t type;   /* LMAINTE_TYPE_BP or LMAINTE_TYPE_DDC */
  int32_t number; /* 0; the DDC unit's number 0 or 1 */
  uint32_t unit_id[2];
  int32_t status;        /* status word as stored */
  int32_t mainte_status; /* the same */
  char fru_name[20];     /* when installed: FRU name, not terminated, 18 bytes at most */
} BpUnitData;

/* The backplane with its DDC units. */
typedef struct Bp32Data {
  BpUnitData bp;
  BpUnitData ddc[2];
} Bp32Data;

/*
 * Reads the backplane and its DDC units into one record; qe1 only. The first argument is not read, count must not be 0.
 *
 * Returns 0 or LMAINTE_FAILED: count 0, out null or another model (no database is touched then); a record missing or of
 * the wrong size; a failed open, lock, unlock or close.
 */
int32_t lmainte_get_bp32_data(int32_t ignored, int32_t count, int32_t model, Bp32Data *out);

/*
 * Reads DDC units of the backplane; qe1 only. Whole records are written, with zero bytes behind a name.
 *
 * ddc    0 or 1: that unit only, into out[0]; -1: units 0 to count - 1
 * count  above 0; with -1, at most 2
 *
 * Returns 0, or LMAINTE_FAILED and writes nothing: an argument out of its range, and all that fails
 * lmainte_get_bp32_data.
 */
int32_t lmainte_get_ddca_data(int32_t ddc, int32_t count, int32_t model, BpUnitData *out);

/* Bits of fault_flags and of role_flag of a service processor unit. */
#define LMAINTE_EMGB_FAULTED 0x10000u
#define LMAINTE_EMGB_DEGRADED 0x8000u
#define LMAINTE_EMGBU_OTHER 0x80000000u /* an EMGBU that is not the process's own */
#define LMAINTE_EMGBR_OWN 0x40000000u   /* the EMGBR of the own number */
#define LMAINTE_EMGBR_OTHER 0x20000000u

/* A service processor unit. Source: its entry in the record "current_mgb_info" or "current_mgbr_info", its name from
 * "fru_emgbu_info_%02d", and the record "local_mgb_info" of the unit on which the process runs. */
typedef struct EmgbUnitData {
  int32_t type;   /* LMAINTE_TYPE_EMGBU or LMAINTE_TYPE_EMGBR */
  int32_t number; /* unit number */
  uint32_t unit_id[2];
  uint32_t local_word;   /* a word of the local record, passed through: EMGBU word 0 for the process's own unit, else 1;
                            EMGBR word 3 for the own number, else 4 */
  uint32_t fault_flags;  /* LMAINTE_EMGB_... */
  int32_t status;        /* status word as stored */
  uint32_t role_flag;    /* of an installed unit: LMAINTE_EMGBU_... or LMAINTE_EMGBR_..., or 0; else 0 */
  uint32_t local_number; /* number of the unit on which the process runs */
  char name[20];         /* FRU name, installed or not: not terminated, 18 bytes at most */
} EmgbUnitData;

/*
 * Read service processor units: EMGBU units, or on qe3 EMGBR units, or by type.
 *
 * unit   a number: that unit only, into out[0]; -1: units 0 to count - 1
 * count  above 0; with -1, the records that out holds
 * model  LMAINTE_MODEL_QB1 to LMAINTE_MODEL_QA
 *
 * Databases 2, 3 and 4 are opened and locked, so no higher one may be locked.
 *
 * Return 0 or LMAINTE_FAILED: count not above 0, out null, an unknown type or model, EMGBR units on another model than
 * qe3 (no database is touched then); a record missing or of the wrong size; a unit that the record has no entry for; a
 * failed open, lock, unlock or close. Records filled before the failure stay filled.
 */
int32_t lmainte_get_emgbu_data(int32_t unit, int32_t count, int32_t model, EmgbUnitData *out);
int32_t lmainte_get_emgbr_data(int32_t unit, int32_t count, int32_t model, EmgbUnitData *out);
int32_t lmainte_get_emgb_data(int32_t type, int32_t unit, int32_t count, int32_t model, EmgbUnitData *out);

/* Reads every service processor unit of the model: one record on qa, qb1 and qb2; EMGBU 0 and 1 on qe1 and qe2; EMGBU 0
 * and 1, then EMGBR 0 and 1 on qe3. Results as above, but an unknown model fails only after the databases were opened
 * and locked. */
int32_t lmainte_get_emgb_data_all(int32_t model, EmgbUnitData *out);

/*
 * Reads service processor units in pairs; high-end models only. Whole records are written, with zero bytes behind a
 * name.
 *
 * unit  a number: on qe3 the EMGBU and the EMGBR of that number, on qe1 and qe2 the EMGBU; -1: all, on qe3 EMGBU 0,
 *       EMGBR 0, EMGBU 1, EMGBR 1
 *
 * A unit that does not exist is skipped: its record stays as it was.
 *
 * Results as of lmainte_get_emgb_data_all; also LMAINTE_FAILED for qa, qb1 and qb2 (no database is touched then) and
 * when memory runs out. Nothing is written on failure.
 */
int32_t lmainte_get_emgb_data_pair(int32_t unit, int32_t model, EmgbUnitData *out);

/* A power supply. Source: its entry in the record "current_psu_info", its name from "fru_psu_qb_info_%02d" on qb1 and
 * qb2, "fru_psu_qe_info_%02d" on the other models. */
typedef struct PsuData {
  int32_t type;          /* LMAINTE_TYPE_PSU */
  int32_t number;        /* power supply number, counted from 0 */
  uint32_t unit_id[2];   /* for api_conv_unit_name_get */
  int32_t status;        /* status word with the flag byte merged in */
  int32_t mainte_status; /* the same */
  char fru_name[18];     /* FRU name, not terminated; written only when installed, and only as long as it is */
  uint8_t info_byte;     /* byte 24 of the entry on qa, qb1 and qb2; 255 on the high end */
  uint8_t flags;         /* the flag byte */
} PsuData;

/*
 * Reads power supplies.
 *
 * psu    a number: that power supply only, into out[0]; -1: numbers 0 to count - 1
 * count  not 0; with -1, the records that out holds
 * model  LMAINTE_MODEL_QB1 to LMAINTE_MODEL_QA
 *
 * A power supply that is not installed needs no FRU record.
 *
 * Returns 0 or LMAINTE_FAILED: count 0, out null or an unknown model (no database is touched then); a record that is
 * missing or of the wrong size; a number that the record has no entry for; a failed open, lock, unlock or close.
 */
int32_t lmainte_get_psu_data(int32_t psu, int32_t count, int32_t model, PsuData *out);

/*
 * Reads the record of any kind of unit through the reader that serves its type: LMAINTE_TYPE_CMU and _IOU an SbData,
 * the PSU types a PsuData, the fan tray types a FantrayData, LMAINTE_TYPE_DDC a BpUnitData. index, count, model and out
 * are handed to that reader.
 *
 * Returns 0 or LMAINTE_FAILED: count 0, out null, an unknown model or type, a type that no reader serves here (the
 * service processor units), and all that fails the reader.
 */
int32_t lmainte_get_fru_data(int32_t type, int32_t index, int32_t count, int32_t model, void *out);

/*
 * Waits until a unit is in place or gone, and stays so for a while.
 *
 * expectation  0 or 1: installed; above: not installed
 * type         as for lmainte_get_fru_data
 * index        the unit's number, not -1
 * record       room for one record of the type, overwritten on every look
 *
 * Waits five seconds, then looks up to five times a second apart until the state is there, then four times more, a
 * second apart, while it must stay.
 *
 * Returns 0; LMAINTE_NOT_REACHED when the state was not reached or not kept; LMAINTE_FAILED for index -1, record null,
 * an unknown model or type, a read that fails, a failed open or close.
 */
int32_t lmainte_chk_fru_install(uint32_t expectation, int32_t type, int32_t index, int32_t model, void *record);

/* ---- Signals and processes --------------------------------------------------------------------------------------- */

/* A handler to install, SIG_DFL or SIG_IGN. A table ends with signo -1. */
typedef struct lmainte_signal_entry {
  int32_t signo;
  void (*handler)(int);
} lmainte_signal_entry;

/* A signal to block or unblock: how is SIG_BLOCK, SIG_UNBLOCK, or SIG_SETMASK, which leaves this signal as the only one
 * in the mask. A table ends with signo -1. */
typedef struct lmainte_mask_entry {
  int32_t signo;
  int32_t how;
} lmainte_mask_entry;

/* Installs the handlers, without flags and with an empty mask. Returns 0, or LMAINTE_FAILED for a null table or at the
 * first entry that fails: those before it stay installed, those after it are not tried. */
int32_t lmainte_signal(const lmainte_signal_entry *table);

/* Applies all entries, one after the other. An entry that fails does not stop it. Returns 0, or LMAINTE_FAILED for a null
 * table. */
int32_t lmainte_signal_mask(const lmainte_mask_entry *table);

/*
 * Reads the process id from a procedure information text: a decimal number at its start, up to its end or a comma.
 * White space and a sign may stand before it.
 *
 * Returns the number, which is negative where the text has a minus sign and from 2147483648 on; 0 for an empty text,
 * which says that no procedure is under way, and for one that begins with a comma; -1 for text null, for anything else,
 * and for a number beyond 32 bits. A result below 1 is no process: do not give it to kill. A result of 1 or above says
 * nothing of whether that process exists.
 */
int32_t lmainte_get_pid(const char *text);

/* ---- Control programs and operations ----------------------------------------------------------------------------- */

/* Numbers of the control programs. */
enum {
  LMAINTE_CMD_CTLMAINTE = 0,
  LMAINTE_CMD_CTLFAN = 1,
  LMAINTE_CMD_JUDGECTLFRU = 2,
  LMAINTE_CMD_TESTFRU = 3,
  LMAINTE_CMD_DETACHFRU = 4,
  LMAINTE_CMD_CTLLED = 5,
  LMAINTE_CMD_WAITMGBREADY = 6,
  LMAINTE_CMD_SETMAINTEFLAG = 7,
  LMAINTE_CMD_SETUPFRU = 8,
  LMAINTE_CMD_IOADM = 9,
  LMAINTE_CMD_CLEARPCI = 10,
  LMAINTE_CMD_VANTAMAINTE = 11,
  LMAINTE_CMD_TESTSB = 12,
  LMAINTE_CMD_DELETEBOARD = 13,
  LMAINTE_CMD_CHKFANSPEED = 14,
  LMAINTE_CMD_LINKBOARD = 15
};

/*
 * Runs a control program and waits for it.
 *
 * command_id  LMAINTE_CMD_...
 * time_limit  seconds that the program may take, above 0
 * format      the argument line, as for printf, cut at 1023 characters. White space separates the arguments; there is
 *             no quoting
 *
 * The program gets no standard input, output or error, and an environment of LC_ALL=C and the caller's LD_LIBRARY_PATH
 * and PRIV, empty where the caller has none, each cut at 1023 characters with its name. PRIV is the operator's
 * privileges: the service processor's login sets it for the commands that it starts, and the control programs read it; the
 * library only hands it on. On a workstation nobody sets it. At its limit it is asked to end
 * with SIGTERM, three times five seconds apart, and then killed. The limit is measured by sleeping: a signal handler of
 * the caller's that runs in between shortens it. If it runs in the last wait, the program stays a zombie.
 *
 * Returns the program's exit status, 0 to 255, also when it ended by itself in answer to SIGTERM; LMAINTE_NOT_RUN when
 * format is null, time_limit is not above 0, command_id is unknown, memory or fork fails, the program is missing, it
 * died by a signal, or the wait for it failed.
 */
int32_t lmainte_exec(int32_t command_id, int32_t time_limit, const char *format, ...);

/*
 * The unit that an operation works on, filled by the command itself. Only the first two words and the name up to its
 * NUL are read, so a record of the caller's own with this beginning will do. No inventory record may stand in for it.
 */
typedef struct UnitRecord {
  int32_t type;      /* LMAINTE_TYPE_...; recorded in the trace */
  int32_t number;    /* unit number; recorded in the trace */
  uint32_t reserved; /* not read */
  uint32_t ident[2]; /* not read by the operations */
  char name[128];    /* location name, such as "/PSU#0": the control program's -u argument */
} UnitRecord;

enum { LMAINTE_MAINTE_UNLOCK = 0, LMAINTE_MAINTE_LOCK = 1 };
enum { LMAINTE_REPORT_START = 0, LMAINTE_REPORT_END = 1 };
enum { LMAINTE_FAN_LOW = 0, LMAINTE_FAN_HIGH = 1, LMAINTE_FAN_FULL = 2 };
enum { LMAINTE_LED_OFF = 0, LMAINTE_LED_ON = 1, LMAINTE_LED_BLINK = 2, LMAINTE_LED_SYNC = 3 };
enum { LMAINTE_FLAG_START = 0, LMAINTE_FLAG_END = 1 };
enum { LMAINTE_POWER_OFF = 0, LMAINTE_POWER_ON = 1 };

/*
 * The operations below run one control program each and judge its exit status. time_limit is in seconds.
 *
 * Each returns 0 when the program ends with 0, and LMAINTE_FAILED for a time limit not above 0, a mode that is not
 * listed, a null unit, a program that did not run, died or was stopped at its limit, and for every exit status that its
 * comment does not name. Nothing is run when an argument is refused.
 */

/* Puts the system into maintenance mode (LMAINTE_MAINTE_LOCK) or out of it. Program ctlmainte.
 * Also LMAINTE_BUSY (exit status 128) and LMAINTE_MODE_REFUSED (200). */
int32_t lmainte_control_mainte(int32_t mode, int32_t time_limit);

/* Reports the start (LMAINTE_REPORT_START) or the end of maintenance to the remote notification service. Program
 * vantamainte. LMAINTE_REPORT_FAILED for every exit status but 0, 8 and 127. */
int32_t lmainte_report_vanta(int32_t mode, int32_t time_limit);

/* Sets the speed of all fans, or of the unit whose location name is given; LMAINTE_FAN_FULL needs a name. Program
 * ctlfan. Also LMAINTE_FAN_FAILED (exit status 128 or 219). */
int32_t lmainte_control_fan(int32_t mode, int32_t time_limit, const char *unit_name);

/* Switches a unit's LED (LMAINTE_LED_...). Program ctlled. Also LMAINTE_LED_FAILED (exit status 128 or 206). */
int32_t lmainte_control_led(int32_t mode, int32_t time_limit, const UnitRecord *unit);

/* Marks a unit as under maintenance (LMAINTE_FLAG_START) or no longer. Program setmainteflag.
 * Also LMAINTE_BUSY (exit status 128) and LMAINTE_FLAG_REFUSED (204). */
int32_t lmainte_set_mainteflag(int32_t mode, int32_t time_limit, const UnitRecord *unit);

/* Switches the LED of an I/O expansion unit: off, on or blink. Program ioadm. Also LMAINTE_IOXLED_FAILED (exit status
 * 128). Leaves no trace of its own. */
int32_t lmainte_control_ioxled(int32_t mode, int32_t time_limit, const UnitRecord *unit);

/* Switches the power of an I/O expansion unit (LMAINTE_POWER_...). Program ioadm. Also LMAINTE_IOXPOWER_FAILED (exit
 * status 128). Leaves no trace of its own. */
int32_t lmainte_control_ioxpower(int32_t mode, int32_t time_limit, const UnitRecord *unit);

enum { LMAINTE_JUDGE_ADD = 0, LMAINTE_JUDGE_DELETE = 1 };
enum { LMAINTE_LINK_DOWN = 0, LMAINTE_LINK_UP = 1 };

/* Asks whether the unit may be added (LMAINTE_JUDGE_ADD) or removed now. Program judgectlfru. Also LMAINTE_FRU_REFUSED
 * (exit status 128 or 203) and LMAINTE_FRU_REFUSED_2 (232). */
int32_t lmainte_judge_control_fru(int32_t mode, int32_t time_limit, const UnitRecord *unit);

/* Detaches the unit from the running system. Program detachfru. Also LMAINTE_DETACH_FAILED (exit status 128 or 205). */
int32_t lmainte_detach_fru(int32_t time_limit, const UnitRecord *unit);

/* Tests the unit. Program testfru. Also LMAINTE_TEST_FAILED (exit status 128 or 208). */
int32_t lmainte_test_fru(int32_t time_limit, const UnitRecord *unit);

/* Tests the system board of the record's number. Program testsb. LMAINTE_TEST_FAILED for every exit status but 0, 1, 3,
 * 8 and 127. */
int32_t lmainte_test_sb(int32_t time_limit, const UnitRecord *unit);

/* Sets up the system board of the record's number as one extended system board (division 1), mirrored (mirror 1) or not
 * (0), or as four (division 4, mirror 0). Program setupfru. Also LMAINTE_SETUP_FAILED (exit status 6, 136 or 137). */
int32_t lmainte_set_xsb(int32_t division, int32_t mirror, int32_t time_limit, const UnitRecord *unit);

/* Unassigns the extended system boards of the system board of the record's number: one (division 1) or all four
 * (division 4). Program deleteboard. Also LMAINTE_CLEAR_FAILED (exit status 6, 7, 128, 131, 132, 133 or 136). */
int32_t lmainte_clear_xsb(int32_t division, int32_t time_limit, const UnitRecord *unit);

/* Links a CMU or an IOU up (LMAINTE_LINK_UP) or down. Program linkboard. Also LMAINTE_LINK_FAILED (exit status 128 or
 * 226), and LMAINTE_FAILED for a record of another type. The name is cut where the argument line exceeds 127
 * characters, and a percent sign in it is a conversion. */
int32_t lmainte_link_board(int32_t mode, int32_t time_limit, const UnitRecord *unit);

/* Checks the speed of the fans of the unit with this location name. Program chkfanspeed. Also LMAINTE_FANSPEED_FAILED
 * (exit status 128 or 225). */
int32_t lmainte_check_fanspeed(int32_t time_limit, const char *unit_name);

/* What lmainte_clear_status is asked for, filled by the command itself. */
typedef struct ClearRequest {
  uint32_t unit_id[2];  /* recorded in the trace */
  uint32_t reserved[3]; /* not read */
  char arguments[1024]; /* argument line for the program, up to its NUL; a percent sign in it is a conversion */
} ClearRequest;

/* Clears the PCI status of a unit. Program clearpci. Also LMAINTE_STATUS_NOT_CLEARED (exit status 128 or 220). */
int32_t lmainte_clear_status(int32_t time_limit, const ClearRequest *request);

/* ---- Operator dialogue ------------------------------------------------------------------------------------------- */

/* What lmainte_tty_control changes. On is the setting 1, off every other one. */
enum {
  LMAINTE_TTY_ECHO = 0,   /* echo of what is typed */
  LMAINTE_TTY_VMIN = 1,   /* minimum count of a read: on 4, off 255 */
  LMAINTE_TTY_FLUSH = 2,  /* no attribute: discards queued input (on) or queued output (off) */
  LMAINTE_TTY_ISIG = 3,   /* signals from the keyboard */
  LMAINTE_TTY_VQUIT = 4,  /* quit character: on Ctrl-C, off 255 */
  LMAINTE_TTY_VERASE = 5, /* erase character: on Ctrl-\, off 255 */
  LMAINTE_TTY_IXON = 6    /* flow control of the output by Ctrl-S and Ctrl-Q */
};

/*
 * Changes one attribute of the terminal and leaves all others as they are. The attributes are those of standard
 * output's terminal; LMAINTE_TTY_FLUSH works on standard input's. The command itself puts them back when it ends.
 *
 * Returns 0, or LMAINTE_FAILED and changes nothing: an unknown mode, a stream that is no terminal, a failed call.
 */
int32_t lmainte_tty_control(int32_t mode, int32_t setting);

/* What lmainte_ask_select returns. */
enum {
  LMAINTE_ASK_CHOSEN = 0,       /* second holds the choice */
  LMAINTE_ASK_GAVE_UP = 1,      /* the operator does not want to choose */
  LMAINTE_ASK_END_OF_INPUT = 2, /* the input ended before an answer: Ctrl-D, or the terminal is gone */
  LMAINTE_ASK_INTERRUPTED = 3,  /* a signal handler without SA_RESTART ran: clean up, or ask again */
  LMAINTE_ASK_FAILED = -1       /* nothing could be asked */
};

/*
 * Asks the operator: discards what was typed ahead, switches echo on, lets cli_ask_select show the prompt and read the
 * choice, writes a newline and switches echo off.
 *
 * first   how many choices there are, 1 or more. Handed to cli_ask_select as it is.
 * second  an int32_t, not null. Receives the choice, 1 to first, and is untouched without one. Handed on, too.
 * format  the prompt, as for printf, cut at 1023 characters
 *
 * Returns what cli_ask_select returned, or LMAINTE_ASK_FAILED: second or format null, standard input or output no
 * terminal. If echo cannot be switched off afterwards the choice is discarded with LMAINTE_ASK_FAILED.
 *
 * Three things hold on every platform: LMAINTE_ASK_CHOSEN says that there is a choice, a result below 0 that the question
 * failed, every other result that there is no choice. Test for LMAINTE_ASK_CHOSEN, and take what you do not know for an
 * operator who gives up. The host platform returns all of the values above.
 */
int32_t lmainte_ask_select(int32_t first, void *second, const char *format, ...);

enum { LMAINTE_LINE_HEAD = 0, LMAINTE_LINE_FOOT = 1, LMAINTE_LINE_END = -1 };

/* A line of the caller's in a list, a status table or a menu. Arrays hold the head lines, then the foot lines, then an
 * end mark; in a menu every line before the end mark is shown. */
typedef struct ListLine {
  int32_t position;   /* LMAINTE_LINE_... */
  const char *format; /* as for printf, with its newline; cut at 127 characters, in a menu at 1023 */
  uintptr_t reserved; /* not read */
  uintptr_t args[10]; /* what the format prints, as words: integers and texts, no floating point */
} ListLine;

/* Process id of the pager while lmainte_show_file waits for it, else -1: for a signal handler that stops the pager. */
extern int g_show_file_pid;

/*
 * Shows a text file page by page: "/bin/busybox more", on standard output, with an empty environment. The pager writes to
 * the descriptor, past the buffer of stdout: call fflush(stdout) first, here and before each list, status table and menu,
 * or what was printed before comes behind the file.
 *
 * Returns 0, also when the operator leaves early or the pager is killed; LMAINTE_FAILED when path is null or the pager
 * cannot be started. A path is cut at 1023 characters.
 *
 * A signal handler of the caller's, installed without SA_RESTART, ends the wait with 0 while the pager still runs, and a
 * list's file is removed under it. Either install the handler with SA_RESTART, or let it keep g_show_file_pid, which is -1
 * again behind the call, and stop that pager and wait for it before anything else is shown.
 */
int32_t lmainte_show_file(const char *path);

/*
 * Shows the lines up to the end mark as a menu. What is said of a full /tmp below holds here, too.
 *
 * Returns 0, or LMAINTE_FAILED: lines null, the list file "/tmp/mainte_fru_list.%d" (the process id) cannot be created
 * or removed, the pager cannot be started.
 */
int32_t lmainte_show_menu(const ListLine *lines);

/*
 * Lists and status tables: the caller's head lines, a line per unit, the caller's foot lines, shown by the pager. In a
 * list each unit has a number, counted from 1 in the order of the records. The first argument is not read.
 *
 * A full /tmp cuts the text: the operator sees what found room, perhaps nothing, and the result is 0 all the same. Look
 * for room before (statvfs); 64 KiB are plenty.
 *
 * Each returns 0, or LMAINTE_FAILED: a null record or lines (no file is made then); the list file cannot be created or
 * removed; a unit id that has no name (nothing is shown then); the pager cannot be started.
 */

/* What lists and status tables of boards show. */
enum { LMAINTE_BOARD_CMU = 0, LMAINTE_BOARD_IOU = 1, LMAINTE_BOARD_BOTH = 2 };

/*
 * A line per board: the CMU, the IOU or both (kind), its four domains, its power and its state.
 *
 * xsbs  indexed by the number of the extended system board: for each board whose CMU is installed it must hold the
 *       records of all four numbers in cmu.xsb, and those from cmu.xsb[0] to cmu.xsb[0] + 3
 *
 * A domain is a number up to 23, or SP for none; power is On when one of the four records from cmu.xsb[0] on is active.
 * A board whose CMU is not installed has -- for each domain and --- for power. A * behind the state says that a module
 * or component of the board is faulted or degraded; a status of all ones leaves the state empty.
 *
 * LMAINTE_FAILED also for an unknown kind.
 */
int32_t lmainte_show_cmu_iou_list(int32_t unused, uint32_t kind, uint32_t count, const SbData *boards,
                                  const XsbData *xsbs, const ListLine *lines);

int32_t lmainte_show_fantray_list(int32_t unused, uint32_t count, const FantrayData *trays, const ListLine *lines);

/* An I/O boat of an I/O expansion unit, filled by the caller: words 11 on of it, that is word 5 on of word, are its PCI
 * slots of ten words each, as in IouData. */
typedef struct IoxBoatData {
  int32_t type;
  int32_t number;
  uint32_t unit_id[2];
  int32_t status;
  int32_t mainte_status;
  uint32_t word[75];
} IoxBoatData;

/* An I/O expansion unit with its two boats, filled by the caller. */
typedef struct IoxListData {
  Bp32Data head; /* not read */
  IoxBoatData boat[2];
} IoxListData;

/* A line per IOU of a board, then two per I/O expansion unit. Both record pointers must be given. */
int32_t lmainte_show_iounit_list(int32_t unused, uint32_t boards, uint32_t expansions, const SbData *sb,
                                 const IoxListData *iox, const ListLine *lines);

/* A line per installed PCI slot of the board's IOU, where slots is at most 8; of an I/O boat, where it is at most 7,
 * after a line for the boat itself with number and power of its first slot. Slots that are not installed take no
 * number. */
int32_t lmainte_show_ioupci_list(int32_t unused, uint32_t slots, const SbData *board, const ListLine *lines);
int32_t lmainte_show_ioxpci_list(int32_t unused, uint32_t slots, const IoxBoatData *boat, const ListLine *lines);

/* The empty lists of I/O expansion units and their power supplies: an empty file in the current directory is shown.
 * Each returns 0, whatever happens. units may be null. */
int32_t lmainte_show_iox_list(int32_t unused, const void *units, const ListLine *lines);
int32_t lmainte_show_ioxpsu_list(int32_t unused, const void *units, const ListLine *lines);

int32_t lmainte_show_psu_list(int32_t unused, uint32_t count, const PsuData *psus, const ListLine *lines);
int32_t lmainte_show_ddca_list(int32_t unused, uint32_t count, const BpUnitData *ddcs, const ListLine *lines);
int32_t lmainte_show_fantray_status(int32_t unused, const FantrayData *tray, const ListLine *lines);
int32_t lmainte_show_psu_status(int32_t unused, const PsuData *psu, const ListLine *lines);
int32_t lmainte_show_ddca_status(int32_t unused, const BpUnitData *ddc, const ListLine *lines);

/* The CMU with its installed CPU modules and memory modules, the IOU, or both (kind). LMAINTE_FAILED also for an
 * unknown kind. */
int32_t lmainte_show_sb_status(int32_t unused, uint32_t kind, const SbData *board, const ListLine *lines);

/* Shows nothing, leaves no trace, and leaves a file "tmp" in the current directory. Returns 0, or LMAINTE_FAILED when
 * record is null or no file can be made in /tmp. */
int32_t lmainte_show_ioxpsu_status(int32_t unused, const void *record);

/* A progress indicator. */
typedef struct DotParam {
  int32_t enable;      /* not 0 */
  const char *message; /* printed first, or null */
  int32_t seconds;     /* the longest time that it runs by itself, 1 or above */
} DotParam;

/*
 * Starts a child process that shows the seconds that pass: a dot every five, the number every thirty, a new line every
 * 240, and "done" at the end. The caller prints nothing until lmainte_dot_end.
 *
 * Returns the child's process id, or -1: request null, enable 0, seconds below 1, no child could be made.
 */
int32_t lmainte_dot_start(const DotParam *request);

/* Stops the indicator and waits for its end, when the line on the terminal is finished. A pid of 0 or below is
 * refused. */
void lmainte_dot_end(int32_t pid);

/* The indicator's handler of SIGTERM: sets sig_catch, at which the indicator ends. */
void disp_done(int signo);
extern int sig_catch;

/* ---- Messages and the state of a procedure ----------------------------------------------------------------------- */

/* The event code of a kind of FRU. A table of them ends with two bytes of 255. */
typedef struct lmainte_event_code {
  uint8_t kind;
  uint8_t code;
} lmainte_event_code;

/* The codes for a replacement, an addition and a removal. Read only, for the life of the library. */
extern const lmainte_event_code rep_code[], add_code[], del_code[];

/*
 * Sends a request to a daemon and waits for its reply.
 *
 * request, reply  message buffers of the common interface; the request's second and third word are recorded in the
 *                 trace, the reply is written by lcmn_receive alone
 * descriptor      the daemon's descriptor of the common interface
 * time_limit      seconds to wait, above 0
 *
 * Returns 0; LMAINTE_NO_REPLY when nothing came within the limit; LMAINTE_FAILED for a null buffer or a time limit not
 * above 0 (nothing is sent then), when the request cannot be sent, the wait or the receipt fails, or something came for
 * another descriptor.
 */
int32_t lmainte_ipc_communicate(const void *request, int32_t descriptor, int32_t time_limit, void *reply);

/*
 * The unit that an event is about, filled by the command itself.
 *
 * The detail is 18 bytes which the log keeps with the event, for a command that has more to tell, such as what a test
 * found. The command and whoever reads the log agree on the meaning; `spbox log` shows the bytes. It is there when the
 * most significant byte of detail[0] is not 0, that is from 0x01000000 on. A command that has nothing to add leaves it 0.
 */
typedef struct EventUnit {
  uint32_t head[3];      /* not read */
  uint32_t ident[2];     /* the unit's identifying words: its unit_id */
  uint32_t detail[4];    /* left out, with detail_value, when detail[0] is below 0x01000000 */
  uint16_t detail_value; /* the last two bytes of the detail */
} EventUnit;

enum { LMAINTE_EVENT_REPLACED = 0, LMAINTE_EVENT_ADDED = 1, LMAINTE_EVENT_REMOVED = 2 };

/* The kinds of FRU, as the log counts them. Units of kinds 4, 5 and 6 have no record in the inventory: their events are
 * for programs that handle them without the library. A removal has no event for them, and a replacement and an addition
 * have the same one. */
enum {
  LMAINTE_KIND_CMU = 0,
  LMAINTE_KIND_IOU = 1,
  LMAINTE_KIND_FANTRAY = 2,
  LMAINTE_KIND_PSU = 3,
  LMAINTE_KIND_4 = 4,
  LMAINTE_KIND_5 = 5,
  LMAINTE_KIND_6 = 6,
  LMAINTE_KIND_DDC = 7 /* the event names no unit */
};

/*
 * Saves the event that a unit was replaced, added or removed in the service processor's log.
 *
 * action    LMAINTE_EVENT_...
 * fru_kind  LMAINTE_KIND_...; of LMAINTE_KIND_DDC nothing of the unit is saved
 *
 * Returns 0, or LMAINTE_FAILED: unit null, an unknown action, a kind that has no code for the action, or the log fails.
 */
int32_t lmainte_send_event(int32_t action, int32_t fru_kind, const EventUnit *unit);

/* A unit that is marked for replacement. The library's: walk by next, never free. */
typedef struct lmainte_swap_fru {
  uint32_t order;     /* class by which the list is sorted: 1 CMU, 2 IOU, 3 fan tray, 4 PSU, 6 DDC unit */
  uint32_t unit_type; /* LMAINTE_TYPE_... */
  uint32_t unit_no;
  uint32_t ident[2]; /* the unit id */
  struct lmainte_swap_fru *prev;
  struct lmainte_swap_fru *next;
} lmainte_swap_fru;

/*
 * The list of units that are marked for replacement: one in the process, sorted by class and number, no unit twice. A
 * unit is marked when its status word has LMAINTE_STATUS_MARKED.
 *
 * lmainte_init_swap_fru_list        makes the list anew from the inventory; empty when the system's status has no
 *                                   LMAINTE_STATUS_MARKED. model_data as lmainte_get_model_data fills it.
 * lmainte_add_swap_fru_to_list      reads one unit and adds it if it is marked. 0xFFFFFFFF is the reader's -1 with a
 *                                   count of 1: the unit that it lists first
 * lmainte_delete_swap_fru_from_list takes a unit out, if it is in
 *
 * They return the number of units in the list. The first two return -1 when model_data is null, the model or the type
 * is unknown, a reader fails or memory runs out; what was added before stays.
 */
int32_t lmainte_init_swap_fru_list(const lmainte_model_data *model_data);
int32_t lmainte_add_swap_fru_to_list(uint32_t unit_type, uint32_t unit_no);
int32_t lmainte_delete_swap_fru_from_list(uint32_t unit_type, uint32_t unit_no);

/* Stores the first unit of the list, or null, where head_out is not null. Returns 0. */
int32_t lmainte_get_swap_fru_list(lmainte_swap_fru **head_out);

/* Returns 1 when the unit is in the list, else 0. */
int32_t lmainte_check_swap_fru(uint32_t unit_type, uint32_t unit_no);

/* Empties the list; only the next lmainte_init_swap_fru_list counts from 0 again. Returns 0. */
int32_t lmainte_free_swap_fru_list(void);

/* Appends an item to text, which holds size bytes with its NUL. Returns 0, any other value when it cannot. */
typedef int32_t (*lmainte_pinfo_provider)(char *text, int32_t size);

/* The items of the procedure information, ended by null: as delivered, the process id. A command may put its own in. */
extern lmainte_pinfo_provider pinfo_t[8];

/*
 * The procedure information: a text of at most 255 characters, the items of pinfo_t with commas between them, that
 * tells other commands who works. An empty file says that nobody does.
 *
 * put    replaces the file's content by the text. Where the write fails, the file is left empty; a write that takes
 *        only a part of the text counts as a success.
 * clear  empties the file
 * get    reads up to 256 bytes from the descriptor's position and writes no NUL: give it 257 bytes, all 0, and the text
 *        is ended whatever the file holds. An empty file leaves buffer as it was.
 * f...   do the same with a file by its path, between lcmn_lopen and lcmn_close; only lmainte_fput_pinfo makes the
 *        file, with the permission bits in mode.
 *
 * Each returns 0, or LMAINTE_FAILED: path or buffer null, a provider that fails (the file stays as it was), a file that
 * cannot be opened, cut, written, read or closed.
 */
int32_t lmainte_put_pinfo(int32_t fd);
int32_t lmainte_clear_pinfo(int32_t fd);
int32_t lmainte_get_pinfo(int32_t fd, char *buffer);
int32_t lmainte_fput_pinfo(const char *path, uint32_t mode);
int32_t lmainte_fclear_pinfo(const char *path);
int32_t lmainte_fget_pinfo(const char *path, char *buffer);

#ifdef __GNUC__
#pragma GCC visibility pop
#endif

#ifdef __cplusplus
}
#endif

#endif
