// What the platform gives to the library: the only functions that it exports, and none of them throws.
#pragma once

#pragma GCC visibility push(default)
#include "include/lmainte_platform.h"
#pragma GCC visibility pop
