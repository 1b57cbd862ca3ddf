# kygl_check_shaders(TARGET name LIST file [ROOT folder] [MACROS text...] [STRICT] [REQUIRE_DISPLAY])
#
# Adds the target `name` to what is built by default: it compiles and links the programs of a list
# on the driver of the X display, as `kyglsl check --list` does, and stops the build where one
# fails. It runs again where the list changes, or a shader file or one that it includes.
#
#   LIST             the list; see kyglsl(1)
#   ROOT             as KyShader::mFolderPath
#   MACROS           for all programs, in front of those of the list
#   STRICT           warnings fail too
#   REQUIRE_DISPLAY  the build fails where there is no X display. Otherwise it prints that nothing is
#                    checked, and tries again the next time.
function(kygl_check_shaders)
  cmake_parse_arguments(PARSE_ARGV 0 arg "STRICT;REQUIRE_DISPLAY" "TARGET;LIST;ROOT" MACROS)
  if(arg_UNPARSED_ARGUMENTS OR NOT arg_TARGET OR NOT arg_LIST)
    message(FATAL_ERROR "kygl_check_shaders(TARGET name LIST file [ROOT folder] [MACROS text...] [STRICT] [REQUIRE_DISPLAY])")
  endif()
  if(TARGET kyglsl)
    set(kyglsl kyglsl)  # a command that names a target depends on it
  else()
    find_program(KYGLSL_EXECUTABLE kyglsl HINTS ${kygl_TOOLS_DIR} DOC "The tool that checks shaders")
    if(NOT KYGLSL_EXECUTABLE)
      message(FATAL_ERROR "kygl_check_shaders: there is no kyglsl; in Debian it is in kygl-tools")
    endif()
    set(kyglsl ${KYGLSL_EXECUTABLE})
  endif()

  cmake_path(ABSOLUTE_PATH arg_LIST NORMALIZE OUTPUT_VARIABLE list)
  set(stamp ${CMAKE_CURRENT_BINARY_DIR}/${arg_TARGET}.stamp)
  set(options --list ${list} --stamp ${stamp} --deps ${stamp}.d)
  if(arg_ROOT)
    cmake_path(ABSOLUTE_PATH arg_ROOT NORMALIZE OUTPUT_VARIABLE root)
    list(APPEND options --root ${root})
  endif()
  foreach(macro IN LISTS arg_MACROS)
    list(APPEND options -D ${macro})
  endforeach()
  if(arg_STRICT)
    list(APPEND options --strict)
  endif()
  if(NOT arg_REQUIRE_DISPLAY)
    list(APPEND options --skip-without-display)
  endif()
  add_custom_command(OUTPUT ${stamp}
    COMMAND ${kyglsl} check ${options}
    DEPENDS ${list} ${kyglsl}
    DEPFILE ${stamp}.d
    COMMENT "Checking the shaders of ${arg_LIST}"
    VERBATIM)
  add_custom_target(${arg_TARGET} ALL DEPENDS ${stamp})
endfunction()
