#include "include/lmainte.h"

#include <cstdio>
#include <cstring>

#include "src/dialogue/unit_lines.h"
#include "src/frame/trace.h"
#include "trace_events/dialogue.h"

namespace {

using lmainte::Table;
using lmainte::UnitName;
using trace_events::ShowCmuIouList;

lmainte::Trace trace;
constexpr lmainte::Block kBlock = lmainte::block_of<ShowCmuIouList>();

constexpr lmainte::TableErrors kErrors = {
    .file =
        {
            .no_file = ShowCmuIouList::kNoFile,
            .pager_failed = ShowCmuIouList::kPagerFailed,
            .not_removed = ShowCmuIouList::kNotRemoved,
        },
    .no_name = ShowCmuIouList::kNoName,
};

constexpr uint32_t kXsbsOfABoard = 4;
constexpr uint32_t kLastDomain = 23;

bool shows_cmu(uint32_t kind) {
  return kind != LMAINTE_BOARD_IOU;
}
bool shows_iou(uint32_t kind) {
  return kind != LMAINTE_BOARD_CMU;
}

// The name of the CMU, of the IOU, or of both joined and cut to the room.
struct BoardName {
  char text[128] = {};
  const char *shown() const { return text[0] == '/' ? text + 1 : text; }

  bool find(Table &table, uint32_t kind, const SbData &board) {
    UnitName name;
    if (shows_cmu(kind)) {
      if (!table.find_name(board.cmu.unit_id, lmainte::NameForm::kLocation, name)) return false;
      append(name.whole());
    }
    if (shows_iou(kind)) {
      if (!table.find_name(board.iou.unit_id, lmainte::NameForm::kLocation, name)) return false;
      if (shows_cmu(kind)) append("/");
      append(shows_cmu(kind) ? name.shown() : name.whole());
    }
    return true;
  }

 private:
  // What is too long is cut. The zeros behind the text end it.
  void append(const char *part) {
    const size_t used = strlen(text);
    memcpy(text + used, part, strnlen(part, sizeof text - 1 - used));
  }
};

struct DomainColumn {
  char text[8] = "--";
};

// The domain of an extended system board: the one it runs in, or the one it is set up for.
void fill_domain(const XsbData &xsb, DomainColumn &column) {
  const auto domain = static_cast<uint32_t>(xsb.active == 1 ? xsb.current_domain : xsb.setup_domain);
  if (domain > kLastDomain)
    snprintf(column.text, sizeof column.text, "SP");
  else
    snprintf(column.text, sizeof column.text, "%ld", static_cast<long>(domain));
}

// Four consecutive boards are looked at, from the first one of the board on, also where the board is a single one.
const char *power_of(const XsbData *xsbs, int32_t first) {
  for (uint32_t i = 0; i < kXsbsOfABoard; ++i)
    if (xsbs[static_cast<uint32_t>(first) + i].active == 1) return "On";
  return "Off";
}

// A board's state, and the mark that says that a module or component of it is faulted or degraded.
struct StatusColumn {
  char text[16] = {};

  void fill(uint32_t kind, const SbData &board) {
    uint32_t status = 0;
    uint32_t mark = 0;
    if (shows_cmu(kind)) {
      status |= lmainte::whole_status(board.cmu);
      mark |= board.cmu.parts_status;
    }
    if (shows_iou(kind)) {
      status |= lmainte::whole_status(board.iou);
      mark |= board.iou.mainte_status;
    }
    snprintf(text, sizeof text, is_marked(status, mark) ? "%-8s *" : "%s", lmainte::state_text(status, ""));
  }

  static bool is_marked(uint32_t status, uint32_t mark) {
    if (status == lmainte::kUnknownStatus || !lmainte::is_installed(status)) return false;
    return mark != lmainte::kUnknownStatus && (mark & lmainte::kConditionBits) != 0;
  }
};

bool write_board(Table &table, int32_t number, uint32_t kind, const SbData &board, const XsbData *xsbs) {
  BoardName name;
  if (!name.find(table, kind, board)) return false;
  DomainColumn domain[kXsbsOfABoard];
  const char *power = "---";
  if (lmainte::is_installed(static_cast<uint32_t>(board.cmu.status))) {
    for (uint32_t j = 0; j < kXsbsOfABoard; ++j) fill_domain(xsbs[board.cmu.xsb[j]], domain[j]);
    power = power_of(xsbs, board.cmu.xsb[0]);
  }
  StatusColumn status;
  status.fill(kind, board);
  table.write_unit(lmainte::kBoardLine, number, name.shown(), domain[0].text, domain[1].text, domain[2].text,
                   domain[3].text, power, status.text);
  return true;
}

}  // namespace

int32_t lmainte_show_cmu_iou_list(int32_t, uint32_t kind, uint32_t count, const SbData *boards, const XsbData *xsbs,
                                  const ListLine *lines) {
  lmainte::Call call(trace, kBlock);
  if (kind > LMAINTE_BOARD_BOTH) {
    call.error(ShowCmuIouList::kNoKind, kind);
    return call.returns(LMAINTE_FAILED);
  }
  if (!lmainte::is_given(call, ShowCmuIouList::kNoBoards, boards)) return call.returns(LMAINTE_FAILED);
  if (!lmainte::is_given(call, ShowCmuIouList::kNoXsbs, xsbs)) return call.returns(LMAINTE_FAILED);
  if (!lmainte::is_given(call, ShowCmuIouList::kNoLines, lines)) return call.returns(LMAINTE_FAILED);
  return call.returns(Table(call, kErrors).show(lines, [&](Table &table) {
    int32_t number = 0;
    for (uint32_t i = 0; i < count; ++i)
      if (!write_board(table, ++number, kind, boards[i], xsbs)) return false;
    return true;
  }));
}
