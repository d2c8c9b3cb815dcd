# cmake --install, and cpack's Debian packages: the tool, both libraries, their headers, Python, the desktop.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

# One search path for the build tree, where everything lies in one folder, and for the installed one: a path that
# is changed when it is installed is padded in the build tree with empty elements, which stand for wherever the
# program is started.
file(RELATIVE_PATH libraries ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR})
set(public orbntf)
if(ORBNTF_CORE)
  list(APPEND public orbntf_core)
  set_target_properties(orbntf_tool PROPERTIES INSTALL_RPATH "$ORIGIN/${libraries};$ORIGIN")
  if(PROJECT_IS_TOP_LEVEL)
    set_target_properties(orbntf_tool PROPERTIES BUILD_WITH_INSTALL_RPATH ON)
  endif()
endif()
set_target_properties(${public} hostkit PROPERTIES INSTALL_RPATH "$ORIGIN")
if(PROJECT_IS_TOP_LEVEL)
  set_target_properties(${public} hostkit PROPERTIES BUILD_WITH_INSTALL_RPATH ON)
endif()
foreach(library ${public})
  target_include_directories(${library} INTERFACE $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>
  $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include>)
endforeach()
target_link_libraries(orbntf INTERFACE hostkit)

if(NOT ORBNTF_INSTALL)
  return()
endif()
if(ORBNTF_STATIC_LIBRARY)
  set_target_properties(orbntf_static PROPERTIES OUTPUT_NAME orbntf EXPORT_NAME static)
  target_include_directories(orbntf_static INTERFACE $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>
    $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include>)
  install(TARGETS orbntf_static orbntf_host EXPORT orbntf ARCHIVE COMPONENT development)
endif()

install(TARGETS orbntf hostkit EXPORT orbntf
  LIBRARY COMPONENT library NAMELINK_COMPONENT development)
if(ORBNTF_CORE)
  install(TARGETS orbntf_core EXPORT orbntf LIBRARY COMPONENT core NAMELINK_COMPONENT development)
endif()
install(EXPORT orbntf NAMESPACE orbntf:: FILE orbntf-targets.cmake
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/orbntf COMPONENT development)
configure_package_config_file(cmake/orbntf-config.cmake.in orbntf-config.cmake
  INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/orbntf)
