# shipped_library(NAME AS NAME_IN_NAMESPACE NAMES FILE [ON LIBRARY] SOURCES FILE...)
#
# A library as it ships: NAME, shared, with the soname of the major version, and NAME_static. Other projects see them as
# lmainte::NAME_IN_NAMESPACE and lmainte::NAME_IN_NAMESPACE_static; cmake/install.cmake installs both. It depends only on the C
# library: no exceptions, no run-time types, no C++ run-time library.
#
# NAMES    the version script, with the names that it exports
# ON       the library that it stands on
function(shipped_library name)
  cmake_parse_arguments(PARSE_ARGV 1 ship "" "AS;NAMES;ON" SOURCES)
  set_property(GLOBAL APPEND PROPERTY lmainte_shipped_libraries ${name} ${name}_static)
  set(names ${CMAKE_CURRENT_SOURCE_DIR}/${ship_NAMES})

  add_library(${name}_objects OBJECT ${ship_SOURCES})
  target_include_directories(${name}_objects PUBLIC ${PROJECT_SOURCE_DIR}/include PRIVATE ${PROJECT_SOURCE_DIR})
  target_compile_options(${name}_objects PRIVATE -fno-exceptions -fno-rtti -fno-threadsafe-statics)
  set_target_properties(${name}_objects PROPERTIES CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON)
  target_link_libraries(${name}_objects PRIVATE lmainte_warnings)
  # Arrays on the stack are guarded, and calls that write into them are checked. A guard in each function that has an object on its
  # stack (-fstack-protector-strong) would make the library larger by a twentieth, and guard objects that nothing can overrun.
  target_compile_options(${name}_objects PRIVATE -fstack-protector
      $<$<NOT:$<CONFIG:Debug>>:-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=2>)
  # The same sources make the same files, whichever folder they lie in. What counts lines needs to know where they lie.
  set(placeless)
  if(NOT LMAINTE_COVERAGE)
    set(placeless -ffile-prefix-map=${PROJECT_SOURCE_DIR}=.)
  endif()
  target_compile_options(${name}_objects PRIVATE ${placeless})
  foreach(source IN LISTS ship_SOURCES)
    set_source_files_properties(${source} PROPERTIES COMPILE_OPTIONS -frandom-seed=${name}/${source})
  endforeach()
  if(LMAINTE_FOR_SIZE)
    # The shared library is optimised as a whole; the objects are whole without that, too, for the static library. Small
    # position-independent code is enough for it. No exception comes through the library, so nobody unwinds it.
    set(for_size -Os -flto -fpic -fno-semantic-interposition -fno-asynchronous-unwind-tables -fno-unwind-tables)
    target_compile_options(${name}_objects PRIVATE ${for_size} -ffat-lto-objects)
  endif()

  # The C compiler links, so that no C++ run-time library comes in. The platform's functions stay undefined: the maintenance
  # command is linked with them. Where it is installed, it finds the library that it stands on beside itself.
  add_library(${name} SHARED $<TARGET_OBJECTS:${name}_objects>)
  # Nothing in it is writable but its variables, once it is loaded, and what the linker warns of is an error.
  target_link_options(${name} PRIVATE LINKER:--version-script=${names},-z,relro,-z,now,-z,noexecstack,-z,text,--fatal-warnings)
  if(LMAINTE_FOR_SIZE)
    # Its functions call each other directly; its variables stay one with those of a command that has copies of them.
    target_link_options(${name} PRIVATE ${for_size} ${placeless} LINKER:-Bsymbolic-functions)
  endif()
  # On a 32-bit PowerPC with glibc, it runs with C libraries that are older than the one it is built with.
  if(CMAKE_SYSTEM_PROCESSOR STREQUAL "ppc")
    include(CheckSymbolExists)
    check_symbol_exists(__GLIBC__ features.h LMAINTE_HAS_GLIBC)
    if(LMAINTE_HAS_GLIBC)
      target_sources(${name} PRIVATE ${PROJECT_SOURCE_DIR}/cmake/stat_of_old_libraries.c)
      target_compile_options(${name} PRIVATE ${placeless})
      target_link_options(${name} PRIVATE LINKER:--wrap=stat)
    endif()
  endif()
  set_target_properties(${name} PROPERTIES
      VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR} LINKER_LANGUAGE C LINK_DEPENDS ${names}
      LIBRARY_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR})

  add_library(${name}_static STATIC $<TARGET_OBJECTS:${name}_objects>)
  if(LMAINTE_FOR_SIZE)
    # What is there for the optimisation as a whole alone: other compilers cannot read it.
    add_custom_command(TARGET ${name}_static POST_BUILD
        COMMAND ${CMAKE_OBJCOPY} --enable-deterministic-archives --wildcard --remove-section=.gnu.lto_*
            --remove-section=.gnu.debuglto_* --strip-symbol=__gnu_lto_slim $<TARGET_FILE:${name}_static> VERBATIM)
  endif()
  set_target_properties(${name}_static PROPERTIES OUTPUT_NAME ${name} ARCHIVE_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR})

  foreach(kind IN ITEMS "" _static)
    add_library(lmainte::${ship_AS}${kind} ALIAS ${name}${kind})
    target_include_directories(${name}${kind} PUBLIC $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include>)
    set_target_properties(${name}${kind} PROPERTIES EXPORT_NAME ${ship_AS}${kind})
    if(ship_ON)
      target_link_libraries(${name}${kind} PUBLIC ${ship_ON}${kind})
      # Where it is built, too: CMake's own entry there has room for another folder, and an empty one is the working folder.
      set_target_properties(${name}${kind} PROPERTIES INSTALL_RPATH $ORIGIN BUILD_WITH_INSTALL_RPATH ON)
    endif()
  endforeach()
endfunction()
