# Installs the libraries, the public headers, the tarvik program, a CMake
# package (find_package(tarvik CONFIG): tarvik::host, tarvik::tarvik,
# tarvik::viewer, tarvik::c) and pkg-config files (tarvik-host, tarvik,
# tarvik-viewer, tarvik-c).
include(CMakePackageConfigHelpers)

set(TARVIK_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/tarvik)

# Installed libraries find each other, and the program finds them, wherever
# the prefix is.
set_target_properties(tarvikhost tarvik tarvikviewer tarvik_c PROPERTIES INSTALL_RPATH "$ORIGIN")
if(TARGET tarvik_cli)
  set_target_properties(tarvik_cli PROPERTIES INSTALL_RPATH "$ORIGIN/../${CMAKE_INSTALL_LIBDIR}")
endif()

install(TARGETS tarvikhost tarvik tarvikviewer tarvik_c EXPORT tarvikTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
if(TARGET tarvik_cli)
  install(TARGETS tarvik_cli RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
endif()

# Public headers: the seal library's and the document library's, and the host
# platform's (the API's types are host types), without the host's internal
# headers: those that say "Internal to the ..." at their top need
# third-party headers or are not part of its interface.
install(DIRECTORY include/tarvik DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
  FILES_MATCHING PATTERN "*.h")
file(GLOB_RECURSE TARVIK_HOST_HEADERS RELATIVE ${PROJECT_SOURCE_DIR}/host
  CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/host/*.h)
foreach(header IN LISTS TARVIK_HOST_HEADERS)
  file(STRINGS host/${header} top LIMIT_COUNT 6)
  string(FIND "${top}" "Internal to the" internal)
  if(internal EQUAL -1)
    get_filename_component(folder ${header} DIRECTORY)
    install(FILES host/${header} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/tarvik/host/${folder})
  endif()
endforeach()

install(EXPORT tarvikTargets NAMESPACE tarvik:: DESTINATION ${TARVIK_CMAKE_DIR})
configure_package_config_file(cmake/tarvikConfig.cmake.in
  ${CMAKE_CURRENT_BINARY_DIR}/tarvikConfig.cmake INSTALL_DESTINATION ${TARVIK_CMAKE_DIR})
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/tarvikConfigVersion.cmake
  COMPATIBILITY SameMinorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/tarvikConfig.cmake
  ${CMAKE_CURRENT_BINARY_DIR}/tarvikConfigVersion.cmake DESTINATION ${TARVIK_CMAKE_DIR})

# pkg-config files find the prefix from their own place, so that an install
# moved or made with --prefix still works.
string(REGEX MATCHALL "[^/]+" TARVIK_PC_PARTS "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
set(TARVIK_PC_PREFIX "\${pcfiledir}")
foreach(part IN LISTS TARVIK_PC_PARTS)
  string(APPEND TARVIK_PC_PREFIX "/..")
endforeach()
foreach(pc tarvik-host tarvik tarvik-viewer tarvik-c)
  configure_file(cmake/${pc}.pc.in ${CMAKE_CURRENT_BINARY_DIR}/${pc}.pc @ONLY)
  install(FILES ${CMAKE_CURRENT_BINARY_DIR}/${pc}.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endforeach()
