# What tests and fuzz targets share.

# What lies in tests/support, for all binaries: a static library, so that each takes only what it
# uses and the host's tests can do without the floors above.
file(GLOB_RECURSE support CONFIGURE_DEPENDS "${CMAKE_CURRENT_LIST_DIR}/support/*.cpp")
if(support)
  add_library(test_support STATIC ${support})
  target_include_directories(test_support PRIVATE "${CMAKE_CURRENT_LIST_DIR}"
    $<TARGET_PROPERTY:kxsim_design,INTERFACE_INCLUDE_DIRECTORIES>)
  target_link_libraries(test_support PRIVATE kxsim_flags)
  add_dependencies(test_support kxsim_design)
endif()

# A small package for the framework's own tests, generated from schemas like the real one.
file(GLOB_RECURSE schemas CONFIGURE_DEPENDS "${CMAKE_CURRENT_LIST_DIR}/fixture/*.toml")
file(GLOB_RECURSE hooks CONFIGURE_DEPENDS "${CMAKE_CURRENT_LIST_DIR}/fixture/*.cpp")
kxsim_generate(NAME fixture SCHEMAS ${schemas}
  OUT "${PROJECT_BINARY_DIR}/gen_fixture" OUT_VAR generated)
if(generated)
  add_library(test_fixture STATIC ${generated} ${hooks})
  target_include_directories(test_fixture PUBLIC "${CMAKE_CURRENT_LIST_DIR}"
    "${PROJECT_BINARY_DIR}/gen_fixture")
  target_link_libraries(test_fixture PUBLIC mf0 PRIVATE kxsim_flags)
endif()
