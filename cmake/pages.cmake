# The manual pages and what shells complete: made from the headers and from spbox's verbs, in man/ and completion/.
find_package(Python3 REQUIRED COMPONENTS Interpreter)

# Pages have the date of the newest release.
file(STRINGS CHANGELOG.md release REGEX "^## [0-9.]+, [0-9-]+$" LIMIT_COUNT 1)
string(REGEX REPLACE ".*, " "" date "${release}")

set(manual ${PROJECT_BINARY_DIR}/man/man7/lmainte.7)
list(TRANSFORM LMAINTE_DOCUMENTED_HEADERS PREPEND ${PROJECT_SOURCE_DIR}/)
add_custom_command(OUTPUT ${manual}
    COMMAND ${CMAKE_COMMAND} -E rm -rf ${PROJECT_BINARY_DIR}/man/man3 ${PROJECT_BINARY_DIR}/man/man7
    COMMAND ${Python3_EXECUTABLE} ${PROJECT_SOURCE_DIR}/scripts/manual ${PROJECT_BINARY_DIR}/man ${date}
        ${LMAINTE_DOCUMENTED_HEADERS}
    DEPENDS scripts/manual ${LMAINTE_DOCUMENTED_HEADERS} CHANGELOG.md VERBATIM)

# made_from_verbs(KIND FILE)
set(made ${manual})
function(made_from_verbs kind file)
  get_filename_component(folder ${PROJECT_BINARY_DIR}/${file} DIRECTORY)
  add_custom_command(OUTPUT ${PROJECT_BINARY_DIR}/${file}
      COMMAND ${CMAKE_COMMAND} -E make_directory ${folder}
      COMMAND spbox_pages ${kind} ${date} > ${PROJECT_BINARY_DIR}/${file}
      DEPENDS spbox_pages CHANGELOG.md VERBATIM)
  set(made ${made} ${PROJECT_BINARY_DIR}/${file} PARENT_SCOPE)
endfunction()
made_from_verbs(manual man/man1/spbox.1)
made_from_verbs(bash completion/spbox.bash)
made_from_verbs(zsh completion/_spbox)
made_from_verbs(fish completion/spbox.fish)
add_custom_target(pages ALL DEPENDS ${made})
