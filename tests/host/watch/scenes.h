// Scenes for tests: a server of each model in which all is well.
#pragma once

#include <string_view>

#include "host/box/inventory_kinds.h"
#include "host/box/model.h"
#include "host/watch/scene.h"

inline watch::Scene scene_of(std::string_view model) {
  const box::Model &row = *box::find_model(model);
  watch::Scene scene;
  scene.server.model = model;
  scene.server.fan_speed = "low";
  scene.server.note = "service processor unit 0";
  std::uint32_t carrier = watch::kNobody;
  for (const box::UnitPlace &place : box::places_of(row.code)) {
    if (!place.carried) carrier = static_cast<std::uint32_t>(scene.server.units.size());
    watch::Unit unit;
    unit.name = place.name;
    if (place.carried) unit.carrier = carrier;
    scene.server.units.push_back(unit);
  }
  for (std::uint32_t i = 0; i < row.xsbs; ++i)
    scene.server.parts.push_back({i / 4, i % 4, i % 2 ? 255 : i / 4, i % 2 == 0, true});
  return scene;
}

inline watch::Unit &unit_in(watch::Scene &scene, std::string_view name) {
  return scene.server.units.at(watch::find_unit(scene.server, name).value());
}
