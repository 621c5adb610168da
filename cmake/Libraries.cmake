# The three libraries that the program stands on. On Windows they are the static ones of scripts/windows-libs, and the
# JSON library, which is headers alone, is taken from this machine's packages: the compiler is shown that folder only,
# since the machine's other headers belong to another system.
find_package(Threads REQUIRED)
if(WIN32)
    set(OPENSSL_USE_STATIC_LIBS ON)
    set(OPENSSL_ROOT_DIR ${BURSARIA_WINDOWS_LIBS})
    find_package(OpenSSL REQUIRED COMPONENTS Crypto SSL)
    find_package(CURL CONFIG REQUIRED)

    find_path(NLOHMANN_JSON_HEADERS nlohmann/json.hpp PATHS /usr/include NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH REQUIRED)
    file(MAKE_DIRECTORY ${CMAKE_BINARY_DIR}/include)
    file(CREATE_LINK ${NLOHMANN_JSON_HEADERS}/nlohmann ${CMAKE_BINARY_DIR}/include/nlohmann SYMBOLIC)
    add_library(nlohmann_json::nlohmann_json INTERFACE IMPORTED)
    target_include_directories(nlohmann_json::nlohmann_json INTERFACE ${CMAKE_BINARY_DIR}/include)
else()
    find_package(CURL REQUIRED)
    find_package(OpenSSL REQUIRED COMPONENTS Crypto)
    find_package(nlohmann_json REQUIRED)
endif()
