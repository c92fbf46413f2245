// The records of a server of the largest model, with units of all models.
#pragma once

namespace bench {

inline constexpr int kBoards = 16;

// Stores them in place of all that is stored, also of more boards than the model has.
void put_server(int boards);

}  // namespace bench
