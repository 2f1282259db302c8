# Debian's builds of the Android platform libraries: imported targets android::log, ::base, ::utils, ::cutils.
#
# They lie in a folder of their own, off the loader's path, and come without CMake or pkg-config files.

include_guard(GLOBAL)

find_path(ANDROID_INCLUDE_DIR android/log.h PATHS /usr/include/android NO_DEFAULT_PATH REQUIRED)

foreach(name IN ITEMS log base utils cutils)
    find_library(ANDROID_${name}_LIBRARY ${name}
        PATHS /usr/lib/${CMAKE_LIBRARY_ARCHITECTURE}/android NO_DEFAULT_PATH REQUIRED)
    mark_as_advanced(ANDROID_${name}_LIBRARY)
    add_library(android::${name} SHARED IMPORTED)
    set_target_properties(android::${name} PROPERTIES
        IMPORTED_LOCATION ${ANDROID_${name}_LIBRARY}
        INTERFACE_INCLUDE_DIRECTORIES ${ANDROID_INCLUDE_DIR})
endforeach()
mark_as_advanced(ANDROID_INCLUDE_DIR)

get_filename_component(VXSUBTITLE_ANDROID_LIBRARY_DIR ${ANDROID_log_LIBRARY} DIRECTORY)

# The cross linker does not follow the run paths inside these libraries.
foreach(name IN ITEMS log base utils cutils)
    set_property(TARGET android::${name} PROPERTY
        INTERFACE_LINK_OPTIONS LINKER:-rpath-link,${VXSUBTITLE_ANDROID_LIBRARY_DIR})
endforeach()
