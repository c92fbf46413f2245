// The records of what is no single unit: the server, its domains, its boards and the extended system boards of these.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "host/box/unit_records.h"

namespace box {

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

// Every board has four records of parts, however it is divided.
inline constexpr std::uint32_t kMostParts = 4;
inline constexpr RecordLayout kSetupXsb{"setup_xsb_info_%02d", 192, 33};
inline constexpr std::size_t kXsbSetupDomain = 128;
inline constexpr RecordLayout kCurrentXsb{"current_xsb_info_%02d", 152, 15};
inline constexpr std::size_t kXsbDomain = 56, kXsbActive = 61;

}  // namespace box
