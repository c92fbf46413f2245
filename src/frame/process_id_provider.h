// The item of the procedure information that names its writer: the process id.
#pragma once

#include <cstdint>

namespace lmainte {

int32_t provide_process_id(char *text, int32_t size);

}  // namespace lmainte
