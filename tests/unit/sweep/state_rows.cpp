#include "tests/unit/doubles/units.h"
#include "tests/unit/sweep/rows.h"

namespace sweep {
namespace {

using doubles::Bytes;
using doubles::machine;

void mark_units() {
  for (const int32_t type : {16, 80, 161, 180}) doubles::put_status(type, 0, 0x80008000);
}

// The list goes with the call, so that what stays in memory was forgotten.
int32_t list_and_free() {
  const int32_t result = list_marked_units();
  lmainte_free_swap_fru_list();
  return result == 4 ? 0 : result;
}

int32_t add_a_marked_unit() {
  lmainte_model_data data = {};
  data.model = 3;
  mark_units();
  doubles::put_system_status(0);
  if (lmainte_init_swap_fru_list(&data) != 0) return -1;
  const int32_t result = lmainte_add_swap_fru_to_list(161, 0);
  lmainte_free_swap_fru_list();
  return result == 1 ? 0 : result;
}

constexpr int32_t kDaemon = 9;

int32_t communicate() {
  const uint32_t request[4] = {};
  uint32_t reply[4] = {};
  machine().daemon.ready = {kDaemon};
  return lmainte_ipc_communicate(request, kDaemon, 2, reply);
}

int32_t send_event() {
  const EventUnit unit = {};
  return lmainte_send_event(0, 0, &unit);
}

const char *const kProcedure = "/tmp/procedure";

int32_t get_procedure() {
  char text[256] = {};
  return lmainte_fget_pinfo(kProcedure, text);
}

void put_procedure() {
  machine().files[kProcedure] = Bytes(4, '1');
}

// With a file that the caller has opened, and closes.
constexpr int32_t kFd = 7;

template <class Call>
int32_t with_procedure(Call call) {
  put_procedure();
  machine().descriptors[kFd] = {kProcedure, 0};
  const int32_t result = call();
  machine().descriptors.erase(kFd);
  return result;
}

int32_t put_information() {
  return with_procedure([] { return lmainte_put_pinfo(kFd); });
}
int32_t clear_information() {
  return with_procedure([] { return lmainte_clear_pinfo(kFd); });
}
int32_t get_information() {
  char text[256] = {};
  return with_procedure([&text] { return lmainte_get_pinfo(kFd, text); });
}

}  // namespace

int32_t list_marked_units() {
  lmainte_model_data data = {};
  data.model = 5;
  for (auto &slot : data.unit) slot.max_count = 1;
  mark_units();
  return lmainte_init_swap_fru_list(&data);
}

const std::vector<Row> &state_rows() {
  static const std::vector<Row> kRows = {
      {"ipc_communicate", communicate, {8}, {}, 0x110C03D0},
      {"send_event", send_event, {8}, {}, 0x110C0500},
      {"init_swap_fru_list", list_and_free, {-1}, {}},
      {"add_swap_fru_to_list", add_a_marked_unit, {-1}, {}},
      {"put_pinfo", put_information, {8}, {}, 0x110C0700},
      {"clear_pinfo", clear_information, {8}, {}, 0x110C0710},
      {"get_pinfo", get_information, {8}, {}, 0x110C0720},
      {"fput_pinfo", [] { return lmainte_fput_pinfo(kProcedure, 0600); }, {8}, {}, 0x110C0730},
      {"fclear_pinfo", [] { return lmainte_fclear_pinfo(kProcedure); }, {8}, {}, 0x110C0740, put_procedure},
      {"fget_pinfo", get_procedure, {8}, {}, 0x110C0750, put_procedure},
  };
  return kRows;
}

}  // namespace sweep
