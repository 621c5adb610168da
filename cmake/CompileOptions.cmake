# Warnings are errors, and every executable is hardened; the sanitizers come from one cache variable.
add_library(bursaria_options INTERFACE)
target_compile_options(bursaria_options INTERFACE
    -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror)
# GCC 12's optimiser warns of copies inside its own string and vector that cannot happen (PR 105651 and its kin). The
# sanitizer builds find what these warnings are meant for.
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    target_compile_options(bursaria_options INTERFACE
        -Wno-restrict -Wno-array-bounds -Wno-stringop-overflow -Wno-stringop-overread)
endif()
# The EC_KEY and ECDSA_SIG families are used on purpose and are marked as old in OpenSSL 3.
target_compile_definitions(bursaria_options INTERFACE OPENSSL_SUPPRESS_DEPRECATED)
target_include_directories(bursaria_options INTERFACE ${CMAKE_SOURCE_DIR}/src ${CMAKE_SOURCE_DIR})

if(NOT BURSARIA_SANITIZE STREQUAL "")
    if(BURSARIA_SANITIZE STREQUAL "address")
        set(sanitize_flags -fsanitize=address,undefined -fno-sanitize-recover=undefined -fno-omit-frame-pointer)
    elseif(BURSARIA_SANITIZE STREQUAL "thread")
        set(sanitize_flags -fsanitize=thread -fno-omit-frame-pointer)
    elseif(BURSARIA_SANITIZE STREQUAL "fuzz")
        set(sanitize_flags
            -fsanitize=fuzzer-no-link,address,undefined -fno-sanitize-recover=undefined -fno-omit-frame-pointer)
    else()
        message(FATAL_ERROR
            "BURSARIA_SANITIZE must be empty, 'address', 'thread' or 'fuzz', not '${BURSARIA_SANITIZE}'")
    endif()
    target_compile_options(bursaria_options INTERFACE ${sanitize_flags})
    target_link_options(bursaria_options INTERFACE ${sanitize_flags})
else()
    target_compile_options(bursaria_options INTERFACE -fstack-protector-strong)
    target_compile_definitions(bursaria_options INTERFACE $<$<CONFIG:Release>:_FORTIFY_SOURCE=2>)
    if(WIN32)
        # One file without libraries beside it, placed anew at every start; the stack guard is a library here.
        target_compile_definitions(bursaria_options INTERFACE
            UNICODE _UNICODE WIN32_LEAN_AND_MEAN NOMINMAX _WIN32_WINNT=0x0A00 WINVER=0x0A00)
        target_link_options(bursaria_options INTERFACE
            -static -fstack-protector-strong -Wl,--dynamicbase,--nxcompat,--high-entropy-va)
    else()
        set(CMAKE_POSITION_INDEPENDENT_CODE ON)
        target_link_options(bursaria_options INTERFACE -pie -Wl,-z,relro,-z,now)
        include(CheckCXXCompilerFlag)
        foreach(flag -fcf-protection=full -fstack-clash-protection)
            string(MAKE_C_IDENTIFIER "COMPILER_KNOWS${flag}" known)
            check_cxx_compiler_flag(${flag} ${known})
            if(${known})
                target_compile_options(bursaria_options INTERFACE $<$<CONFIG:Release>:${flag}>)
            endif()
        endforeach()
    endif()
endif()

find_program(CCACHE_PROGRAM ccache)
if(CCACHE_PROGRAM)
    set(CMAKE_CXX_COMPILER_LAUNCHER ${CCACHE_PROGRAM})
endif()
