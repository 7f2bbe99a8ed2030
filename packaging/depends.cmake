# SPDX-License-Identifier: GPL-3.0-or-later
# Read by CPack before it packs: adds the libraries that the programs are linked
# with to what the package depends on. CPack's own way (SHLIBDEPS) asks what each
# of the files is, half a thousand of them, which takes longer than all else.

find_program(SHLIBDEPS dpkg-shlibdeps)
if(NOT SHLIBDEPS)
    message(FATAL_ERROR "A Debian package needs dpkg-shlibdeps, from the Debian package dpkg-dev.")
endif()
set(folder ${CPACK_PACKAGE_DIRECTORY}/depends)
# The tool wants to stand in a source package.
file(WRITE ${folder}/debian/control "")
execute_process(COMMAND ${SHLIBDEPS} -O ${CPACK_VORPEN_PROGRAMS} WORKING_DIRECTORY ${folder}
                OUTPUT_VARIABLE depends ERROR_VARIABLE fault RESULT_VARIABLE status OUTPUT_STRIP_TRAILING_WHITESPACE)
if(status OR NOT depends MATCHES "^shlibs:Depends=")
    message(FATAL_ERROR "${fault}")
endif()
string(REPLACE "shlibs:Depends=" "" depends "${depends}")
set(CPACK_DEBIAN_PACKAGE_DEPENDS "${depends}, ${CPACK_DEBIAN_PACKAGE_DEPENDS}")
