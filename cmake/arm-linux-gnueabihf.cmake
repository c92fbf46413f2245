# A 32-bit little-endian machine: ARM with a floating-point unit, under Linux.
set(MACHINE arm-linux-gnueabihf)
set(PROCESSOR armv7l)
set(QEMU qemu-arm)
set(COMMANDS machines)
include(${CMAKE_CURRENT_LIST_DIR}/cross.cmake)
