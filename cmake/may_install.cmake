# Part of `cmake --install`: fails where there is no such component, something is not built, or a folder of the installation cannot
# be written, before anything is.
list(FIND components "${CMAKE_INSTALL_COMPONENT}" place)
if(is_alone AND CMAKE_INSTALL_COMPONENT AND place EQUAL -1)
  list(JOIN components ", " names)
  message(FATAL_ERROR "lmainte has no component ${CMAKE_INSTALL_COMPONENT}. It has: ${names}.")
endif()
foreach(file IN LISTS needed)
  if(NOT EXISTS ${file})
    message(FATAL_ERROR "lmainte cannot be installed: ${file} is not built. Nothing was installed. Build it by ./dev build, or by "
        "cmake --build.")
  endif()
endforeach()
foreach(folder IN LISTS folders)
  get_filename_component(place "$ENV{DESTDIR}${CMAKE_INSTALL_PREFIX}/${folder}" ABSOLUTE)
  while(NOT EXISTS "${place}")
    get_filename_component(place "${place}" DIRECTORY)
  endwhile()
  execute_process(COMMAND test -d "${place}" -a -w "${place}" RESULT_VARIABLE refused)
  if(refused)
    message(FATAL_ERROR "lmainte cannot be installed below $ENV{DESTDIR}${CMAKE_INSTALL_PREFIX}: ${place} is no folder that you "
        "may write in. Nothing was installed. Give another place by --prefix or in DESTDIR, or do it as root.")
  endif()
endforeach()
