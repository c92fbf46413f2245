/*
 * lmainte.h - the maintenance library of the service processor
 *
 * For interactive commands that walk an operator through adding, replacing or removing a unit while the server runs:
 *
 *   1. lmainte_get_model_data      which server this is, how many units it holds, how long its steps may take
 *   2. lmainte_get_psu_data ...    the inventory, read from the configuration database into records of the caller
 *   3. lmainte_show_psu_list ...   the units as a numbered list in the pager
 *      lmainte_ask_select          the operator's choice; lmainte_tty_control keeps the terminal's echo off in between
 *   4. lmainte_control_led ...     the actions: control programs, run under a time limit
 *   5. lmainte_show_psu_status     the unit's state afterwards
 *
 * Rules that hold for every function:
 *
 * - One thread. The library runs on the caller's thread, starts no other, and guards none of its state. Control
 *   programs and the pager are child processes that are waited for before the call returns.
 * - Records and buffers are the caller's. The library allocates only for itself and frees before it returns; the two
 *   exceptions say so (lmainte_db_make_access_table, and the record buffers of the database client).
 * - Readers write only what the database holds: they never clear a record first. Clear it where you rely on the rest.
 * - Nothing is printed but what the function exists to show. A failure is a result and an error record in the trace.
 * - Results are 0 for success and LMAINTE_FAILED unless a function lists others.
 * - The functions behind the library are those of lmainte_platform.h.
 */
#ifndef LMAINTE_H
#define LMAINTE_H

#include <stdint.h>

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
  LMAINTE_FAILED = 8,            /* a bad argument, a failed system or database call, a status that says no more */
  LMAINTE_NOT_RUN = 127,         /* lmainte_exec: the program did not run, or left no exit status of its own */
  LMAINTE_BUSY = 128,            /* lmainte_control_mainte, lmainte_set_mainteflag: the program's own status 128 */
  LMAINTE_MODE_REFUSED = 200,    /* lmainte_control_mainte: the program's own status 200 */
  LMAINTE_REPORT_FAILED = 202,   /* lmainte_report_vanta: the notification failed */
  LMAINTE_FLAG_REFUSED = 204,    /* lmainte_set_mainteflag: the flag was refused */
  LMAINTE_LED_FAILED = 206,      /* lmainte_control_led: the LED was not switched */
  LMAINTE_IOXLED_FAILED = 217,   /* lmainte_control_ioxled: the expansion unit's LED was not switched */
  LMAINTE_IOXPOWER_FAILED = 218, /* lmainte_control_ioxpower: the expansion unit's power was not switched */
  LMAINTE_FAN_FAILED = 219       /* lmainte_control_fan: the fans' speed was not set */
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

/* One kind of unit. Source: max_count the record "gen_system_info", the times the model's control time file. */
typedef struct lmainte_unit_slot {
  uint32_t max_count;      /* units of this kind that the model holds */
  uint32_t control_time_1; /* the kind's two control times, as the file has them */
  uint32_t control_time_2;
} lmainte_unit_slot;

/* What server this is. */
typedef struct lmainte_model_data {
  uint32_t model;        /* LMAINTE_MODEL_... */
  uint32_t system_flags; /* byte 148 of the record "current_system_info", widened; bit 7: all power supplies count */
  lmainte_unit_slot unit[13]; /* by LMAINTE_SLOT_...; 11 is never written, 12 has a count on the high end only */
} lmainte_model_data;

#define LMAINTE_CMDTIME_END 0xFFFFFFFFu /* cmd_id that ends a list of command times */

/* One time limit to look up. Lists are arrays of the caller, ended by LMAINTE_CMDTIME_END. */
typedef struct lmainte_cmdtime {
  uint32_t cmd_id; /* command number, 0 to 15 */
  uint32_t time;   /* receives the time in the model's command time file; 0 for a command number above 15 */
} lmainte_cmdtime;

/*
 * Reads the model, its unit counts and its times.
 *
 * model_data  receives the model, or null. Clear it first: not every field is written on every model.
 * cmdtimes    a list whose times are to be filled, or null. One of the two must be given.
 *
 * The model comes from the marker files "/tmp/.qa", "/tmp/.qb1", "/tmp/.qb2", "/tmp/.qe1", "/tmp/.qe2" and "/tmp/.qe3",
 * the first that exists in this order. A model once found stays for the life of the process. The times come from
 * "/mgb/cli/etc/controltime_qa" and "/mgb/cli/etc/cmdtime_qa", or _qb and _qe by the model's family.
 *
 * Databases 2, 1 and 0 are read one after the other, 2 alone where model_data is null; the caller may hold the lock of
 * one of them only together with those of all below it.
 *
 * Returns 0 or LMAINTE_FAILED: both arguments null; a record or a file that cannot be read or is of the wrong size; no
 * marker file (model_data->model is then LMAINTE_MODEL_NONE). What was filled before the failure stays filled.
 */
