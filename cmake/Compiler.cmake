# Language level, warnings and sanitizers: vxsubtitle_options for all of our code, vxsubtitle_no_rtti on top of it
# for the library and everything that derives from its classes.

include_guard(GLOBAL)

set(VXSUBTITLE_SANITIZE "" CACHE STRING "Sanitizers, as -fsanitize= takes them (address,undefined or thread)")
set(VXSUBTITLE_SANITIZE_LIBRARY "" CACHE STRING "Sanitizers of the library alone, as -fsanitize= takes them (integer)")
option(VXSUBTITLE_STACK_PROTECTOR "Guard return addresses, as a platform tree's build does: 1 to 3 % more instructions" OFF)
option(VXSUBTITLE_WERROR "Treat warnings as errors (not with sanitizers)" ON)

set(CMAKE_CXX_STANDARD 17)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS ON)  # gnu++17, as in a platform tree
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
if(NOT EMSCRIPTEN)
    set(CMAKE_POSITION_INDEPENDENT_CODE ON)
endif()
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
if(EMSCRIPTEN)
    add_library(Threads::Threads INTERFACE IMPORTED)  # platform/web has what stands for them
else()
    set(THREADS_PREFER_PTHREAD_FLAG ON)
    find_package(Threads REQUIRED)
endif()

add_library(vxsubtitle_options INTERFACE)
target_compile_options(vxsubtitle_options INTERFACE
    -Wall -Wextra -Wconversion -Wshadow
    -Wcast-qual -Wextra-semi -Wformat-security -Wnon-virtual-dtor -Woverloaded-virtual -Wvla
    $<$<CXX_COMPILER_ID:GNU>:-Wduplicated-branches;-Wduplicated-cond;-Wlogical-op>
    $<$<CXX_COMPILER_ID:Clang>:-Wno-sign-conversion>)  # part of clang's -Wconversion, not of g++'s
if(CMAKE_SYSTEM_PROCESSOR MATCHES "^arm")
    target_compile_options(vxsubtitle_options INTERFACE -Wno-psabi)
endif()
target_link_libraries(vxsubtitle_options INTERFACE Threads::Threads)
if(EMSCRIPTEN)
    set(web_features -fwasm-exceptions -mbulk-memory -msimd128 -msse2)
    target_compile_options(vxsubtitle_options INTERFACE ${web_features})
    target_link_options(vxsubtitle_options INTERFACE ${web_features})
else()
    target_link_options(vxsubtitle_options INTERFACE LINKER:--as-needed)
endif()

# $<LINK_LIBRARY:always,x>: x is loaded with the program, needed or not.
set(CMAKE_LINK_LIBRARY_USING_always
    LINKER:--push-state,--no-as-needed <LINK_ITEM> LINKER:--pop-state)
set(CMAKE_LINK_LIBRARY_USING_always_SUPPORTED TRUE)

add_library(vxsubtitle_no_rtti INTERFACE)
target_compile_options(vxsubtitle_no_rtti INTERFACE -fno-rtti)
target_link_libraries(vxsubtitle_no_rtti INTERFACE vxsubtitle_options)

# What the library's own sources are compiled with on top. The sanitizer's runtime comes with the programs.
add_library(vxsubtitle_library_options INTERFACE)
# g++ would take unused arguments out of inline functions, a copy for each source file, and no two copies are merged.
target_compile_options(vxsubtitle_library_options INTERFACE $<$<CXX_COMPILER_ID:GNU>:-fno-ipa-sra>)
if(VXSUBTITLE_SANITIZE_LIBRARY)
    target_compile_options(vxsubtitle_library_options INTERFACE
        -fsanitize=${VXSUBTITLE_SANITIZE_LIBRARY} -fno-sanitize-recover=all)
    target_link_options(vxsubtitle_options INTERFACE -fsanitize=${VXSUBTITLE_SANITIZE_LIBRARY})
endif()

if(VXSUBTITLE_SANITIZE)
    # Warnings stay warnings here: the code that sanitizers put in makes g++ warn where there is nothing.
    target_compile_options(vxsubtitle_options INTERFACE
        -fsanitize=${VXSUBTITLE_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(vxsubtitle_options INTERFACE -fsanitize=${VXSUBTITLE_SANITIZE})
    if(VXSUBTITLE_SANITIZE MATCHES "undefined")
        # Both checks need type information that a build without RTTI does not have.
        target_compile_options(vxsubtitle_options INTERFACE
            -fno-sanitize=vptr $<$<CXX_COMPILER_ID:Clang>:-fno-sanitize=function>)
    endif()
elseif(VXSUBTITLE_WERROR)
    target_compile_options(vxsubtitle_options INTERFACE -Werror)
endif()
if(NOT VXSUBTITLE_SANITIZE AND NOT VXSUBTITLE_SANITIZE_LIBRARY AND NOT EMSCRIPTEN)
    target_link_options(vxsubtitle_options INTERFACE LINKER:--no-undefined)

    # What a platform tree's build sets by itself; tests/package/hardening_test.sh looks for it.
    target_compile_options(vxsubtitle_options INTERFACE
        $<$<CONFIG:Release>:-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=2>
        $<$<BOOL:${VXSUBTITLE_STACK_PROTECTOR}>:-fstack-protector-strong>)
    target_link_options(vxsubtitle_options INTERFACE LINKER:-z,relro,-z,now,-z,noexecstack)
endif()

# A library as shipped is the same wherever it is built: no path of the building machine goes into it (nor into its run
# path: BUILD_RPATH_USE_ORIGIN).
target_compile_options(vxsubtitle_options INTERFACE
    $<$<CONFIG:Release>:-ffile-prefix-map=${PROJECT_BINARY_DIR}=build;-ffile-prefix-map=${PROJECT_SOURCE_DIR}=.>)
