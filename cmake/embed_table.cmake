# Links raw 32-bit little-endian floats into a target as constant data.
#
#     quenlis_embed_table(<target> <file> SHAPE <extent>...)
#
# The symbol has the name of the file without its extension and C linkage; a header of the target declares it, as
# `extern "C" const float <name>[<extent>]...;`. It is 64-byte aligned and hidden from users of a shared library.
# Configuring stops when the file is not of that shape; a changed file is checked and linked in again by the next build.
set(QUENLIS_EMBEDDED_TABLE_TEMPLATE ${CMAKE_CURRENT_LIST_DIR}/embedded_table.cpp.in)

function(quenlis_embed_table target file)
  cmake_parse_arguments(PARSE_ARGV 2 table "" "" SHAPE)
  cmake_path(ABSOLUTE_PATH file NORMALIZE)
  cmake_path(GET file STEM symbol)
  if(CMAKE_CXX_BYTE_ORDER STREQUAL BIG_ENDIAN)
    message(FATAL_ERROR "${file} holds little-endian numbers, this machine's are big-endian")
  endif()
  quenlis_check_table(${file} "${table_SHAPE}")

  set(source ${CMAKE_CURRENT_BINARY_DIR}/${symbol}.cpp)
  configure_file(${QUENLIS_EMBEDDED_TABLE_TEMPLATE} ${source} @ONLY)
  target_sources(${target} PRIVATE ${source})
  set_property(SOURCE ${source} TARGET_DIRECTORY ${target} APPEND PROPERTY OBJECT_DEPENDS ${file})
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${file})
endfunction()

function(quenlis_check_table file shape)
  if(NOT EXISTS ${file})
    message(FATAL_ERROR "The data file ${file} is missing")
  endif()
  set(expected 4)
  foreach(extent IN LISTS shape)
    math(EXPR expected "${expected} * ${extent}")
  endforeach()
  file(SIZE ${file} found)
  if(NOT found EQUAL expected)
    list(JOIN shape " x " shape)
    message(FATAL_ERROR
      "The data file ${file} must hold ${shape} 32-bit floats: expected ${expected} bytes, found ${found}")
  endif()
endfunction()
