# The service processor's own kind of machine: 32-bit big-endian PowerPC under Linux.
set(MACHINE powerpc-linux-gnu)
set(PROCESSOR ppc)
set(QEMU qemu-ppc)
set(COMMANDS test)
include(${CMAKE_CURRENT_LIST_DIR}/cross.cmake)
