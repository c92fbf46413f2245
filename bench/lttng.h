// A trace point of LTTng, where its library is there and a session records it.
#pragma once

#include <cstdint>

namespace bench {

bool lttng_records();
void append_to_lttng(std::uint32_t code, const std::uint32_t (&words)[4]);

}  // namespace bench
