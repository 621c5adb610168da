# The settings step: the chosen JSON file becomes one generated source, or stops the configuration with what is wrong.
# The step is a small program of its own, built for the machine that builds, also when the target is another system.
cmake_path(ABSOLUTE_PATH BURSARIA_SETTINGS BASE_DIRECTORY ${CMAKE_SOURCE_DIR} NORMALIZE
    OUTPUT_VARIABLE settings_file)
if(NOT EXISTS ${settings_file})
    message(FATAL_ERROR "Settings file ${settings_file} does not exist")
endif()

find_program(BUILD_MACHINE_CXX NAMES g++ c++ clang++ REQUIRED NO_CMAKE_FIND_ROOT_PATH)
set(settings_step ${CMAKE_BINARY_DIR}/generated/settings_step)
set(settings_step_sources
    ${CMAKE_SOURCE_DIR}/cmake/settings_step.cpp ${CMAKE_SOURCE_DIR}/src/wallet/address.cpp
    ${CMAKE_SOURCE_DIR}/src/wallet/hashes.cpp ${CMAKE_SOURCE_DIR}/src/wallet/secret.cpp
    ${CMAKE_SOURCE_DIR}/src/base/hex.cpp ${CMAKE_SOURCE_DIR}/src/base/text.cpp)
set(settings_step_newest FALSE)
if(EXISTS ${settings_step})
    set(settings_step_newest TRUE)
    foreach(source ${settings_step_sources})
        if(${source} IS_NEWER_THAN ${settings_step})
            set(settings_step_newest FALSE)
        endif()
    endforeach()
endif()
if(NOT settings_step_newest)
    file(MAKE_DIRECTORY ${CMAKE_BINARY_DIR}/generated)
    execute_process(
        COMMAND ${BUILD_MACHINE_CXX} -std=c++20 -O0 -I${CMAKE_SOURCE_DIR}/src ${settings_step_sources} -lcrypto
                -o ${settings_step}
        RESULT_VARIABLE settings_step_result ERROR_VARIABLE settings_step_errors)
    if(NOT settings_step_result EQUAL 0)
        message(FATAL_ERROR "The settings step does not build:\n${settings_step_errors}")
    endif()
endif()

set(BURSARIA_SETTINGS_SOURCE ${CMAKE_BINARY_DIR}/generated/build_settings.cpp)
execute_process(COMMAND ${settings_step} ${settings_file} ${BURSARIA_SETTINGS_SOURCE}.new
    RESULT_VARIABLE settings_result ERROR_VARIABLE settings_errors ERROR_STRIP_TRAILING_WHITESPACE)
if(NOT settings_result EQUAL 0)
    message(FATAL_ERROR "Settings: ${settings_errors}")
endif()
file(COPY_FILE ${BURSARIA_SETTINGS_SOURCE}.new ${BURSARIA_SETTINGS_SOURCE} ONLY_IF_DIFFERENT)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${settings_file} ${settings_step_sources})
message(STATUS "Settings: ${settings_file}")
