# A folder is a library, and DEPENDS is the only list of what it may include:
# tools/check_layers.py reads these calls and refuses any other include.
#
#   varnok_library(NAME export
#     DEPENDS varnok::contacts          other folders, public
#     LINKS ICU::uc                     libraries from outside, private
#     HEADERS vcf_exporter.h
#     SOURCES vcf_exporter.cpp)
#
# A library without SOURCES is an interface library. TESTONLY ones are built
# with the tests and the fuzz targets only.
function(varnok_library)
  cmake_parse_arguments(ARG "TESTONLY" "NAME" "DEPENDS;LINKS;HEADERS;SOURCES" ${ARGN})
  if(ARG_TESTONLY AND NOT (VARNOK_TESTS OR VARNOK_FUZZ))
    return()
  endif()
  set(target varnok_${ARG_NAME})
  if(ARG_SOURCES)
    add_library(${target} STATIC ${ARG_SOURCES})
    set(scope PUBLIC)
    target_link_libraries(${target} PRIVATE varnok_flags ${ARG_LINKS})
  else()
    add_library(${target} INTERFACE)
    set(scope INTERFACE)
  endif()
  add_library(varnok::${ARG_NAME} ALIAS ${target})
  if(ARG_HEADERS)
    target_sources(${target} ${scope} FILE_SET HEADERS BASE_DIRS ${CMAKE_SOURCE_DIR}/src FILES ${ARG_HEADERS})
  endif()
  target_include_directories(${target} ${scope} ${CMAKE_SOURCE_DIR}/src)
  target_link_libraries(${target} ${scope} ${ARG_DEPENDS})
endfunction()
