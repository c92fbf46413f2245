// What libFuzzer calls, and the replay of kept inputs in its place.
#pragma once

#include <cstddef>
#include <cstdint>

extern "C" {
int LLVMFuzzerInitialize(int *argc, char ***argv);
int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size);
}
