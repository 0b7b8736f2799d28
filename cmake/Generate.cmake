# Python with the generator's needs: the one that builds a wheel, or the project's own environment
# where set-up made one.
if(SKBUILD)
  find_package(Python 3.11 REQUIRED COMPONENTS Interpreter)
  set(KXSIM_PYTHON "${Python_EXECUTABLE}")
elseif(EXISTS "${PROJECT_SOURCE_DIR}/.venv/bin/python")
  set(KXSIM_PYTHON "${PROJECT_SOURCE_DIR}/.venv/bin/python" CACHE FILEPATH
    "Python with jinja2, for the generator")
else()
  find_program(KXSIM_PYTHON python3 DOC "Python with jinja2, for the generator" REQUIRED)
endif()

# kxsim_generate(NAME <name> SCHEMAS <toml>... OUT <folder> OUT_VAR <variable>)
#
# Turns schemas into sources under <folder> at build time and puts the list of these sources
# into <variable>; empty while there is nothing to generate.
#
# The generator rewrites only what changed. Ninja learns that from BYPRODUCTS (it looks at
# their times again after the command), so an unchanged header rebuilds nothing; the stamp
# alone says that the command ran. A new list of outputs needs a new configure, hence the
# CMAKE_CONFIGURE_DEPENDS on what determines it.
function(kxsim_generate)
  cmake_parse_arguments(PARSE_ARGV 0 arg "" "NAME;OUT;OUT_VAR" "SCHEMAS")
  set(${arg_OUT_VAR} "" PARENT_SCOPE)
  file(GLOB_RECURSE generator CONFIGURE_DEPENDS
    "${PROJECT_SOURCE_DIR}/generator/*.py" "${PROJECT_SOURCE_DIR}/generator/*.j2")
  if(NOT arg_SCHEMAS OR NOT EXISTS "${PROJECT_SOURCE_DIR}/generator/__main__.py")
    return()
  endif()

  set(generate "${KXSIM_PYTHON}" -m generator)
  execute_process(
    COMMAND ${generate} --list-outputs --out "${arg_OUT}" ${arg_SCHEMAS}
    WORKING_DIRECTORY "${PROJECT_SOURCE_DIR}"
    OUTPUT_VARIABLE listed ERROR_VARIABLE problem RESULT_VARIABLE result)
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "The generator refused the schemas of ${arg_NAME}:\n${problem}")
  endif()
  string(STRIP "${listed}" listed)
  string(REPLACE "\n" ";" outputs "${listed}")
  file(GLOB_RECURSE leftovers "${arg_OUT}/*.h" "${arg_OUT}/*.cpp" "${arg_OUT}/*.pyi")
  list(REMOVE_ITEM leftovers ${outputs})
  if(leftovers)
    file(REMOVE ${leftovers})
  endif()
  set_property(DIRECTORY "${PROJECT_SOURCE_DIR}" APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS
    ${arg_SCHEMAS} ${generator})

  set(stamp "${PROJECT_BINARY_DIR}/gen_${arg_NAME}.stamp")
  add_custom_command(
    OUTPUT "${stamp}" BYPRODUCTS ${outputs}
    COMMAND ${generate} --out "${arg_OUT}" ${arg_SCHEMAS}
    COMMAND "${CMAKE_COMMAND}" -E touch "${stamp}"
    DEPENDS ${arg_SCHEMAS} ${generator}
    WORKING_DIRECTORY "${PROJECT_SOURCE_DIR}"
    COMMENT "Generating the classes of ${arg_NAME}"
    VERBATIM)
  set(${arg_OUT_VAR} "${stamp}" ${outputs} PARENT_SCOPE)
endfunction()
