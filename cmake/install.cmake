# What `cmake --install` puts where. Components: runtime (what a command needs on the target), development, box (the host
# platform and spbox), documentation.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

# Refuses a place without rights, and what is not built, before anything is written.
get_property(libraries GLOBAL PROPERTY lmainte_shipped_libraries)
list(TRANSFORM libraries REPLACE "(.+)" "$<TARGET_FILE:\\1>" OUTPUT_VARIABLE needed)
list(APPEND needed ${PROJECT_BINARY_DIR}/locale)
if(LMAINTE_HOST)
  list(APPEND needed $<TARGET_FILE:lmainte_host> $<TARGET_FILE:spbox> $<TARGET_FILE:control_program>
      $<TARGET_FILE:monitor_daemon> $<TARGET_FILE:platform_server> $<TARGET_FILE:lmainte_clock>
      $<TARGET_FILE:lmainte_emulator> $<TARGET_FILE:lmainte_replay> ${PROJECT_BINARY_DIR}/man/man1/spbox.1
      ${PROJECT_BINARY_DIR}/man/man7/lmainte.7)
endif()
install(CODE "set(is_alone ${PROJECT_IS_TOP_LEVEL})" ALL_COMPONENTS)  # others have components of their own
install(CODE "set(components runtime;development;box;documentation)" ALL_COMPONENTS)
install(CODE "set(needed \"${needed}\")" ALL_COMPONENTS)
install(CODE "set(folders \"${CMAKE_INSTALL_BINDIR};${CMAKE_INSTALL_LIBDIR};${CMAKE_INSTALL_INCLUDEDIR};${CMAKE_INSTALL_DATADIR}\")"
    ALL_COMPONENTS)
install(SCRIPT ${CMAKE_CURRENT_LIST_DIR}/may_install.cmake ALL_COMPONENTS)

set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/lmainte)
set(components)

# install_part(NAME RUNTIME TARGET...): libraries with their CMake targets. RUNTIME is the component of their run-time files.
function(install_part name runtime)
  install(TARGETS ${ARGN} EXPORT lmainte-${name}
      LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT ${runtime} NAMELINK_COMPONENT development
      ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development
      INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
  install(EXPORT lmainte-${name} NAMESPACE lmainte:: DESTINATION ${package_folder} COMPONENT development)
  set(components ${components} ${name} PARENT_SCOPE)
endfunction()

# install_pc(NAME DESCRIPTION LIBS [REQUIRES])
function(install_pc PC_NAME PC_DESCRIPTION PC_LIBS)
  set(PC_REQUIRES ${ARGN})
  file(RELATIVE_PATH UP_TO_PREFIX ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
  string(REGEX REPLACE "/$" "" UP_TO_PREFIX ${UP_TO_PREFIX})
  configure_file(cmake/lmainte.pc.in ${PROJECT_BINARY_DIR}/package/${PC_NAME}.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/package/${PC_NAME}.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig
      COMPONENT development)
endfunction()

install_part(library runtime ${libraries})
install_pc(lmainte "Maintenance library of the service processor" -llmainte)
install_pc(lmainte_procedure "Maintenance commands as lists of steps" -llmainte_procedure lmainte)
install(DIRECTORY ${PROJECT_BINARY_DIR}/locale/ DESTINATION ${CMAKE_INSTALL_LOCALEDIR} COMPONENT runtime)
install(FILES include/lmainte.h include/lmainte_platform.h include/lmainte_procedure.h include/lmainte_record.h
    TYPE INCLUDE COMPONENT development)

if(LMAINTE_HOST)
  install_part(host box lmainte_host)
  # Not dropped by --as-needed, where it stands before liblmainte: that one calls it, commands do not.
  install_pc(lmainte_host "Host platform of lmainte: a service processor in a box"
      -Wl,--push-state,--no-as-needed,-llmainte_host,--pop-state)
  install(FILES host/include/lmainte_host.h TYPE INCLUDE COMPONENT development)
  install(TARGETS spbox RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT box)
  install(TARGETS control_program monitor_daemon platform_server lmainte_clock lmainte_emulator lmainte_replay
      RUNTIME DESTINATION ${CMAKE_INSTALL_LIBEXECDIR}/lmainte COMPONENT box LIBRARY DESTINATION ${CMAKE_INSTALL_LIBEXECDIR}/lmainte COMPONENT box)
  install(DIRECTORY ${PROJECT_BINARY_DIR}/man/man1 DESTINATION ${CMAKE_INSTALL_MANDIR} COMPONENT box)
  install(DIRECTORY ${PROJECT_BINARY_DIR}/man/man3 ${PROJECT_BINARY_DIR}/man/man7 DESTINATION ${CMAKE_INSTALL_MANDIR}
      COMPONENT development)
  install(FILES ${PROJECT_BINARY_DIR}/completion/spbox.bash RENAME spbox
      DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions COMPONENT box)
  install(FILES ${PROJECT_BINARY_DIR}/completion/_spbox
      DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/site-functions COMPONENT box)
  install(FILES ${PROJECT_BINARY_DIR}/completion/spbox.fish
      DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d COMPONENT box)
  install(DIRECTORY examples/plays DESTINATION ${CMAKE_INSTALL_DATADIR}/lmainte COMPONENT box)
endif()

install(FILES README.md CHANGELOG.md LICENSE TYPE DOC COMPONENT documentation)
install(DIRECTORY docs TYPE DOC COMPONENT documentation)
install(DIRECTORY examples TYPE DOC COMPONENT documentation PATTERN CMakeLists.txt EXCLUDE)

set(COMPONENTS ${components})
configure_package_config_file(cmake/lmainteConfig.cmake.in ${PROJECT_BINARY_DIR}/package/lmainteConfig.cmake
    INSTALL_DESTINATION ${package_folder} NO_SET_AND_CHECK_MACRO NO_CHECK_REQUIRED_COMPONENTS_MACRO)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/package/lmainteConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/package/lmainteConfig.cmake ${PROJECT_BINARY_DIR}/package/lmainteConfigVersion.cmake
    DESTINATION ${package_folder} COMPONENT development)
