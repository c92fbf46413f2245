// The operator's language.
#pragma once

namespace lmainte::procedure {

// What the environment asks for, for the library's words and for those of procedures. English where there is no translation.
void speak_the_operators_language();

}  // namespace lmainte::procedure