write_basic_package_version_file(orbntf-config-version.cmake COMPATIBILITY SameMajorVersion)
# The file finds its prefix from its own place, so that the installed tree can be moved.
file(RELATIVE_PATH prefix_from_pc ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
configure_file(cmake/orbntf.pc.in orbntf.pc @ONLY)
set(pkgconfig ${PROJECT_BINARY_DIR}/orbntf.pc)
if(ORBNTF_CORE)
  configure_file(cmake/orbntf-core.pc.in orbntf-core.pc @ONLY)
  list(APPEND pkgconfig ${PROJECT_BINARY_DIR}/orbntf-core.pc)
  install(FILES include/orbntf/core.hpp DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/orbntf COMPONENT development)
endif()
install(FILES ${PROJECT_BINARY_DIR}/orbntf-config.cmake ${PROJECT_BINARY_DIR}/orbntf-config-version.cmake
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/orbntf COMPONENT development)
install(FILES ${pkgconfig} DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)
install(FILES include/orbntf/orbntf.h include/orbntf/orbntf.hpp include/orbntf/host.h include/orbntf/platform.h
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/orbntf COMPONENT development)

if(NOT ORBNTF_CORE)
  return()
endif()
# What the tool says of itself, and the header, as manual pages; completions.
set(made ${PROJECT_BINARY_DIR}/made)
set(header ${PROJECT_SOURCE_DIR}/include/orbntf/orbntf.h)
add_custom_command(OUTPUT ${made}/orbntf.1 ${made}/orbntf.h.3 ${made}/orbntf.bash ${made}/_orbntf ${made}/orbntf.fish
  COMMAND ${CMAKE_COMMAND} -E make_directory ${made}
  COMMAND make_man tool > ${made}/orbntf.1
  COMMAND make_man header ${header} > ${made}/orbntf.h.3
  COMMAND orbntf_tool completion bash > ${made}/orbntf.bash
  COMMAND orbntf_tool completion zsh > ${made}/_orbntf
  COMMAND orbntf_tool completion fish > ${made}/orbntf.fish
  COMMAND ${CMAKE_COMMAND} -E rm -rf ${made}/man1
  COMMAND ${CMAKE_COMMAND} -E make_directory ${made}/man1
  COMMAND make_man commands ${made}/man1
  COMMAND gzip -9nrf ${made}/man1
  COMMAND gzip -9nkf ${made}/orbntf.1 ${made}/orbntf.h.3
  DEPENDS make_man orbntf_tool ${header} VERBATIM)
add_custom_target(manual ALL DEPENDS ${made}/orbntf.1)
install(TARGETS orbntf_tool COMPONENT tool)
install(FILES ${made}/orbntf.1.gz DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT tool)
install(DIRECTORY ${made}/man1 DESTINATION ${CMAKE_INSTALL_MANDIR} COMPONENT tool)
install(FILES ${made}/orbntf.h.3.gz DESTINATION ${CMAKE_INSTALL_MANDIR}/man3 COMPONENT development)
install(FILES ${made}/orbntf.bash DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions RENAME orbntf
  COMPONENT tool)
install(FILES ${made}/_orbntf DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/vendor-completions COMPONENT tool)
install(FILES ${made}/orbntf.fish DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d COMPONENT tool)
# What a desktop takes: the type of files, thumbnails, an entry that opens a page.
set(desktop ${PROJECT_SOURCE_DIR}/desktop)
install(PROGRAMS ${desktop}/orbntf-open DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT desktop)
install(FILES ${desktop}/orbntf.xml DESTINATION ${CMAKE_INSTALL_DATADIR}/mime/packages COMPONENT desktop)
install(FILES ${desktop}/orbntf.thumbnailer DESTINATION ${CMAKE_INSTALL_DATADIR}/thumbnailers COMPONENT desktop)
install(FILES ${desktop}/org.orbntf.orbntf.desktop DESTINATION ${CMAKE_INSTALL_DATADIR}/applications COMPONENT desktop)
install(FILES ${desktop}/org.orbntf.orbntf.metainfo.xml DESTINATION ${CMAKE_INSTALL_DATADIR}/metainfo COMPONENT desktop)
set(icons ${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable)
install(FILES ${desktop}/orbntf.svg DESTINATION ${icons}/apps COMPONENT desktop)
install(FILES ${desktop}/orbntf.svg DESTINATION ${icons}/mimetypes RENAME application-vnd.nitf.svg COMPONENT desktop)

set(parts tool library core development desktop)
if(TARGET orbntf_python)
  list(APPEND parts python)
endif()
# Pages for people and programs.
set(docs ${PROJECT_SOURCE_DIR}/docs)
install(FILES ${docs}/tool.md ${docs}/records.md ${docs}/scale.md ${docs}/info.schema.json CHANGELOG.md
  DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/orbntf COMPONENT tool)
install(FILES ${docs}/core.md ${docs}/abi.md DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/liborbntf-dev COMPONENT development)
install(DIRECTORY ${docs}/example DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/liborbntf-dev/examples COMPONENT development)
foreach(part ${parts})
  set(package_tool orbntf)
  set(package_desktop orbntf-desktop)
  set(package_python python3-orbntf)
  set(package_library liborbntf${PROJECT_VERSION_MAJOR})
  set(package_core liborbntf-core${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR})
  set(package_development liborbntf-dev)
  set(package ${package_${part}})
  set(pages ${made}/debian/${package})
  configure_file(cmake/debian/changelog.in ${pages}/changelog @ONLY)
  file(WRITE ${pages}/overrides
    "# The authors have no public address.\n${package}: bogus-mail-host\n${package}: bogus-mail-host-in-debian-changelog\n")
  execute_process(COMMAND gzip -9nkf changelog WORKING_DIRECTORY ${pages} COMMAND_ERROR_IS_FATAL ANY)
  install(FILES cmake/debian/copyright ${pages}/changelog.gz DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${package}
    COMPONENT ${part})
  install(FILES ${pages}/overrides DESTINATION ${CMAKE_INSTALL_DATADIR}/lintian/overrides RENAME ${package}
    COMPONENT ${part})
endforeach()

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_CONTACT "the orbntf authors <orbntf@localhost>")
set(CPACK_PACKAGE_VENDOR "the orbntf authors")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "NITF 2.1 and NSIF files: show, draw, change, extend and save")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_COMPONENTS_ALL ${parts})
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)
set(CPACK_DEBIAN_TOOL_PACKAGE_NAME orbntf)
set(CPACK_DEBIAN_TOOL_PACKAGE_SECTION graphics)
set(loaded "libcairo2, proj-data, libproj25, libgeotiff5")  # what is loaded when it is first used
set(CPACK_DEBIAN_TOOL_PACKAGE_DEPENDS "${loaded}")
set(CPACK_DEBIAN_LIBRARY_PACKAGE_NAME liborbntf${PROJECT_VERSION_MAJOR})
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_DEPENDS "libcairo2")
set(CPACK_DEBIAN_LIBRARY_PACKAGE_RECOMMENDS "fonts-liberation2")
set(CPACK_DEBIAN_CORE_PACKAGE_NAME liborbntf-core${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR})
set(CPACK_DEBIAN_CORE_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_CORE_PACKAGE_DEPENDS "${loaded}")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME liborbntf-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DESKTOP_PACKAGE_NAME orbntf-desktop)
set(CPACK_DEBIAN_DESKTOP_PACKAGE_SECTION graphics)
set(CPACK_DEBIAN_DESKTOP_PACKAGE_ARCHITECTURE all)
set(CPACK_DEBIAN_DESKTOP_PACKAGE_DEPENDS "shared-mime-info, xdg-utils")
set(CPACK_DEBIAN_PYTHON_PACKAGE_NAME python3-orbntf)
set(CPACK_DEBIAN_PYTHON_PACKAGE_SECTION python)
if(TARGET orbntf_python)
  math(EXPR next_python "${Python3_VERSION_MINOR} + 1")
  set(CPACK_DEBIAN_PYTHON_PACKAGE_DEPENDS
    "python3 (>= 3.${Python3_VERSION_MINOR}), python3 (<< 3.${next_python}), python3-numpy")
