#include "host/box/partitions.h"

#include "host/base/number.h"
#include "host/box/inventory_records.h"
#include "host/box/model.h"
#include "host/box/records.h"

namespace box {

std::optional<std::uint32_t> board_of(std::string_view unit) {
  if (unit.starts_with("/MBU_")) return 0;
  if (!unit.starts_with("/CMU#") && !unit.starts_with("/IOU#")) return std::nullopt;
  return base::number_in<std::uint32_t>(unit.substr(5, unit.find('/', 5) - 5));
}

std::string xsb_name(std::uint32_t number) {
  const std::string board = std::to_string(number / kMostParts);
  return (board.size() < 2 ? "0" : "") + board + "-" + std::to_string(number % kMostParts);
}

std::optional<BoardPart> board_part_in(std::string_view xsb_name) {
  const std::size_t dash = xsb_name.find('-');
  if (dash == std::string_view::npos || dash < 2) return std::nullopt;
  const auto board = base::number_in<std::uint32_t>(xsb_name.substr(0, dash));
  const auto part = base::number_in<std::uint32_t>(xsb_name.substr(dash + 1));
  if (!board || !part || *part >= kMostParts || xsb_name.size() != dash + 2) return std::nullopt;
  return BoardPart{*board, *part};
}

void stop_board(RecordSet &current, std::uint32_t board) {
  for (std::uint32_t part = 0; part < kMostParts; ++part) {
    const std::string record = kCurrentXsb.of(board * kMostParts + part);
    if (current.complaint(record, kCurrentXsb.size).empty()) current.at(record, kCurrentXsb.size)[kXsbActive] = 0;
  }
}

std::vector<Xsb> xsbs_of(const Place &place, std::uint32_t model) {
  RecordSet setup(place, LMAINTE_DB_SETUP), current(place, LMAINTE_DB_CURRENT);
  std::vector<Xsb> xsbs;
  for (std::uint32_t number = 0; number < find_model(model)->xsbs; ++number) {
    const std::string set = kSetupXsb.of(number), now = kCurrentXsb.of(number);
    Xsb xsb{xsb_name(number), false, 0, 0, current.complaint(now, kCurrentXsb.size)};
    if (xsb.unreadable.empty()) xsb.unreadable = setup.complaint(set, kSetupXsb.size);
    if (xsb.unreadable.empty()) {
      const Bytes &record = current.at(now, kCurrentXsb.size);
      xsb.active = record[kXsbActive] == 1;
      xsb.domain = word_at(record, kXsbDomain);
      xsb.setup_domain = word_at(setup.at(set, kSetupXsb.size), kXsbSetupDomain);
    }
    xsbs.push_back(xsb);
  }
  return xsbs;
}

std::vector<Domain> domains_of(const Place &place, std::uint32_t model) {
  RecordSet current(place, LMAINTE_DB_CURRENT);
  std::vector<Domain> domains;
  for (std::uint32_t number = 0; number < find_model(model)->domains; ++number) {
    const std::string name = kCurrentDomain.of(number);
    Domain domain{number, 0, 0, current.complaint(name, kCurrentDomain.size)};
    if (domain.unreadable.empty()) {
      const Bytes &record = current.at(name, kCurrentDomain.size);
      domain.word_0 = word_at(record, kDomainStatus);
      domain.byte_44 = record[kDomainByte];
    }
    domains.push_back(domain);
  }
  return domains;
}

Server server_of(const Place &place) {
  RecordSet current(place, LMAINTE_DB_CURRENT), local(place, LMAINTE_DB_LOCAL);
  const std::string system(kCurrentSystem.name), own(kLocalServiceProcessor.name);
  Server server{0, 0, current.complaint(system, kCurrentSystem.size)};
  if (server.unreadable.empty()) server.unreadable = local.complaint(own, kLocalServiceProcessor.size);
  if (!server.unreadable.empty()) return server;
  server.status = word_at(current.at(system, kCurrentSystem.size), kSystemStatus);
  server.service_processor = local.at(own, kLocalServiceProcessor.size)[kOwnNumber];
  return server;
}

}  // namespace box
