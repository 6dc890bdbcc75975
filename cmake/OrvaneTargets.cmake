# How every target of the project is compiled, and the functions that make one.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_AUTOMOC ON)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/lib/orvane)

set(ORVANE_SANITIZERS "" CACHE STRING "Sanitizers to build with, as for -fsanitize (empty: none)")

find_program(CCACHE ccache)
if(CCACHE)
    # What ccache asks for where headers are precompiled.
    set(CMAKE_CXX_COMPILER_LAUNCHER ${CMAKE_COMMAND} -E env
        CCACHE_SLOPPINESS=pch_defines,time_macros,include_file_mtime,include_file_ctime ${CCACHE})
    if(CMAKE_CXX_COMPILER_ID MATCHES Clang)
        add_compile_options("SHELL:-Xclang -fno-pch-timestamp")
    endif()
endif()

find_program(LLD NAMES ld.lld-19 ld.lld)
if(LLD)
    add_link_options(-fuse-ld=lld)
endif()

if(ORVANE_SANITIZERS)
    add_compile_options(-fsanitize=${ORVANE_SANITIZERS} -fno-omit-frame-pointer -fno-sanitize-recover=undefined)
    add_link_options(-fsanitize=${ORVANE_SANITIZERS})
    if(ORVANE_SANITIZERS MATCHES thread)
        set(ORVANE_SANITIZER_SOURCES ${CMAKE_SOURCE_DIR}/tests/support/CloneUnderTsan.cpp)
    endif()
endif()

# Only our own targets are held to these: generated code and libraries are not ours to mend.
function(orvane_compile_strictly target)
    target_include_directories(${target} PRIVATE ${CMAKE_SOURCE_DIR})
    target_compile_options(${target} PRIVATE
        -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wnon-virtual-dtor -Woverloaded-virtual
        -Wimplicit-fallthrough -Wextra-semi -Werror)
    target_compile_definitions(${target} PRIVATE
        QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_FOREACH QT_NO_KEYWORDS
        QT_DISABLE_DEPRECATED_BEFORE=0x060400)
endfunction()

# The headers that most files use, compiled once: for the libraries, and with Qt Test for the tests. Every target takes
# one of the two over, which asks of it no less than the same options.
function(orvane_precompiled_headers name)
    cmake_parse_arguments(ARG "" "" "HEADERS;LINKS" ${ARGN})
    file(CONFIGURE OUTPUT ${CMAKE_BINARY_DIR}/generated/${name}.cpp CONTENT "")
    add_library(${name} OBJECT ${CMAKE_BINARY_DIR}/generated/${name}.cpp)
    target_link_libraries(${name} PRIVATE ${ARG_LINKS})
    orvane_compile_strictly(${name})
    set_target_properties(${name} PROPERTIES AUTOMOC OFF)
    target_precompile_headers(${name} PRIVATE ${ARG_HEADERS})
endfunction()

# orvane_library(name SOURCES file… [LINKS library…]): a static library of one folder.
# Its public headers are included from the source root ("history/HistoryStore.h").
function(orvane_library name)
    cmake_parse_arguments(ARG "" "" "SOURCES;LINKS" ${ARGN})
    add_library(${name} STATIC ${ARG_SOURCES})
    target_link_libraries(${name} PUBLIC ${ARG_LINKS})
    orvane_compile_strictly(${name})
    target_precompile_headers(${name} REUSE_FROM orvane_headers)
    set_property(GLOBAL APPEND PROPERTY ORVANE_LIBRARIES ${name})
endfunction()

# orvane_program(name SOURCES file… [LINKS library…])
function(orvane_program name)
    cmake_parse_arguments(ARG "" "" "SOURCES;LINKS" ${ARGN})
    add_executable(${name} ${ARG_SOURCES} ${ORVANE_SANITIZER_SOURCES})
    target_link_libraries(${name} PRIVATE ${ARG_LINKS})
    orvane_compile_strictly(${name})
    target_precompile_headers(${name} REUSE_FROM orvane_headers)
endfunction()
