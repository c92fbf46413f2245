# What toolchain files have in common. They set MACHINE, as Debian names it, its PROCESSOR as `uname -m` there, the QEMU that runs its
# programs, and COMMANDS, the ./dev commands that install its compiler. What is built runs here in emulation.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR ${PROCESSOR})

find_program(LMAINTE_CROSS_COMPILER ${MACHINE}-g++)
if(NOT LMAINTE_CROSS_COMPILER)
  message(FATAL_ERROR "${MACHINE}-g++ is missing: install the package g++-${MACHINE}, or run ./dev install ${COMMANDS}.")
endif()
set(CMAKE_C_COMPILER ${MACHINE}-gcc)
set(CMAKE_CXX_COMPILER ${MACHINE}-g++)

# Programs are the workstation's, headers and libraries are the target's.
set(CMAKE_FIND_ROOT_PATH /usr/${MACHINE})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

set(CMAKE_CROSSCOMPILING_EMULATOR ${QEMU};-L;/usr/${MACHINE})
