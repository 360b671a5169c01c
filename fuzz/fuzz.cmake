# Every fuzz target.
varnok_fuzz(NAME image DEPENDS varnok::platform_linux_imaging)
varnok_fuzz(NAME vcard DEPENDS varnok::import)
varnok_fuzz(NAME preferences DEPENDS varnok::platform_linux_posix)
varnok_fuzz(NAME part_header DEPENDS varnok::web_access)
target_include_directories(part_header_fuzz PRIVATE ${CMAKE_SOURCE_DIR}/tests)
varnok_fuzz(NAME save_request DEPENDS varnok::web_access varnok::contacts_testing)
target_include_directories(save_request_fuzz PRIVATE ${CMAKE_SOURCE_DIR}/tests)
varnok_fuzz(NAME http_head DEPENDS varnok::web_http)
