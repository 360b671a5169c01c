# Every fuzz target.
varnok_fuzz(NAME image DEPENDS varnok::platform_linux_imaging)
varnok_fuzz(NAME vcard DEPENDS varnok::import)
varnok_fuzz(NAME preferences DEPENDS varnok::platform_linux_posix)
