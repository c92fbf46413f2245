# The service processor's own kind of machine: 32-bit big-endian PowerPC under Linux. What is built runs here in emulation.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR ppc)

find_program(POWERPC_COMPILER powerpc-linux-gnu-g++)
if(NOT POWERPC_COMPILER)
  message(FATAL_ERROR "powerpc-linux-gnu-g++, the compiler for the service processor, is missing: install the package "
      "g++-powerpc-linux-gnu, or run ./dev install test.")
endif()
set(CMAKE_C_COMPILER powerpc-linux-gnu-gcc)
set(CMAKE_CXX_COMPILER powerpc-linux-gnu-g++)

# Programs are the workstation's, headers and libraries are the target's.
set(CMAKE_FIND_ROOT_PATH /usr/powerpc-linux-gnu)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

set(CMAKE_CROSSCOMPILING_EMULATOR qemu-ppc;-L;/usr/powerpc-linux-gnu)
