# Wayland's protocols beyond its core: packages have their descriptions, wayland-scanner makes code of them.

pkg_get_variable(WAYLAND_SCANNER wayland-scanner wayland_scanner)
if(NOT WAYLAND_SCANNER)
    message(FATAL_ERROR "wayland-scanner is missing. Debian: libwayland-bin")
endif()

# orvane_wayland_protocols(name): a library of generated code, which is not ours to be warned about.
function(orvane_wayland_protocols library)
    add_library(${library} STATIC)
    target_include_directories(${library} SYSTEM INTERFACE ${CMAKE_BINARY_DIR}/generated/wayland)
    target_link_libraries(${library} PUBLIC PkgConfig::Wayland)
    target_compile_options(${library} PRIVATE -w)
    set_target_properties(${library} PROPERTIES AUTOMOC OFF)
endfunction()

# orvane_wayland_protocol(library description PACKAGE package… FOLDERS pattern…): adds what DESCRIPTION.xml says to the
# library, with the header DESCRIPTION.h. The file is in one of the folders, some of which are named after a version.
function(orvane_wayland_protocol library description)
    cmake_parse_arguments(ARG "" "" "PACKAGE;FOLDERS" ${ARGN})
    file(GLOB folders ${ARG_FOLDERS})
    string(MAKE_C_IDENTIFIER WAYLAND_${description} xml)
    find_file(${xml} ${description}.xml PATHS ${folders} NO_DEFAULT_PATH)
    if(NOT ${xml})
        list(JOIN ARG_PACKAGE " or " packages)
        message(FATAL_ERROR "${description}.xml is missing. Debian: ${packages}")
    endif()
    set(code ${CMAKE_BINARY_DIR}/generated/wayland/${description})
    file(MAKE_DIRECTORY ${CMAKE_BINARY_DIR}/generated/wayland)
    add_custom_command(
        OUTPUT ${code}.h ${code}.c
        COMMAND ${WAYLAND_SCANNER} client-header ${${xml}} ${code}.h
        COMMAND ${WAYLAND_SCANNER} private-code ${${xml}} ${code}.c
        DEPENDS ${${xml}}
        VERBATIM)
    target_sources(${library} PRIVATE ${code}.c ${code}.h)
endfunction()
