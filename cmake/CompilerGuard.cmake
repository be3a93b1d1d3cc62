# Coroutines are load-bearing here, and older compilers miscompile them: GCC 12 double-frees in
# capturing lambdas and in aggregates inside an expression with co_await.
if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang" AND CMAKE_CXX_COMPILER_VERSION VERSION_GREATER_EQUAL 19)
  return()
endif()
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_GREATER_EQUAL 14)
  return()
endif()
message(FATAL_ERROR
  "Vemo needs Clang 19 (Debian package clang-19) or GCC 14 or newer; "
  "${CMAKE_CXX_COMPILER} is ${CMAKE_CXX_COMPILER_ID} ${CMAKE_CXX_COMPILER_VERSION}. "
  "Configure with a preset (cmake --preset dev), or with -DCMAKE_CXX_COMPILER=clang++-19.")
