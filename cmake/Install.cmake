# What `cmake --install` puts into a prefix: the library and its desktop platform library, public headers, a CMake
# package (vxsubtitle::vxsubtitle) and a pkg-config file.

include_guard(GLOBAL)
include(CMakePackageConfigHelpers)

set(vxsubtitle_config_dir ${CMAKE_INSTALL_LIBDIR}/cmake/vxsubtitle)
set(vxsubtitle_include_dir ${CMAKE_INSTALL_INCLUDEDIR}/vxsubtitle)

install(TARGETS vxsubtitle vxsubtitle_platform EXPORT vxsubtitleTargets LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(FILES ${VXSUBTITLE_PUBLIC_HEADERS} DESTINATION ${vxsubtitle_include_dir}/subtitle)
install(DIRECTORY platform/host/include/ DESTINATION ${vxsubtitle_include_dir}/platform)

install(EXPORT vxsubtitleTargets NAMESPACE vxsubtitle:: DESTINATION ${vxsubtitle_config_dir})
configure_package_config_file(cmake/vxsubtitleConfig.cmake.in vxsubtitleConfig.cmake
    INSTALL_DESTINATION ${vxsubtitle_config_dir})
write_basic_package_version_file(vxsubtitleConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/vxsubtitleConfig.cmake ${CMAKE_CURRENT_BINARY_DIR}/vxsubtitleConfigVersion.cmake
    DESTINATION ${vxsubtitle_config_dir})
configure_file(cmake/vxsubtitle.pc.in vxsubtitle.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/vxsubtitle.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
