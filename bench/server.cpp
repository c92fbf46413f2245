#include "bench/server.h"

#include "bench/memory_platform.h"
#include "include/lmainte.h"

namespace {

void put_boards(int boards) {
  bench::put(LMAINTE_DB_SETUP, "setup_cmu_info_%02d", boards, 256);
  bench::put(LMAINTE_DB_CURRENT, "current_cmu_info_%02d", boards, 1760);
  bench::put(LMAINTE_DB_CURRENT, "current_cpu_module_info_%02d", boards, 2976);
  bench::put(LMAINTE_DB_CURRENT, "current_dimm_info_%02d", boards, 1792);
  bench::put(LMAINTE_DB_CURRENT, "current_iou_info_%02d", boards, 2016);
  bench::put(LMAINTE_DB_FRU, "fru_cmu_info_%02d", boards, 8192);
  bench::put(LMAINTE_DB_FRU, "fru_cpu_info_%02d", 4 * boards, 8192);
  bench::put(LMAINTE_DB_FRU, "fru_dimm_info_%03d", 32 * boards, 256);
  bench::put(LMAINTE_DB_FRU, "fru_iou_qe_info_%02d", boards, 8192);
  bench::put(LMAINTE_DB_SETUP, "setup_xsb_info_%02d", 64, 192);
  bench::put(LMAINTE_DB_CURRENT, "current_xsb_info_%02d", 64, 152);
}

void put_other_units() {
  bench::put(LMAINTE_DB_CURRENT, "current_fantray_info", 1, 6912);
  bench::put(LMAINTE_DB_FRU, "fru_fan_qe_info_%02d", 32, 256);
  bench::put(LMAINTE_DB_CURRENT, "current_psu_info", 1, 3360);
  bench::put(LMAINTE_DB_FRU, "fru_psu_qe_info_%02d", 60, 320);
  bench::put(LMAINTE_DB_CURRENT, "current_bp32_info", 1, 1008);
  bench::put(LMAINTE_DB_FRU, "fru_bpa_info", 1, 8192);
  bench::put(LMAINTE_DB_FRU, "fru_ddca_info_%02d", 2, 320);
  bench::put(LMAINTE_DB_CURRENT, "current_mgb_info", 1, 160);
  bench::put(LMAINTE_DB_CURRENT, "current_mgbr_info", 1, 48);
  bench::put(LMAINTE_DB_LOCAL, "local_mgb_info", 1, 280);
  bench::put(LMAINTE_DB_FRU, "fru_emgbu_info_%02d", 4, 8192);
}

void put_system() {
  bench::put(LMAINTE_DB_CURRENT, "current_domain_info_%02d", 24, 1464);
  bench::put(LMAINTE_DB_CURRENT, "current_system_info", 1, 176);
  bench::put(LMAINTE_DB_SETUP, "setup_system_info", 1, 248);
  bench::put(LMAINTE_DB_GEN, "gen_system_info", 1, 1408);
}

}  // namespace

void bench::put_server(int boards) {
  clear();
  put_boards(boards);
  put_other_units();
  put_system();
}
