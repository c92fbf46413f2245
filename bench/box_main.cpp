// The box, beside what it is built from: its databases beside LMDB and SQLite, its locks beside the kernel's.

#include "bench/box_rows.h"
#include "bench/table.h"

int main(int argc, char **argv) {
  const bench::BoxFolder folder;
  const int status = bench::measure(bench::box_rows(folder), argc, argv);
  if (status == 0) bench::print_locks(folder);
  return status;
}
