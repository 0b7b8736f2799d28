# Loading a library runs none of its code: tables are constinit, and nothing depends on the order
# in which sources were linked.
#   cmake -DLIBRARY=<file> -DNM=<nm> -P no_static_constructors.cmake

execute_process(COMMAND "${NM}" --defined-only "${LIBRARY}"
  OUTPUT_VARIABLE symbols COMMAND_ERROR_IS_FATAL ANY)
string(REGEX MATCHALL "_GLOBAL__sub_I_[^\n]+" constructors "${symbols}")
if(constructors)
  list(JOIN constructors "\n  " listed)
  message(FATAL_ERROR "${LIBRARY} has static constructors, from these sources:\n  ${listed}")
endif()
