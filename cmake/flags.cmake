# The one place for compiler flags and strict Qt definitions: every target links it.
add_library(orrinet-flags INTERFACE)
target_compile_features(orrinet-flags INTERFACE cxx_std_20)
target_compile_definitions(orrinet-flags INTERFACE
    QT_ENABLE_STRICT_MODE_UP_TO=0x060800
    QT_DISABLE_DEPRECATED_UP_TO=0x060800
    QT_NO_CAST_FROM_ASCII
    QT_NO_CAST_TO_ASCII
    QT_NO_CAST_FROM_BYTEARRAY
    QT_NO_URL_CAST_FROM_STRING
    QT_NO_NARROWING_CONVERSIONS_IN_CONNECT
    QT_NO_KEYWORDS
    QT_USE_QSTRINGBUILDER)

if(MSVC)
    target_compile_options(orrinet-flags INTERFACE /W4 /permissive- /utf-8
        $<$<BOOL:${ORRINET_WARNINGS_AS_ERRORS}>:/WX>)
else()
    target_compile_options(orrinet-flags INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Wshadow
        $<$<BOOL:${ORRINET_WARNINGS_AS_ERRORS}>:-Werror>)
endif()

if(ORRINET_SANITIZE)
    # A target with the property ORRINET_IS_TEST goes without UBSan's checks of its own code, a sixth of what it takes to
    # compile: what is tried is the program.
    target_compile_options(orrinet-flags INTERFACE
        -fsanitize=address $<$<NOT:$<BOOL:$<TARGET_PROPERTY:ORRINET_IS_TEST>>>:-fsanitize=undefined>
        -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(orrinet-flags INTERFACE -fsanitize=address,undefined)
endif()

if(ORRINET_FUZZERS)
    target_compile_options(orrinet-flags INTERFACE
        -fsanitize=fuzzer-no-link,address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(orrinet-flags INTERFACE -fsanitize=address,undefined)
endif()

# Each test program holds the whole library, and LLVM's linker links it in a quarter of the time. What is made to be
# installed is left to the system's own.
find_program(ORRINET_LLD ld.lld)
mark_as_advanced(ORRINET_LLD)
if(ORRINET_LLD AND CMAKE_BUILD_TYPE STREQUAL "Debug" AND NOT APPLE AND NOT MSVC)
    target_link_options(orrinet-flags INTERFACE -fuse-ld=lld)
endif()
