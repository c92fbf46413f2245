// What the platform gives to the library and to commands: the only functions that it exports, and none of them throws.
#pragma once

#pragma GCC visibility push(default)
#include "host/include/lmainte_host.h"
#include "include/lmainte_platform.h"
#pragma GCC visibility pop
