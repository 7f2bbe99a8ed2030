# SPDX-License-Identifier: GPL-3.0-or-later
# The icon of the program's windows is part of the program: a source of the
# bytes of its pictures is written while the program is built.

# scripts/icons draws them.
set(VORPEN_ICON_SIZES 16 32 48 64 256)
set(VORPEN_ICON_SOURCE ${CMAKE_BINARY_DIR}/icon_pictures.cpp)

set(icon_files)
foreach(size IN LISTS VORPEN_ICON_SIZES)
    list(APPEND icon_files ${CMAKE_SOURCE_DIR}/packaging/icons/vorpen-${size}.png)
endforeach()
add_custom_command(OUTPUT ${VORPEN_ICON_SOURCE}
    COMMAND ${CMAKE_COMMAND} -D "FILES=${icon_files}" -D OUTPUT=${VORPEN_ICON_SOURCE}
            -P ${CMAKE_SOURCE_DIR}/cmake/write_pictures.cmake
    DEPENDS ${icon_files} ${CMAKE_SOURCE_DIR}/cmake/write_pictures.cmake VERBATIM)
