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

# A module that a program opens when it first needs it, so that nobody pays for
# its libraries before. LIBRARY is the one that opens it.
#
#   varnok_module(NAME desktop LIBRARY platform_linux_dbus LINKS PkgConfig::GIO SOURCES gdbus.cpp)
function(varnok_module)
  cmake_parse_arguments(ARG "" "NAME;LIBRARY" "LINKS;SOURCES" ${ARGN})
  set(target varnok_${ARG_NAME})
  add_library(${target} MODULE ${ARG_SOURCES})
  target_include_directories(${target} PRIVATE ${CMAKE_SOURCE_DIR}/src)
  target_link_libraries(${target} PRIVATE varnok_flags ${ARG_LINKS})
  set_target_properties(${target} PROPERTIES PREFIX "" OUTPUT_NAME varnok-${ARG_NAME}
    LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/lib/varnok)
  install(TARGETS ${target} LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}/varnok COMPONENT varnok-desktop)
  add_dependencies(varnok_${ARG_LIBRARY} ${target})
endfunction()
