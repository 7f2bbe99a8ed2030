# SPDX-License-Identifier: GPL-3.0-or-later
# cmake -D FILES=... -D OUTPUT=... -P write_pictures.cmake: the bytes of FILES as
# the definition of vorpen::iconPictures.

set(arrays "")
set(rows "")
foreach(file IN LISTS FILES)
    cmake_path(GET file STEM name)
    string(REPLACE "-" "_" name ${name})
    file(READ ${file} bytes HEX)
    string(REGEX REPLACE "(..)" "0x\\1," bytes ${bytes})
    string(APPEND arrays "constexpr unsigned char ${name}[] = {${bytes}};\n")
    string(APPEND rows "    ${name},\n")
endforeach()
file(WRITE ${OUTPUT} "#include \"window/icon.h\"

namespace vorpen {
namespace {

${arrays}
constexpr std::span<const unsigned char> all[] = {
${rows}};

}  // namespace

const std::span<const std::span<const unsigned char>> iconPictures = all;

}  // namespace vorpen
")
