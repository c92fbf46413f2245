// The readers of the inventory as benchmarks.
#pragma once

namespace bench {

void add_readers();

}  // namespace bench
