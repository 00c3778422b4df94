# Reads the one list of exported names and writes what the build needs of it:
#   l9_names.h   the macro that gives each implementation its variant prefix
#   exports.map  the linker's version script
set(RVXCV_EXPORTS_DEF ${PROJECT_SOURCE_DIR}/src/frame/exports.def)
set(RVXCV_GENERATED_DIR ${PROJECT_BINARY_DIR}/generated)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${RVXCV_EXPORTS_DEF})

file(STRINGS ${RVXCV_EXPORTS_DEF} lines REGEX "^EXPORT\\(")
set(names_header "/* Generated from src/frame/exports.def. */\n#pragma once\n")
set(version_script "{\nglobal:\n")
foreach(line IN LISTS lines)
  if(NOT line MATCHES "^EXPORT\\(([A-Za-z0-9_]+)\\)$")
    message(FATAL_ERROR "exports.def: cannot read '${line}'")
  endif()
  string(APPEND names_header "#define ${CMAKE_MATCH_1} l9_${CMAKE_MATCH_1}\n")
  string(APPEND version_script "  ${CMAKE_MATCH_1};\n")
endforeach()
string(APPEND version_script "local: *;\n};\n")
file(CONFIGURE OUTPUT ${RVXCV_GENERATED_DIR}/l9_names.h CONTENT "${names_header}" @ONLY)
file(CONFIGURE OUTPUT ${RVXCV_GENERATED_DIR}/exports.map CONTENT "${version_script}" @ONLY)
