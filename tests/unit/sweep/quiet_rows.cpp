#include <csignal>

#include "tests/unit/sweep/rows.h"

namespace sweep {
namespace {

void get_group() {
  CoolgrpData group = {};
  lmainte_get_coolgrp_data(16, 0, 3, &group);
}

void get_list() {
  lmainte_swap_fru *head = nullptr;
  lmainte_get_swap_fru_list(&head);
}

void replace_two_parts() {
  lmainte_path_component parts[4] = {};
  replace_mem_location(parts);
}

void replace_two_parts_of_qa() {
  lmainte_path_component parts[4] = {};
  uint32_t count = 2;
  replace_mem_location_qa(parts, &count);
}

}  // namespace

const std::vector<QuietRow> &quiet_rows() {
  static const std::vector<QuietRow> kRows = {
      {"get_coolgrp_data", get_group},
      {"get_iox_data", [] { lmainte_get_iox_data(); }},
      {"get_pid", [] { lmainte_get_pid("4711,"); }},
      {"get_swap_fru_list", get_list, list_marked_units},
      {"check_swap_fru", [] { lmainte_check_swap_fru(161, 0); }, list_marked_units},
      {"delete_swap_fru_from_list", [] { lmainte_delete_swap_fru_from_list(161, 0); }, list_marked_units},
      {"free_swap_fru_list", [] { lmainte_free_swap_fru_list(); }, list_marked_units},
      {"disp_done", [] { disp_done(SIGTERM); }},
      {"replace_mem_location", replace_two_parts},
      {"replace_mem_location_qa", replace_two_parts_of_qa},
  };
  return kRows;
}

}  // namespace sweep
