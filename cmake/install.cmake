# How other projects find the installed libraries: a package for CMake, and one for pkg-config.
include(CMakePackageConfigHelpers)

set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/Ksntfx)
# As with the number that the loader asks for, every minor version stands for itself before version 1.
set(compatibility SameMajorVersion)
if(PROJECT_VERSION_MAJOR EQUAL 0)
  set(compatibility SameMinorVersion)
endif()
configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/KsntfxConfig.cmake.in
                              ${PROJECT_BINARY_DIR}/cmake/KsntfxConfig.cmake INSTALL_DESTINATION ${package_folder})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/cmake/KsntfxConfigVersion.cmake
                                 COMPATIBILITY ${compatibility})
install(EXPORT KsntfxTargets NAMESPACE Ksntfx:: DESTINATION ${package_folder})
install(FILES ${PROJECT_BINARY_DIR}/cmake/KsntfxConfig.cmake ${PROJECT_BINARY_DIR}/cmake/KsntfxConfigVersion.cmake
        DESTINATION ${package_folder})

set(pkgconfig_folder ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig)
file(RELATIVE_PATH from_pkgconfig_to_prefix ${pkgconfig_folder} ${CMAKE_INSTALL_PREFIX})
string(REGEX REPLACE "/$" "" from_pkgconfig_to_prefix "${from_pkgconfig_to_prefix}")
file(RELATIVE_PATH from_pkgconfig_to_include ${pkgconfig_folder} ${CMAKE_INSTALL_FULL_INCLUDEDIR})
function(install_pkgconfig library description requires)
  configure_file(cmake/library.pc.in ${PROJECT_BINARY_DIR}/pkgconfig/${library}.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/pkgconfig/${library}.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endfunction()
install_pkgconfig(kskernel "The imaging framework under libksntfx: files, memory, bitmaps, painting" "")
install_pkgconfig(ksntfx "${PROJECT_DESCRIPTION}" kskernel)
