# For a browser: the library, the inspector's parts and the module that a page loads.

include_guard(GLOBAL)
include(cmake/WebLibraries.cmake)
add_subdirectory(platform/web)

add_library(vxsubtitle STATIC ${VXSUBTITLE_SOURCES})
target_include_directories(vxsubtitle PUBLIC ${PROJECT_SOURCE_DIR})
target_link_libraries(vxsubtitle PUBLIC vxsubtitle_platform PRIVATE vxsubtitle_no_rtti vxsubtitle_library_options)

add_subdirectory(tools/meant)
add_subdirectory(tools/vobsub)
add_subdirectory(tools/check)
add_subdirectory(tools/fix)
add_subdirectory(tools/page/engine)
add_subdirectory(tools/vxsub)
