/* Needs nothing of the platform. */
#include <lmainte.h>

int main(void) {
  return max_fan_num_qa[0].fans == 1 ? 0 : 1;
}
