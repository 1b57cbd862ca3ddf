# What every target of this project is compiled with.

add_library(kygl_warnings INTERFACE)
target_compile_options(kygl_warnings INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion
  $<$<BOOL:${PROJECT_IS_TOP_LEVEL}>:-Werror>  # a newer compiler's opinion stops nobody else's build
  $<$<CXX_COMPILER_ID:Clang>:-Wthread-safety -Wthread-safety-beta>)

# A shared library with a SONAME that shows nothing but what it marks, and that binds its own calls
# within itself.
function(kygl_shared_library target)
  target_link_libraries(${target} PRIVATE kygl_warnings)
  target_compile_features(${target} PUBLIC cxx_std_17)  # for its headers
  # A short loop in one line of the cache, so that what it costs does not hang on the code before it.
  target_compile_options(${target} PRIVATE -fno-semantic-interposition -falign-loops=32)
  target_link_options(${target} PRIVATE -Wl,-Bsymbolic-functions -Wl,--no-undefined
    -Wl,--version-script=${PROJECT_SOURCE_DIR}/cmake/hidden.map)
  set_target_properties(${target} PROPERTIES
    CXX_VISIBILITY_PRESET hidden
    VISIBILITY_INLINES_HIDDEN ON
    VERSION ${PROJECT_VERSION}
    SOVERSION ${PROJECT_VERSION_MAJOR})
endfunction()
