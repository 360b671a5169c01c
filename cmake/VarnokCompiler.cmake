# Flags that every target of the project gets, tests included.

add_library(varnok_flags INTERFACE)
target_compile_options(varnok_flags INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wnon-virtual-dtor -Wold-style-cast -Wcast-qual
  -Woverloaded-virtual -Werror=switch -Werror=return-type)

if(VARNOK_SANITIZE)
  add_compile_options(-fsanitize=${VARNOK_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${VARNOK_SANITIZE})
endif()

if(VARNOK_FUZZ)
  # Coverage of the libraries, not of the targets alone, guides the fuzzer.
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()

find_program(VARNOK_CCACHE ccache)
if(VARNOK_CCACHE)
  set(CMAKE_C_COMPILER_LAUNCHER ${VARNOK_CCACHE})
  set(CMAKE_CXX_COMPILER_LAUNCHER ${VARNOK_CCACHE})
endif()
