#include "host/box/partitions.h"

#include "host/box/inventory_records.h"
#include "host/box/model.h"
#include "host/box/record_set.h"

namespace box {

std::string xsb_name(std::uint32_t number) {
  const std::string board = std::to_string(number / 4);
  return (board.size() < 2 ? "0" : "") + board + "-" + std::to_string(number % 4);
}

std::vector<Xsb> xsbs_of(const Place &place, std::uint32_t model) {
  RecordSet setup(place, LMAINTE_DB_SETUP), current(place, LMAINTE_DB_CURRENT);
  std::vector<Xsb> xsbs;
  for (std::uint32_t number = 0; number < find_model(model)->xsbs; ++number) {
    const std::string set = numbered("setup_xsb_info_%02d", number), now = numbered("current_xsb_info_%02d", number);
    Xsb xsb{xsb_name(number), false, 0, 0, current.complaint(now, 152)};
    if (xsb.unreadable.empty()) xsb.unreadable = setup.complaint(set, 192);
    if (xsb.unreadable.empty()) {
      const Bytes &record = current.at(now, 152);
      xsb.active = record[61] == 1;
      xsb.domain = word_at(record, 56);
      xsb.setup_domain = word_at(setup.at(set, 192), 128);
    }
    xsbs.push_back(xsb);
  }
  return xsbs;
}

std::vector<Domain> domains_of(const Place &place, std::uint32_t model) {
  RecordSet current(place, LMAINTE_DB_CURRENT);
  std::vector<Domain> domains;
  for (std::uint32_t number = 0; number < find_model(model)->domains; ++number) {
    const std::string name = numbered("current_domain_info_%02d", number);
    Domain domain{number, 0, 0, current.complaint(name, 1464)};
    if (domain.unreadable.empty()) {
      const Bytes &record = current.at(name, 1464);
      domain.word_0 = word_at(record, 0);
      domain.byte_44 = record[44];
    }
    domains.push_back(domain);
  }
  return domains;
}

Server server_of(const Place &place) {
  RecordSet current(place, LMAINTE_DB_CURRENT), local(place, LMAINTE_DB_LOCAL);
  Server server{0, 0, current.complaint("current_system_info", 176)};
  if (server.unreadable.empty()) server.unreadable = local.complaint("local_mgb_info", 280);
  if (!server.unreadable.empty()) return server;
  server.status = word_at(current.at("current_system_info", 176), 8);
  server.service_processor = local.at("local_mgb_info", 280)[20];
  return server;
}

}  // namespace box
