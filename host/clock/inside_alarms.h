/* The rows of the page for what rings at a moment of the box's time: alarms, timers and descriptors. */
#pragma once

#include "host/clock/inside.h"

/* The row of this kind and number; of any process, where it is 0. Null where there is none. */
box_time_alarm *inside_alarm(box_time_page *page, uint32_t kind, uint32_t process, uint64_t number);

/* A row of its own, as `wanted` says, switched off; null where all rows are taken. */
box_time_alarm *inside_new_alarm(box_time_page *page, const box_time_alarm *wanted);

void inside_set_alarm(box_time_page *page, box_time_alarm *row, int64_t deadline, int64_t interval);
void inside_free_alarm(box_time_alarm *row);

/* What it says of the time until it rings, 0 where it never does, and between two times. One that rings again and again does so
   at its deadline, and at each interval from there. */
int64_t inside_left_of_alarm(const box_time_alarm *row, int64_t now);
int64_t inside_interval(const box_time_alarm *row);

/* The same for the calls that take a struct itimerspec; false where the value is none. */
bool inside_is_timer_value(const struct itimerspec *value);
struct itimerspec inside_timer_value(const box_time_alarm *row, int64_t now);
void inside_set_timer(box_time_page *page, box_time_alarm *row, bool is_moment, const struct itimerspec *value);
