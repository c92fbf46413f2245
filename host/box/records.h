// The records of a box: names and sizes of them all, and the offsets in those of what is no single unit: the server, its
// domains, its boards and the extended system boards of these. unit_records.h has where the units lie in theirs.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace box {

// The record's name with its number filled in, and back: whether a pattern stands for this name.
std::string numbered(std::string_view pattern, std::uint32_t number);
bool stands_for(std::string_view pattern, std::string_view name);

struct RecordLayout {
  std::string_view name;  // or the pattern of many
  std::size_t size;
  std::size_t words = 0;  // with which it begins, as far as anything is known of them

  std::string of(std::uint32_t number) const { return numbered(name, number); }
};

inline constexpr RecordLayout kGeneralSystem{"gen_system_info", 1408, 9};
inline constexpr std::size_t kCmuCount = 0, kIouCount = 4, kFantrayCount = 24, kPsuCount = 32;

inline constexpr RecordLayout kSetupSystem{"setup_system_info", 248};

inline constexpr RecordLayout kCurrentSystem{"current_system_info", 176, 9};
inline constexpr std::size_t kSystemStatus = 8, kSystemFlags = 148;

inline constexpr RecordLayout kLocalServiceProcessor{"local_mgb_info", 280, 5};
inline constexpr std::size_t kOwnNumber = 20;  // of the service processor unit that runs

inline constexpr RecordLayout kCurrentDomain{"current_domain_info_%02d", 1464, 1};
inline constexpr std::size_t kDomainStatus = 0, kDomainByte = 44;
inline constexpr std::uint32_t kLastDomain = 23, kNoDomain = 0xFF;

inline constexpr RecordLayout kSetupCmu{"setup_cmu_info_%02d", 256, 2};
inline constexpr RecordLayout kCurrentCmu{"current_cmu_info_%02d", 1760};
inline constexpr std::size_t kBoardParts = 36;  // extended system boards that the board is: 1 or 4

// Of units. Those of a board hold what sits on it.
inline constexpr std::uint32_t kCpumsOfBoard = 4, kDimmsOfBoard = 32;
inline constexpr RecordLayout kCurrentCpum{"current_cpu_module_info_%02d", 2976};
inline constexpr RecordLayout kCurrentDimm{"current_dimm_info_%02d", 1792};
inline constexpr RecordLayout kCurrentIou{"current_iou_info_%02d", 2016};
inline constexpr RecordLayout kCurrentPanel{"current_panel_info", 64};
inline constexpr RecordLayout kCurrentEmgbu{"current_mgb_info", 160};
inline constexpr RecordLayout kCurrentEmgbr{"current_mgbr_info", 48};
inline constexpr RecordLayout kCurrentPsu{"current_psu_info", 3360};
inline constexpr RecordLayout kCurrentFantray{"current_fantray_info", 6912};
inline constexpr RecordLayout kCurrentBp{"current_bp32_info", 1008};

// The identity records of units.
inline constexpr RecordLayout kFruCmu{"fru_cmu_info_%02d", 8192};
inline constexpr RecordLayout kFruCpum{"fru_cpu_info_%02d", 8192};
inline constexpr RecordLayout kFruDimm{"fru_dimm_info_%03d", 256};
inline constexpr RecordLayout kFruIouQb{"fru_iou_qb_info_%02d", 8192};
inline constexpr RecordLayout kFruIouQe{"fru_iou_qe_info_%02d", 8192};
inline constexpr RecordLayout kFruEmgbu{"fru_emgbu_info_%02d", 8192};
inline constexpr RecordLayout kFruBp{"fru_bpa_info", 8192};
inline constexpr RecordLayout kFruPsuQb{"fru_psu_qb_info_%02d", 320};
inline constexpr RecordLayout kFruPsuQe{"fru_psu_qe_info_%02d", 320};
inline constexpr RecordLayout kFruFan{"fru_fan_qe_info_%02d", 256};
inline constexpr RecordLayout kFruDdc{"fru_ddca_info_%02d", 320};

// Every board has four records of parts, however it is divided.
inline constexpr std::uint32_t kMostParts = 4;
inline constexpr RecordLayout kSetupXsb{"setup_xsb_info_%02d", 192, 33};
inline constexpr std::size_t kXsbSetupDomain = 128;
inline constexpr RecordLayout kCurrentXsb{"current_xsb_info_%02d", 152, 15};
inline constexpr std::size_t kXsbDomain = 56, kXsbActive = 61;

}  // namespace box
