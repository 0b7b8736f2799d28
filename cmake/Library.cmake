include(GNUInstallDirs)

# kxsim_library(<name> EXPORT <PREFIX> FLOORS <folder>... [GENERATED <file>...] [LINKS <target>...])
#
# One of the shared libraries: every .cpp under src/<folder>, and the generated sources.
# <PREFIX>_BUILDING is defined while its own sources are compiled (see the export headers).
function(kxsim_library name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "EXPORT" "FLOORS;GENERATED;LINKS")
  list(TRANSFORM arg_FLOORS REPLACE "(.+)" "${PROJECT_SOURCE_DIR}/src/\\1/*.cpp"
    OUTPUT_VARIABLE patterns)
  file(GLOB_RECURSE sources CONFIGURE_DEPENDS ${patterns})
  if(NOT sources AND NOT arg_GENERATED)
    set(sources "${PROJECT_BINARY_DIR}/empty_${name}.cpp")
    file(WRITE "${sources}" "")
  endif()

  add_library(${name} SHARED ${sources} ${arg_GENERATED})
  add_library(kxsim::${name} ALIAS ${name})
  target_compile_features(${name} PUBLIC cxx_std_20)
  target_compile_definitions(${name} PRIVATE ${arg_EXPORT}_BUILDING)
  target_include_directories(${name} PUBLIC
    $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/src>
    $<BUILD_INTERFACE:${PROJECT_BINARY_DIR}/gen>
    $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/kxsim>)
  target_link_libraries(${name} PUBLIC ${arg_LINKS} PRIVATE $<BUILD_INTERFACE:kxsim_flags>)
  target_link_options(${name} PRIVATE ${kxsim_no_undefined})
  set_target_properties(${name} PROPERTIES
    VERSION ${PROJECT_VERSION}
    SOVERSION ${PROJECT_VERSION_MAJOR}
    LIBRARY_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/lib"
    BUILD_WITH_INSTALL_RPATH ON
    INSTALL_RPATH "$ORIGIN")
endfunction()
