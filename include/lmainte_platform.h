/*
 * lmainte_platform.h - the functions that the service processor provides to liblmainte
 *
 * liblmainte calls these functions and defines none of them. On the target, the service processor's own libraries define
 * them; on a workstation, the host platform does; a test has doubles. To bring the library to another platform, define
 * all of them.
 *
 * All functions run on the thread of the maintenance command that called liblmainte. Unless a comment says otherwise, a
 * function may block, need not be safe in a signal handler, and may set errno.
 */
#ifndef LMAINTE_PLATFORM_H
#define LMAINTE_PLATFORM_H

#include <stdint.h>
#include <sys/select.h>
#include <sys/time.h>

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Trace facility --------------------------------------------------------------------------------------------- */

/*
 * Appends one record to the trace.
 *
 * module  14, the maintenance library's number in the trace facility
 * level   0x100 normal progress, 0x805 an error by the library's own logic, 0x8001 a process-control event,
 *         0x800A a failed system or service call
 * kind    15
 * event   0x110C0000 + space (0 or 0x8000) + block * 16 + point; errors add 0x1000 (plain space) or 0x3000
 * words   the record's words: process id, source line, and up to two values. They are valid only during the call.
 * length  bytes that the record takes in the trace: its words and a head of 8 bytes. So (length - 8) / 4 words are
 *         valid: two to four, for a length of 16, 20 or 24. Do not read beyond them.
 *
 * It is called in signal handlers and in a child between fork and execve, so it must not allocate, lock or wait.
 * The result is ignored: a trace that fails never changes what a function does.
 */
int32_t mgb_trace_write(uint32_t module, uint32_t level, uint32_t kind, uint32_t event, const uint32_t *words,
                        uint32_t length);

/* ---- Log --------------------------------------------------------------------------------------------------------- */

/*
 * Saves one event in the service processor's log.
 *
 * head    the address of the head word, 0x00030000 in the machine's byte order
 * record  the event: 48 bytes, big-endian
 *
 * Returns 0 or above when the event is saved, and a negative value when it could not be saved.
 */
int32_t mgblog_save(const uint32_t *head, const void *record);

/* ---- Configuration database -------------------------------------------------------------------------------------- */

/*
 * The databases are numbered: 0 general, 1 setup, 2 current, 3 local, 4 FRU, 5 reserved. liblmainte counts its own
 * users of each database. So these functions see one open, one lock, one unlock and one close, even when calls nest.
 *
 * Each returns 0 on success and any other value on failure. A failed call changes nothing.
 */
int32_t scdb_open(uint32_t db_id);
int32_t scdb_close(uint32_t db_id);

/* scdb_lock takes the lock of the database, which keeps out every other process; scdb_unlock releases it. How long
 * scdb_lock waits for another process is the platform's choice: the commands wait as long in their reads. liblmainte
 * locks in ascending and unlocks in descending order of the ids, so two of its users never wait for each other in a
 * circle. */
int32_t scdb_lock(uint32_t db_id);
int32_t scdb_unlock(uint32_t db_id);

/*
 * Reads one record.
 *
 * key     128 bytes: the record's name, such as "current_psu_info", padded with zero bytes
 * record  receives a buffer from malloc that holds the record. The caller frees it whatever the result is: a call that
 *         fails may provide a buffer, too.
 * size    receives the record's length in bytes
 * flags   0
 *
 * Returns 0 on success; any other value when there is no such record or it cannot be read.
 */
int32_t scdb_get(uint32_t db_id, const char *key, void **record, int32_t *size, uint32_t flags);

/*
 * Writes one record of size bytes; key as above. flags is 0. The function must refuse null data.
 *
 * Returns 0 on success and any other value on failure.
 */
int32_t lcmn_scdb_put(uint32_t db_id, const char *key, const void *data, int32_t size, uint32_t flags);

/* ---- Files ------------------------------------------------------------------------------------------------------- */

/*
 * Opens a file as open(2) does, and keeps other users of lcmn_lopen out of it until lcmn_close.
 *
 * flags   O_RDONLY, O_RDWR or O_RDWR | O_CREAT
 * mode    permission bits of a new file; the library always passes them
 *
 * Returns a descriptor, or a negative value with errno set.
 */
int32_t lcmn_lopen(const char *path, int32_t flags, uint32_t mode);

/* Read and write as read(2) and write(2) do, from the descriptor's position. Return the number of bytes, or a negative
 * value with errno set. */
int32_t lcmn_read(int32_t fd, void *buffer, int32_t size);
int32_t lcmn_write(int32_t fd, const void *buffer, int32_t size);

/* Closes the descriptor and lets other users of lcmn_lopen in. Returns 0, or another value with errno set. */
int32_t lcmn_close(int32_t fd);

/* ---- Messages ---------------------------------------------------------------------------------------------------- */

/* Sends a message to, and receives one from, a daemon's descriptor of the common interface. Return a negative value on
 * failure. */
int32_t lcmn_send(int32_t fd, const void *message);
int32_t lcmn_receive(int32_t fd, void *message);

/*
 * Waits until a descriptor of the common interface is ready, or the limit has passed.
 *
 * status_1, status_2  receive the interface's status; 1 in the first says that nothing came
 * readable            empty on entry; receives the descriptors that are ready
 * writable, exceptional  null
 *
 * Returns a negative value on failure.
 */
int32_t lcmn_select(uint8_t *status_1, uint8_t *status_2, fd_set *readable, fd_set *writable, fd_set *exceptional,
                    struct timeval *limit);

/* Returns a value other than 0 when the set is empty. */
int32_t lcmn_process_iszero(const fd_set *set);

/* ---- Operator ---------------------------------------------------------------------------------------------------- */

/*
 * Shows the prompt on the terminal and reads the operator's choice.
 *
 * first   how many choices there are; lmainte_ask_select passes it on and does not read it
 * second  receives the choice: an int32_t, never null
 * prompt  the text to show, at most 1023 characters
 *
 * Returns LMAINTE_ASK_... of lmainte.h, which lmainte_ask_select hands to its caller unchanged. A platform that cannot tell
 * these apart returns LMAINTE_ASK_CHOSEN with a choice, LMAINTE_ASK_GAVE_UP without one, and a value below 0 for a failure.
 */
int32_t cli_ask_select(int32_t first, void *second, const char *prompt);

/* ---- Names ------------------------------------------------------------------------------------------------------- */

/*
 * Turns a unit id into the unit's location name.
 *
 * unit_id   two words, as the records of the current database hold them
 * form      0: the whole location, such as "/PSU#0"; 1: the form for the table of a system board's parts
 * name      receives the name: room for 128 bytes, cleared by the caller
 * unused_*  0
 *
 * Returns 0 on success, any other value when the unit id has no name.
 */
int32_t api_conv_unit_name_get(const uint32_t *unit_id, int32_t form, char *name, int32_t unused_1, int32_t unused_2);

#ifdef __cplusplus
}
#endif

#endif
