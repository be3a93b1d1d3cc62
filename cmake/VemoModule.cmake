# vemo_module(FOLDER SOURCES … LINKS … [PRIVATE_LINKS …])
#
# One static library for one folder of src/: `base` becomes vemo_base, `platform/x11` becomes
# vemo_platform_x11. Headers are included by their path below src/ ("base/Task.h"), and a folder's
# headers can be found only by targets that link it: each module has an include root of its own that
# holds nothing but a link to its folder. So an include against the arrows of the house doesn't build.
function(vemo_module folder)
  cmake_parse_arguments(ARG "" "" "SOURCES;LINKS;PRIVATE_LINKS" ${ARGN})
  string(REPLACE "/" "_" name ${folder})
  set(target vemo_${name})

  set(root ${CMAKE_BINARY_DIR}/include-roots/${name})
  cmake_path(GET folder PARENT_PATH parent)
  file(MAKE_DIRECTORY ${root}/${parent})
  file(CREATE_LINK ${CMAKE_CURRENT_SOURCE_DIR} ${root}/${folder} SYMBOLIC)

  if(ARG_SOURCES)
    add_library(${target} STATIC ${ARG_SOURCES})
    target_include_directories(${target} PUBLIC ${root})
    target_link_libraries(${target} PUBLIC ${ARG_LINKS} PRIVATE ${ARG_PRIVATE_LINKS})
  else()
    add_library(${target} INTERFACE)
    target_include_directories(${target} INTERFACE ${root})
    target_link_libraries(${target} INTERFACE ${ARG_LINKS})
  endif()
endfunction()
