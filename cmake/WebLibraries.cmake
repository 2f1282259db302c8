# Debian's headers for a browser: those of libraries that are headers alone, and those of Android. One by one, because
# beside them lie the headers of the desktop's C library.

include_guard(GLOBAL)

set(VXSUBTITLE_WEB_HEADERS ${PROJECT_BINARY_DIR}/headers)
file(MAKE_DIRECTORY ${VXSUBTITLE_WEB_HEADERS})

# vxsubtitle_web_headers(TARGET FOLDER NAME...): the folders NAME in FOLDER.
function(vxsubtitle_web_headers target folder)
    foreach(name IN LISTS ARGN)
        if(NOT EXISTS ${folder}/${name})
            message(FATAL_ERROR "${folder}/${name} is missing: tools/setup.sh page")
        endif()
        file(CREATE_LINK ${folder}/${name} ${VXSUBTITLE_WEB_HEADERS}/${name} SYMBOLIC)
    endforeach()
    add_library(${target} INTERFACE IMPORTED GLOBAL)
    target_include_directories(${target} SYSTEM INTERFACE ${VXSUBTITLE_WEB_HEADERS})
endfunction()

vxsubtitle_web_headers(android::headers /usr/include/android android android-base cutils log system utils)
vxsubtitle_web_headers(CLI11::CLI11 /usr/include CLI)
vxsubtitle_web_headers(nlohmann_json::nlohmann_json /usr/include nlohmann)
