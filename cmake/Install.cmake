# What `cmake --install` puts into a prefix: the library and its desktop platform library, public headers, a CMake
# package (vxsubtitle::vxsubtitle, and vxsubtitle::platform for who draws on a desktop) and pkg-config files of the same
# two. All of them find each other by their places, so the prefix may be chosen at installation and moved later.

include_guard(GLOBAL)
include(CMakePackageConfigHelpers)

set(vxsubtitle_config_dir ${CMAKE_INSTALL_LIBDIR}/cmake/vxsubtitle)
set(vxsubtitle_include_dir ${CMAKE_INSTALL_INCLUDEDIR}/vxsubtitle)

install(TARGETS vxsubtitle vxsubtitle_platform EXPORT vxsubtitleTargets LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
if(TARGET vxsubtitle_7z)
    install(TARGETS vxsubtitle_7z EXPORT vxsubtitleTargets LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
endif()
install(FILES ${VXSUBTITLE_PUBLIC_HEADERS} DESTINATION ${vxsubtitle_include_dir}/subtitle)
install(DIRECTORY platform/host/include/ DESTINATION ${vxsubtitle_include_dir}/platform)

install(EXPORT vxsubtitleTargets NAMESPACE vxsubtitle:: DESTINATION ${vxsubtitle_config_dir})
configure_package_config_file(cmake/vxsubtitleConfig.cmake.in vxsubtitleConfig.cmake
    INSTALL_DESTINATION ${vxsubtitle_config_dir})
write_basic_package_version_file(vxsubtitleConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/vxsubtitleConfig.cmake ${CMAKE_CURRENT_BINARY_DIR}/vxsubtitleConfigVersion.cmake
    DESTINATION ${vxsubtitle_config_dir})

set(pkgconfig_dir ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig)
file(RELATIVE_PATH vxsubtitle_pc_to_prefix ${pkgconfig_dir} ${CMAKE_INSTALL_PREFIX})
file(RELATIVE_PATH vxsubtitle_pc_to_include ${pkgconfig_dir} ${CMAKE_INSTALL_FULL_INCLUDEDIR})
foreach(name IN ITEMS vxsubtitle vxsubtitle_platform)
    configure_file(cmake/${name}.pc.in ${name}.pc @ONLY)
    install(FILES ${CMAKE_CURRENT_BINARY_DIR}/${name}.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endforeach()
