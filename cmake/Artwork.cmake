# The pictures of the window program, rendered from their drawings in artwork/ by scripts/artwork.
set(BURSARIA_ARTWORK_FOLDER ${CMAKE_BINARY_DIR}/artwork)
set(BURSARIA_ARTWORK)
foreach(picture bursaria.ico banner.png seal.png meadow.png)
    list(APPEND BURSARIA_ARTWORK ${BURSARIA_ARTWORK_FOLDER}/${picture})
endforeach()
add_custom_command(OUTPUT ${BURSARIA_ARTWORK}
    COMMAND ${CMAKE_SOURCE_DIR}/scripts/artwork ${BURSARIA_ARTWORK_FOLDER}
    DEPENDS ${CMAKE_SOURCE_DIR}/scripts/artwork ${CMAKE_SOURCE_DIR}/artwork/icon.svg
            ${CMAKE_SOURCE_DIR}/artwork/icon-small.svg ${CMAKE_SOURCE_DIR}/artwork/banner.svg
            ${CMAKE_SOURCE_DIR}/artwork/meadow.svg
    VERBATIM)
