option(VALDORN_TESTS "Build the tests" ON)
option(VALDORN_GUI "Build the Qt parts and the program itself" ON)
option(VALDORN_BENCH "Build the benchmarks" OFF)
option(VALDORN_PACKAGE "Make what an installation holds besides the program, and a Debian package" OFF)
option(VALDORN_PRECOMPILE "Read the headers that most files need only once; the compiler cache then has nothing to keep" OFF)
option(VALDORN_FUZZ "Let libFuzzer make up the input of tests/fuzz; needs clang and its instrumentation" OFF)
option(VALDORN_TIDY "Run clang-tidy on each file" OFF)
set(VALDORN_RELEASE_SERVICE "https://gitea.com" CACHE STRING "The Gitea instance that is asked for the latest runner")
set(VALDORN_SANITIZE "" CACHE STRING "Sanitizers for -fsanitize=, or empty")

add_library(valdorn_flags INTERFACE)
target_compile_options(valdorn_flags INTERFACE
  -Wall -Wextra -Wpedantic -Werror -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual
  -Wconversion -Wsign-conversion -Wcast-qual -Wnull-dereference -Wimplicit-fallthrough)
if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
  target_compile_options(valdorn_flags INTERFACE -Wextra-semi)
endif()
if(VALDORN_SANITIZE)
  add_compile_options(-fsanitize=${VALDORN_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${VALDORN_SANITIZE})
  # GCC sees phantom null dereferences in code that a sanitizer has rewritten.
  target_compile_options(valdorn_flags INTERFACE -Wno-null-dereference)
endif()
if(CMAKE_BUILD_TYPE STREQUAL "Release")
  # Hardened as Debian's own programs are, and the same wherever the sources lie.
  add_compile_options(-D_FORTIFY_SOURCE=2 -fstack-protector-strong -ffile-prefix-map=${PROJECT_SOURCE_DIR}=.)
  add_link_options(-Wl,-z,relro -Wl,-z,now)
  if(CMAKE_SYSTEM_PROCESSOR STREQUAL "x86_64")
    # Marks where a jump may lead, for processors and kernels that look. Debian's compiler does not by
    # itself; that the program lies elsewhere at each start, and runs nothing on its stack, it does.
    add_compile_options(-fcf-protection)
  endif()
endif()
if(VALDORN_TIDY)
  find_program(VALDORN_CLANG_TIDY NAMES clang-tidy-14 clang-tidy REQUIRED)
  # What Qt's tools generate is none of ours: next to nothing is looked at in the build folder.
  file(WRITE ${PROJECT_BINARY_DIR}/.clang-tidy "Checks: '-*,misc-definitions-in-headers'\n")
endif()

# The warnings, and clang-tidy when asked for, for code of ours.
function(valdorn_checked target)
  target_link_libraries(${target} PRIVATE valdorn_flags)
  if(VALDORN_TIDY)
    set_target_properties(${target} PROPERTIES CXX_CLANG_TIDY
      "${PROJECT_SOURCE_DIR}/tools/dev/tidy_once;${VALDORN_CLANG_TIDY};--quiet")
  endif()
endfunction()

# The headers that most files of a target spend their time on, read once for all of it. Only where
# speed is wanted: elsewhere each file shows that it includes what it needs.
function(valdorn_precompiled target)
  if(VALDORN_PRECOMPILE)
    target_precompile_headers(${target} ${ARGN})
  endif()
endfunction()
