# cmake --install build --prefix P, and the Debian package (cpack -G DEB).
#
# The programs, their helper, the picture module, the runtime and readme.txt
# keep one folder installed as in the build (P/lib/tarvoke): the programs
# find what they load beside their own executable, through the links in
# P/bin as well (/proc/self/exe names the target). Installed, that folder is
# not writable, so the windows keep settings.dat under $XDG_CONFIG_HOME.

set(TARVOKE_PROGRAM_FOLDER lib/tarvoke)
# The day of the release that PROJECT_VERSION names.
set(TARVOKE_RELEASE_DATE 2026-11-24)
set(TARVOKE_MAINTAINER "Tarvoke Developers <maintainers@tarvoke.org>" CACHE STRING
    "The maintainer named by the Debian package")
set(TARVOKE_APPSTREAM_ID org.tarvoke.Tarvoke)

# Folders readable by all whatever the umask of the one who installs.
set(CMAKE_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(packaging ${CMAKE_SOURCE_DIR}/packaging)
set(generated ${CMAKE_BINARY_DIR}/packaging)
file(MAKE_DIRECTORY ${generated})

install(TARGETS tarvoke tarvoke-play tarvoke-message RUNTIME DESTINATION ${TARVOKE_PROGRAM_FOLDER})
install(TARGETS tarvoke-pictures LIBRARY DESTINATION ${TARVOKE_PROGRAM_FOLDER})
install(FILES ${CMAKE_SOURCE_DIR}/docs/readme.txt DESTINATION ${TARVOKE_PROGRAM_FOLDER})
# The runtime that Compile and tarvoke-play --compile copy.
install(PROGRAMS ${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/Compiler.dll DESTINATION ${TARVOKE_PROGRAM_FOLDER})

# Relative links, so that the installed tree can move (a DESTDIR, a package).
foreach(program tarvoke tarvoke-play)
  file(CREATE_LINK ../${TARVOKE_PROGRAM_FOLDER}/${program} ${generated}/${program} SYMBOLIC)
  install(FILES ${generated}/${program} DESTINATION bin)
endforeach()

# The desktop entry, the icon and the AppStream metainfo.
install(FILES ${packaging}/tarvoke.desktop DESTINATION share/applications)
install(FILES ${packaging}/tarvoke.svg DESTINATION share/icons/hicolor/scalable/apps)
configure_file(${packaging}/tarvoke.metainfo.xml.in ${generated}/${TARVOKE_APPSTREAM_ID}.metainfo.xml @ONLY)
install(FILES ${generated}/${TARVOKE_APPSTREAM_ID}.metainfo.xml DESTINATION share/metainfo)

# The PNG icons are drawn from the SVG by rsvg-convert (librsvg2-bin); a
# build without it installs the SVG alone, which every current desktop reads.
find_program(RSVG_CONVERT rsvg-convert)
if(RSVG_CONVERT)
  set(icons)
  foreach(size 48 256)
    set(icon ${generated}/icons/${size}/tarvoke.png)
    add_custom_command(OUTPUT ${icon}
      COMMAND ${CMAKE_COMMAND} -E make_directory ${generated}/icons/${size}
      COMMAND ${RSVG_CONVERT} -w ${size} -h ${size} ${packaging}/tarvoke.svg -o ${icon}
      DEPENDS ${packaging}/tarvoke.svg VERBATIM)
    list(APPEND icons ${icon})
    install(FILES ${icon} DESTINATION share/icons/hicolor/${size}x${size}/apps)
  endforeach()
  add_custom_target(tarvoke-icons ALL DEPENDS ${icons})
else()
  message(STATUS "rsvg-convert not found (librsvg2-bin): the PNG icons are left out, the SVG icon is installed")
endif()

# Manual pages, compressed as Debian installs them: tarvoke-play(1) and
# tarvoke(1) written by hand, tarvoke(5) made from the README's sections on
# the language, so that the two never differ.
find_package(Python3 REQUIRED COMPONENTS Interpreter)
find_program(GZIP gzip REQUIRED)
set(pages)
foreach(page tarvoke-play.1 tarvoke.1)
  configure_file(${packaging}/man/${page} ${generated}/man/${page} @ONLY)
endforeach()
add_custom_command(OUTPUT ${generated}/man/tarvoke.5
  COMMAND ${Python3_EXECUTABLE} ${packaging}/man/readme2man.py ${CMAKE_SOURCE_DIR}/README.md
          ${generated}/man/tarvoke.5 ${PROJECT_VERSION}
  DEPENDS ${packaging}/man/readme2man.py ${CMAKE_SOURCE_DIR}/README.md VERBATIM)
foreach(page tarvoke-play.1 tarvoke.1 tarvoke.5)
  string(REGEX REPLACE ".*\\.([0-9])$" "\\1" section ${page})
  # -n: no name or time stamp inside, so that the package is reproducible.
  add_custom_command(OUTPUT ${generated}/man/${page}.gz
    COMMAND ${GZIP} -9nf -k ${generated}/man/${page}
    DEPENDS ${generated}/man/${page} VERBATIM)
  list(APPEND pages ${generated}/man/${page}.gz)
  install(FILES ${generated}/man/${page}.gz DESTINATION share/man/man${section})
endforeach()
add_custom_target(tarvoke-manpages ALL DEPENDS ${pages})

install(FILES ${packaging}/tarvoke-play.bash DESTINATION share/bash-completion/completions RENAME tarvoke-play)

# The Debian package: cpack -G DEB in the build folder makes
# tarvoke_VERSION_amd64.deb, its dependencies found by dpkg-shlibdeps.
execute_process(COMMAND date -u -R -d "${TARVOKE_RELEASE_DATE} 12:00"
  OUTPUT_VARIABLE TARVOKE_RELEASE_DATE_RFC2822 OUTPUT_STRIP_TRAILING_WHITESPACE)
configure_file(${packaging}/debian/changelog.in ${generated}/debian/changelog @ONLY)
add_custom_command(OUTPUT ${generated}/debian/changelog.gz
  COMMAND ${GZIP} -9nf -k ${generated}/debian/changelog
  DEPENDS ${generated}/debian/changelog VERBATIM)
add_custom_target(tarvoke-changelog ALL DEPENDS ${generated}/debian/changelog.gz)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME tarvoke)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "${TARVOKE_MAINTAINER}")
# Xvfb for --headless.
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "xvfb")
set(CPACK_DEBIAN_PACKAGE_SUGGESTS "openbox")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "record and play back the mouse and the keyboard")
set(CPACK_PACKAGE_DESCRIPTION
  "Tarvoke automates the Linux desktop. It records what you do with the mouse\nand the keyboard as a script in its own small language, plays scripts back\nat the recorded speed or scaled, lets scripts look at the screen and act on\nwhat they find. tarvoke-play runs scripts from the command line, also\nheadless on a private virtual screen (Xvfb), many at once.")
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
install(FILES ${packaging}/debian/copyright ${generated}/debian/changelog.gz DESTINATION share/doc/tarvoke)
install(FILES ${packaging}/debian/lintian-overrides DESTINATION share/lintian/overrides RENAME tarvoke)
include(CPack)
