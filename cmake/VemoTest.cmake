# vemo_test(NAME SOURCES … LINKS … [LABEL unit|contract|desktop|service] [DESKTOP x11 window-manager audio keyring …])
#
# One GoogleTest program and one ctest entry of the same name; the target all-LABEL-tests builds those of
# one label. With DESKTOP it runs inside an isolated virtual desktop that has the parts named
# (tools/virtual-desktop says which there are); without, it runs as it is. The time limit is there to end
# what hangs, far above what the slowest takes on a busy machine.
function(vemo_test name)
  cmake_parse_arguments(ARG "" "LABEL" "SOURCES;LINKS;DESKTOP" ${ARGN})
  if(NOT ARG_LABEL)
    set(ARG_LABEL unit)
  endif()
  add_executable(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE ${ARG_LINKS} GTest::gmock GTest::gtest_main)
  if(NOT TARGET all-${ARG_LABEL}-tests)
    add_custom_target(all-${ARG_LABEL}-tests)
  endif()
  add_dependencies(all-${ARG_LABEL}-tests ${name})
  vemo_on_a_desktop(desktop ${ARG_DESKTOP})
  add_test(NAME ${name} COMMAND ${desktop} $<TARGET_FILE:${name}>)
  set_tests_properties(${name} PROPERTIES LABELS ${ARG_LABEL} TIMEOUT 900)
endfunction()

# vemo_script_test(NAME FILE LABEL … TIMEOUT … [ARGUMENTS …] [DESKTOP …] [ENVIRONMENT …])
#
# One ctest entry for a file of Python's unittest, or for what ARGUMENTS name in it.
function(vemo_script_test name file)
  cmake_parse_arguments(ARG "" "LABEL;TIMEOUT" "ARGUMENTS;DESKTOP;ENVIRONMENT" ${ARGN})
  vemo_on_a_desktop(desktop ${ARG_DESKTOP})
  add_test(NAME ${name} COMMAND ${desktop} /usr/bin/python3 -B ${CMAKE_CURRENT_SOURCE_DIR}/${file} ${ARG_ARGUMENTS})
  set_tests_properties(${name} PROPERTIES LABELS ${ARG_LABEL} TIMEOUT ${ARG_TIMEOUT} ENVIRONMENT "${ARG_ENVIRONMENT}")
endfunction()

# The front of a command that runs in a virtual desktop with these parts; nothing where no part is named.
function(vemo_on_a_desktop front)
  set(command)
  if(ARGN)
    list(TRANSFORM ARGN PREPEND --)
    set(command ${PROJECT_SOURCE_DIR}/tools/virtual-desktop ${ARGN} --)
  endif()
  set(${front} ${command} PARENT_SCOPE)
endfunction()
