# What is built is hardened, and the check that says so can fail.
if(BURSARIA_SANITIZE STREQUAL "")
    set(check_hardening ${CMAKE_SOURCE_DIR}/scripts/check-hardening $<$<NOT:$<CONFIG:Release>>:--debug>)
    foreach(program bursaria-console bursaria)
        if(TARGET ${program})
            add_test(NAME Hardening.Of_${program} COMMAND "${check_hardening}" $<TARGET_FILE:${program}>
                COMMAND_EXPAND_LISTS)
        endif()
    endforeach()
    if(NOT WIN32)
        file(CONFIGURE OUTPUT ${CMAKE_BINARY_DIR}/generated/unhardened.cpp CONTENT "int main() {}")
        add_executable(unhardened ${CMAKE_BINARY_DIR}/generated/unhardened.cpp)
        target_link_options(unhardened PRIVATE -no-pie -Wl,-z,execstack,-z,norelro,-z,lazy)
        add_test(NAME Hardening.IsMissedWhereItIsNot COMMAND "${check_hardening}" $<TARGET_FILE:unhardened>
            COMMAND_EXPAND_LISTS)
        set_tests_properties(Hardening.IsMissedWhereItIsNot PROPERTIES PASS_REGULAR_EXPRESSION
            "no PIE.*no read-only.*bound late.*stack can be executed.*no stack protection")
    endif()
endif()
