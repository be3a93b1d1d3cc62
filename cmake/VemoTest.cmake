# vemo_test(NAME SOURCES … LINKS … [LABEL unit|contract|desktop|service] [DESKTOP x11 window-manager audio keyring …])
#
# One GoogleTest program and one ctest entry of the same name; the target all-LABEL-tests builds those of
# one label. With DESKTOP it runs inside an isolated virtual desktop that has the parts named
# (tools/virtual-desktop says which there are); without, it runs as it is.
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
  if(ARG_DESKTOP)
    list(TRANSFORM ARG_DESKTOP PREPEND --)
    add_test(NAME ${name}
             COMMAND ${PROJECT_SOURCE_DIR}/tools/virtual-desktop ${ARG_DESKTOP} -- $<TARGET_FILE:${name}>)
  else()
    add_test(NAME ${name} COMMAND ${name})
  endif()
  set_tests_properties(${name} PROPERTIES LABELS ${ARG_LABEL} TIMEOUT 300)
endfunction()