int32_t lmainte_get_model_data(lmainte_model_data *model_data, lmainte_cmdtime *cmdtimes);

/* ---- Unit locations ---------------------------------------------------------------------------------------------- */

/* Unit type codes of the database records. */
enum {
  LMAINTE_TYPE_OPNL = 2,      /* operator panel */
  LMAINTE_TYPE_CMU = 16,      /* CPU/memory unit, a system board's main part */
  LMAINTE_TYPE_CPUM = 32,     /* CPU module */
  LMAINTE_TYPE_DIMM = 40,     /* memory module */
  LMAINTE_TYPE_BP = 51,       /* backplane */
  LMAINTE_TYPE_IOU = 80,      /* I/O unit */
  LMAINTE_TYPE_PCI = 104,     /* PCI slot */
  LMAINTE_TYPE_EMGBU = 128,   /* service processor unit */
  LMAINTE_TYPE_EMGBR = 130,   /* service processor unit of the second kind */
  LMAINTE_TYPE_PSU = 161,     /* power supply */
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
 */
int32_t lmainte_scdb_open(uint32_t db_id);
int32_t lmainte_scdb_close(uint32_t db_id);
int32_t lmainte_scdb_lock(uint32_t db_id);
int32_t lmainte_scdb_unlock(uint32_t db_id);

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

/* Bits of a unit's status word. Installed with neither of the other two is normal. */
#define LMAINTE_STATUS_INSTALLED 0x80000000u
#define LMAINTE_STATUS_FAULTED 0x20000000u
#define LMAINTE_STATUS_DEGRADED 0x10000000u

/* Bits of a unit's flag byte, for units that have one. They are merged into the status word, faulted before degraded.
 */
#define LMAINTE_FLAG_FAULTED 0x20u
#define LMAINTE_FLAG_DEGRADED 0x10u

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
 * and PRIV, empty where the caller has none, each cut at 1023 characters with its name. At its limit it is asked to end
 * with SIGTERM, three times five seconds apart, and then killed. The limit is measured by sleeping: a signal handler of
 * the caller's that runs in between shortens it, and where it comes in the last wait the program stays a zombie.
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
 * output's terminal; LMAINTE_TTY_FLUSH works on standard input's.
 *
 * Returns 0, or LMAINTE_FAILED and changes nothing: an unknown mode, a stream that is no terminal, a failed call.
 */
int32_t lmainte_tty_control(int32_t mode, int32_t setting);

/*
 * Asks the operator: discards what was typed ahead, switches echo on, lets cli_ask_select show the prompt and read the
 * choice, writes a newline and switches echo off.
 *
 * first, second  handed to cli_ask_select, whose platform says what they mean; second must not be null
 * format         the prompt, as for printf, cut at 1023 characters
 *
 * Returns what cli_ask_select returned, or -1: second or format null, standard input or output no terminal. If echo
 * cannot be switched off afterwards the choice is discarded with -1.
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
 * Shows a text file page by page: "/bin/busybox more", on standard output, with an empty environment.
 *
 * Returns 0, also when the operator leaves early or the pager is killed; LMAINTE_FAILED when path is null or the pager
 * cannot be started. A path is cut at 1023 characters.
 *
 * A signal handler of the caller's, installed without SA_RESTART, ends the wait with 0 while the pager still runs: let
 * the handler stop the pager by g_show_file_pid and wait for it.
 */
int32_t lmainte_show_file(const char *path);

/*
 * Shows the lines up to the end mark as a menu.
 *
 * Returns 0, or LMAINTE_FAILED: lines null, the list file "/tmp/mainte_fru_list.%d" (the process id) cannot be created
 * or removed, the pager cannot be started.
 */
int32_t lmainte_show_menu(const ListLine *lines);

/*
 * Lists and status tables: the caller's head lines, a line per unit, the caller's foot lines, shown by the pager. In a
 * list each unit has a number, counted from 1 in the order of the records. The first argument is not read.
 *
 * Each returns 0, or LMAINTE_FAILED: a null record or lines (no file is made then); the list file cannot be created or
 * removed; a unit id that has no name (nothing is shown then); the pager cannot be started.
 */
int32_t lmainte_show_psu_list(int32_t unused, uint32_t count, const PsuData *psus, const ListLine *lines);
int32_t lmainte_show_psu_status(int32_t unused, const PsuData *psu, const ListLine *lines);

#ifdef __GNUC__
#pragma GCC visibility pop
#endif

#ifdef __cplusplus
}
#endif

#endif
