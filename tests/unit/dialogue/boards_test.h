// System boards for their list and their status table.
#pragma once

#include <array>

#include "tests/unit/dialogue/show_test.h"

namespace doubles {

class BoardsTest : public ShowTest {
 protected:
  // A board whose CMU and IOU are installed and well, and whose four extended system boards are number 0.
  SbData board(const std::string &cmu, const std::string &iou) {
    SbData board = {};
    board.cmu = unit<CmuData>(cmu, kInstalled, 0);
    board.cmu.parts_status = 0;
    for (auto &xsb : board.cmu.xsb) xsb = 0;
    for (auto &module : board.cmu.cpum) module = unit<UnitData>("/absent", 0, 0x30000000);
    for (auto &module : board.cmu.dimm) module = unit<UnitData>("/absent", 0, 0x30000000);
    board.iou = unit<IouData>(iou, kInstalled, 0);
    board.iou.parts_status = 0;
    return board;
  }

  static void set_cmu(SbData &board, uint32_t status, uint32_t mainte_status, uint32_t parts_status = 0) {
    board.cmu.status = static_cast<int32_t>(status);
    board.cmu.mainte_status = static_cast<int32_t>(mainte_status);
    board.cmu.parts_status = parts_status;
  }
  static void set_iou(SbData &board, uint32_t status, uint32_t parts_status, uint32_t mainte_status = 0) {
    board.iou.status = static_cast<int32_t>(status);
    board.iou.parts_status = static_cast<int32_t>(parts_status);
    board.iou.mainte_status = mainte_status;
  }
};

}  // namespace doubles
