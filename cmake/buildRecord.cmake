# Fills the build record of a library that was just linked, by KYRECORD. LIBRARY is the file, SOURCE
# the folder of the sources; VENDOR and VALUES hold what was known when the build was configured.
#
# Where SOURCE_DATE_EPOCH is set, CMake takes the time from it, and nothing is told of who built the
# library where: then the same sources give the same file.

# What the command prints, or what to say where it fails.
function(ask variable otherwise)
  execute_process(COMMAND ${ARGN}
    OUTPUT_VARIABLE answer OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET RESULT_VARIABLE status)
  if(NOT status EQUAL 0 OR answer STREQUAL "")
    set(answer ${otherwise})
  endif()
  set(${variable} "${answer}" PARENT_SCOPE)
endfunction()

# A checkout around these sources tells of them only if it holds them.
string(REPEAT 0 40 revision)
set(git ${CMAKE_COMMAND} -E env --unset=GIT_DIR --unset=GIT_WORK_TREE --unset=GIT_INDEX_FILE git)
ask(tracked "" ${git} -C "${SOURCE}" ls-files CMakeLists.txt)
if(NOT tracked STREQUAL "")
  ask(answer ${revision} ${git} -C "${SOURCE}" rev-parse --verify HEAD)
  string(REGEX MATCH "^[0-9a-f]+$" answer "${answer}")
  string(LENGTH "${answer}" length)
  if(length EQUAL 40)
    set(revision ${answer})
  endif()
endif()

string(TIMESTAMP time "%Y-%m-%d %H:%M:%S" UTC)
if(NOT "$ENV{SOURCE_DATE_EPOCH}" STREQUAL "")
  set(user reproducible)
  set(host reproducible)
  set(path /reproducible/)
else()
  ask(user unknown id -un)
  cmake_host_system_information(RESULT host QUERY HOSTNAME)
  get_filename_component(path "${LIBRARY}" DIRECTORY)
  string(REPLACE "|" "_" path "${path}/")
endif()

execute_process(
  COMMAND "${KYRECORD}" fill "${LIBRARY}" --set "comment=${revision}" "build_user=${user}"
    "build_ip=${host}" "build_time=${time}" "path=${path}" "vendor=${VENDOR}" ${VALUES}
  RESULT_VARIABLE status)
if(NOT status EQUAL 0)
  message(FATAL_ERROR "the build record was not filled")
endif()
