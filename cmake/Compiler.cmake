# The flags that every target of this project shares, gathered in one interface target.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)

add_library(kxsim_flags INTERFACE)
target_compile_options(kxsim_flags INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion $<$<BOOL:${KXSIM_WERROR}>:-Werror>)
# A library's own functions are called directly and may be inlined; nobody replaces them at load.
target_compile_options(kxsim_flags INTERFACE -fno-semantic-interposition -fno-plt)

if(KXSIM_SANITIZE)
  # Directory-wide, not in the interface target: a sanitizer that misses one object lies.
  add_compile_options(-fsanitize=${KXSIM_SANITIZE} -fno-sanitize-recover=all
    -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${KXSIM_SANITIZE})
endif()

# clang links its sanitizer runtimes into the executable only, so a sanitized library
# leaves their symbols open.
if(NOT (KXSIM_SANITIZE AND CMAKE_CXX_COMPILER_ID MATCHES Clang))
  set(kxsim_no_undefined -Wl,--no-undefined)
endif()