endif()
foreach(part LIBRARY CORE)
  set(CPACK_DEBIAN_${part}_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/cmake/debian/triggers)
endforeach()
set(CPACK_COMPONENT_TOOL_DESCRIPTION "NITF 2.1 and NSIF files on the command line
 Shows, checks, draws, locates, changes and makes files of imagery in the National
 Imagery Transmission Format and the NATO Secondary Imagery Format.")
set(CPACK_COMPONENT_LIBRARY_DESCRIPTION "NITF files as composite images and documents, library
 The filter that imaging toolkits load, and a library in C that opens, inspects,
 changes, extends, draws and saves files.")
set(CPACK_COMPONENT_CORE_DESCRIPTION "NITF files by the published standard, library
 A library in C++ for structure, fields, tagged records, findings, samples in
 windows, pictures, places and changes of files of any size.")
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION "NITF files, headers of the libraries
 Headers, examples and what CMake and pkg-config need for programs with the
 libraries.")
set(CPACK_COMPONENT_DESKTOP_DESCRIPTION "NITF files on desktops
 The type of files, thumbnails, and an entry that opens a page about a file in
 the browser.")
set(CPACK_COMPONENT_PYTHON_DESCRIPTION "NITF files in Python
 Fields, records, samples as arrays of numpy, pictures, findings, places and
 changes of files.")
set(CPACK_COMPONENT_DESKTOP_DEPENDS tool)
set(CPACK_COMPONENT_PYTHON_DEPENDS core)
set(CPACK_COMPONENT_TOOL_DEPENDS library)
set(CPACK_COMPONENT_DEVELOPMENT_DEPENDS library core)
set(CPACK_STRIP_FILES ON)
include(CPack)
