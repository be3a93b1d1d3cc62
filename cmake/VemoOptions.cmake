# Settings that every target of the project shares.
option(VEMO_BUILD_TESTS "Build the tests" ON)
option(VEMO_BUILD_BENCHMARKS "Build the benchmarks" OFF)
option(VEMO_BUILD_FUZZERS "Build the fuzz targets (Clang only)" OFF)
set(VEMO_SANITIZERS "" CACHE STRING "Comma-separated list for -fsanitize=, such as address,undefined")
option(VEMO_HARDENED "Compile as for a release: hardened, and without a trace of the source's folder" OFF)
set(VEMO_BUILD_NUMBER 1 CACHE STRING "Build number, counted up with each release")

set(CMAKE_CXX_STANDARD 23)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)

find_program(VEMO_CCACHE ccache)
if(VEMO_CCACHE)
  set(CMAKE_CXX_COMPILER_LAUNCHER ${VEMO_CCACHE})
endif()
if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
  add_link_options(-fuse-ld=lld)
endif()

add_compile_options(-Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual
                    -Wimplicit-fallthrough -Werror)
add_compile_definitions(QT_NO_KEYWORDS QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII
                        QT_NO_CAST_FROM_BYTEARRAY)

if(VEMO_SANITIZERS)
  add_compile_options(-fsanitize=${VEMO_SANITIZERS} -fno-sanitize-recover=all
                      -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${VEMO_SANITIZERS})
endif()

if(VEMO_HARDENED)
  include(CheckPIESupported)
  check_pie_supported(LANGUAGES CXX)
  set(CMAKE_POSITION_INDEPENDENT_CODE ON)
  add_compile_options(-fstack-protector-strong -fstack-clash-protection
                      -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=3)
  if(CMAKE_SYSTEM_PROCESSOR STREQUAL "x86_64")
    add_compile_options(-fcf-protection=full)
  endif()
  add_link_options(-Wl,-z,relro,-z,now,-z,noexecstack,--as-needed)
  # The same bytes, wherever the source and the build stand.
  add_compile_options(-ffile-prefix-map=${CMAKE_BINARY_DIR}=build
                      -ffile-prefix-map=${PROJECT_SOURCE_DIR}=.)
endif()

# What the fuzzers steer by. Test programs of the same folder bring no fuzzer and take no notice of it.
if(VEMO_BUILD_FUZZERS)
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()
