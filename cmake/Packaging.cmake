# cmake --install, and cpack's Debian packages: orbntf, liborbntf, liborbntf-core and liborbntf-dev.
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
  DEPENDS make_man orbntf_tool ${header} VERBATIM)
add_custom_target(manual ALL DEPENDS ${made}/orbntf.1)
install(TARGETS orbntf_tool COMPONENT tool)
install(FILES ${made}/orbntf.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT tool)
install(FILES ${made}/orbntf.h.3 DESTINATION ${CMAKE_INSTALL_MANDIR}/man3 COMPONENT development)
install(FILES ${made}/orbntf.bash DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions RENAME orbntf
  COMPONENT tool)
install(FILES ${made}/_orbntf DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/vendor-completions COMPONENT tool)
install(FILES ${made}/orbntf.fish DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d COMPONENT tool)
foreach(part tool library core development)
  set(package_tool orbntf)
  set(package_library liborbntf${PROJECT_VERSION_MAJOR})
  set(package_core liborbntf-core${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR})
  set(package_development liborbntf-dev)
  install(FILES LICENSE DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${package_${part}} RENAME copyright COMPONENT ${part})
endforeach()

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_CONTACT "the orbntf authors <orbntf@localhost>")
set(CPACK_PACKAGE_VENDOR "the orbntf authors")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "NITF 2.1 and NSIF files: show, draw, change, extend and save")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_COMPONENTS_ALL tool library core development)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)
set(CPACK_DEBIAN_TOOL_PACKAGE_NAME orbntf)
set(CPACK_DEBIAN_TOOL_PACKAGE_SECTION graphics)
set(CPACK_DEBIAN_TOOL_PACKAGE_DEPENDS "proj-data")
set(CPACK_DEBIAN_LIBRARY_PACKAGE_NAME liborbntf${PROJECT_VERSION_MAJOR})
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_RECOMMENDS "fonts-liberation2")
set(CPACK_DEBIAN_CORE_PACKAGE_NAME liborbntf-core${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR})
set(CPACK_DEBIAN_CORE_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_CORE_PACKAGE_DEPENDS "proj-data")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME liborbntf-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_COMPONENT_TOOL_DEPENDS library)
set(CPACK_COMPONENT_DEVELOPMENT_DEPENDS library core)
set(CPACK_STRIP_FILES ON)
include(CPack)
