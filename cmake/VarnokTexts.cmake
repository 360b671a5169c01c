# The texts of the application: resources/texts/LANG.po, compiled into
# ${VARNOK_TEXTS_DIR}/LANG.mo. A key without its text in some language, or a
# text with other placeholders than the English one, fails the build.

set(VARNOK_LANGUAGES en de es fr it tr el he)
set(VARNOK_TEXTS_DIR ${CMAKE_BINARY_DIR}/resources/texts)

find_program(VARNOK_MSGFMT msgfmt REQUIRED)
find_program(VARNOK_PYTHON python3 HINTS /usr/bin REQUIRED)

list(TRANSFORM VARNOK_LANGUAGES PREPEND ${CMAKE_SOURCE_DIR}/resources/texts/ OUTPUT_VARIABLE po_files)
list(TRANSFORM po_files APPEND .po)

set(texts_checked ${VARNOK_TEXTS_DIR}/checked.stamp)
add_custom_command(OUTPUT ${texts_checked}
  COMMAND ${VARNOK_PYTHON} ${CMAKE_SOURCE_DIR}/tools/check_texts.py --root ${CMAKE_SOURCE_DIR}
  COMMAND ${CMAKE_COMMAND} -E make_directory ${VARNOK_TEXTS_DIR}
  COMMAND ${CMAKE_COMMAND} -E touch ${texts_checked}
  DEPENDS ${po_files} ${CMAKE_SOURCE_DIR}/tools/check_texts.py ${CMAKE_SOURCE_DIR}/src/platform/text_key.h
  COMMENT "Checking the texts" VERBATIM)

# MoTextCatalog searches the sorted table, so the hash table would be dead weight.
foreach(language IN LISTS VARNOK_LANGUAGES)
  set(po_file ${CMAKE_SOURCE_DIR}/resources/texts/${language}.po)
  set(mo_file ${VARNOK_TEXTS_DIR}/${language}.mo)
  add_custom_command(OUTPUT ${mo_file}
    COMMAND ${VARNOK_MSGFMT} --check --no-hash --output-file=${mo_file} ${po_file}
    DEPENDS ${po_file} ${texts_checked}
    COMMENT "Compiling the texts: ${language}" VERBATIM)
  list(APPEND mo_files ${mo_file})
endforeach()

add_custom_target(varnok_texts ALL DEPENDS ${texts_checked} ${mo_files})
