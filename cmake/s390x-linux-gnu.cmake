# A 64-bit big-endian machine: IBM Z under Linux.
set(MACHINE s390x-linux-gnu)
set(PROCESSOR s390x)
set(QEMU qemu-s390x)
set(COMMANDS machines)
include(${CMAKE_CURRENT_LIST_DIR}/cross.cmake)
