#define _GNU_SOURCE
#include "host/clock/inside_alarms.h"

box_time_alarm *inside_alarm(box_time_page *page, uint32_t kind, uint32_t process, uint64_t number) {
  for (int i = 0; i < BOX_TIME_ALARMS; ++i) {
    box_time_alarm *row = &page->alarms[i];
    const uint32_t owner = __atomic_load_n(&row->process, __ATOMIC_ACQUIRE);
    if (owner == 0 || owner == BOX_TIME_NOBODY_YET || (process != 0 && owner != process)) continue;
    if (row->kind == kind && row->number == number) return row;
  }
  return NULL;
}

/* The row may have been of a process that is dead. */
box_time_alarm *inside_new_alarm(box_time_page *page, const box_time_alarm *wanted) {
  for (int i = 0; i < BOX_TIME_ALARMS; ++i) {
    uint32_t free_row = 0;
    box_time_alarm *row = &page->alarms[i];
    if (!__atomic_compare_exchange_n(&row->process, &free_row, BOX_TIME_NOBODY_YET, false, __ATOMIC_ACQ_REL,
                                     __ATOMIC_ACQUIRE)) {
      continue;
    }
    box_time_alarm whole = *wanted;
    whole.process = BOX_TIME_NOBODY_YET;
    whole.turn = row->turn + 1;
    whole.deadline = BOX_TIME_NEVER;
    *row = whole;
    __atomic_store_n(&row->process, wanted->process, __ATOMIC_RELEASE);
    return row;
  }
  return NULL;
}

void inside_set_alarm(box_time_page *page, box_time_alarm *row, int64_t deadline, int64_t interval) {
  inside_turn(page, &deadline);
  __atomic_store_n(&row->deadline, BOX_TIME_NEVER, __ATOMIC_RELEASE); /* it does not ring while it changes */
  __atomic_add_fetch(&row->turn, 1, __ATOMIC_ACQ_REL);
  __atomic_store_n(&row->overruns, 0, __ATOMIC_RELEASE);
  __atomic_store_n(&row->interval, interval, __ATOMIC_RELEASE);
  __atomic_store_n(&row->deadline, deadline, __ATOMIC_RELEASE);
}

void inside_free_alarm(box_time_alarm *row) {
  __atomic_store_n(&row->deadline, BOX_TIME_NEVER, __ATOMIC_RELEASE);
  __atomic_store_n(&row->process, 0, __ATOMIC_RELEASE);
}

int64_t inside_interval(const box_time_alarm *row) {
  return row->deadline == BOX_TIME_NEVER ? 0 : row->interval;
}

int64_t inside_left_of_alarm(const box_time_alarm *row, int64_t now) {
  if (row->deadline == BOX_TIME_NEVER) return 0;
  const int64_t left = row->deadline - now;
  if (left > 0) return left;
  return row->interval > 0 ? row->interval - (now - row->deadline) % row->interval : 0;
}

bool inside_is_timer_value(const struct itimerspec *value) {
  return inside_is_time(&value->it_value) && inside_is_time(&value->it_interval);
}

struct itimerspec inside_timer_value(const box_time_alarm *row, int64_t now) {
  const struct itimerspec value = {inside_timespec(inside_interval(row)),
                                   inside_timespec(inside_left_of_alarm(row, now))};
  return value;
}

void inside_set_timer(box_time_page *page, box_time_alarm *row, bool is_moment, const struct itimerspec *value) {
  const int64_t given = inside_nanoseconds(&value->it_value);
  int64_t origin = 0, deadline = BOX_TIME_NEVER;
  inside_origin(page, row->clock, &origin);
  if (given != 0) deadline = is_moment ? given - origin : inside_deadline(page, given);
  inside_set_alarm(page, row, deadline, inside_nanoseconds(&value->it_interval));
}
