// The verbs of spbox as steps of a play.
#pragma once

#include "host/play/plan.h"

namespace spbox {

play::Verbs verbs_that_work_on_box();

}  // namespace spbox
