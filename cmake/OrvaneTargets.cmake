# What every target of ours has in common.

add_library(orvane_options INTERFACE)
target_compile_features(orvane_options INTERFACE cxx_std_20)
if(NOT ORVANE_SANITIZE)
  # Calls into another library go there without a stop on the way, and calls within one are plain.
  target_compile_options(orvane_options INTERFACE -fno-plt -fno-semantic-interposition)
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # Two numbers that were just written are slow to read as one vector, and nearly every record
    # here is copied right after it was filled.
    target_compile_options(orvane_options INTERFACE -fno-tree-slp-vectorize)
    # Records are made empty and copied all the time. The processor's own instructions for that take
    # longer to begin than plain ones take for all of a record. Other tools than the compiler do not
    # know these options; see .clangd.
    set(plain_fill -mmemset-strategy=vector_loop:1024:noalign,libcall:-1:noalign)
    set(plain_copy -mmemcpy-strategy=unrolled_loop:1024:noalign,libcall:-1:noalign)
    include(CheckCXXCompilerFlag)
    check_cxx_compiler_flag("${plain_fill} ${plain_copy}" ORVANE_HAS_PLAIN_FILL)
    if(ORVANE_HAS_PLAIN_FILL AND NOT ORVANE_TIDY)
      target_compile_options(orvane_options INTERFACE ${plain_fill} ${plain_copy})
    endif()
  endif()
endif()

add_library(orvane_warnings INTERFACE)
target_compile_options(orvane_warnings INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Wold-style-cast -Wcast-align
  -Woverloaded-virtual -Wconversion -Wno-sign-conversion -Wno-implicit-int-float-conversion)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  target_compile_options(orvane_warnings INTERFACE -Wno-float-conversion)
endif()
if(CMAKE_CXX_COMPILER_ID MATCHES "Clang")
  target_compile_options(orvane_warnings INTERFACE -Wthread-safety)
endif()
if(ORVANE_UNITY STREQUAL "all")
  # Names of one source hide those of another that it never sees on its own.
  target_compile_options(orvane_warnings INTERFACE -Wno-shadow)
endif()
if(ORVANE_WERROR)
  target_compile_options(orvane_warnings INTERFACE -Werror)
endif()

# What GCC 12 finds by following values through inlined library code depends on the length of a
# path that stands in a text, and is mostly false: it is shown, but no reason to stop. Once a
# sanitizer stands between, it is nothing but false.
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  foreach(guess IN ITEMS array-bounds restrict stringop-overflow stringop-overread
      stringop-truncation maybe-uninitialized free-nonheap-object dangling-pointer use-after-free)
    if(ORVANE_SANITIZE)
      target_compile_options(orvane_warnings INTERFACE -Wno-${guess})
    elseif(ORVANE_WERROR)
      target_compile_options(orvane_warnings INTERFACE -Wno-error=${guess})
    endif()
  endforeach()
endif()

if(ORVANE_SANITIZE)
  target_compile_options(orvane_options INTERFACE
    -fsanitize=${ORVANE_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  target_link_options(orvane_options INTERFACE -fsanitize=${ORVANE_SANITIZE})
endif()

# The digest of the rules stands in the command line, so that new rules check every source anew.
if(ORVANE_TIDY)
  find_program(ORVANE_CLANG_TIDY clang-tidy REQUIRED)
  set(rules_file "${PROJECT_SOURCE_DIR}/.clang-tidy")
  file(SHA256 "${rules_file}" rules)
  set(ORVANE_TIDY_COMMAND "${ORVANE_CLANG_TIDY}" --quiet "--extra-arg=-DORVANE_TIDY_RULES=${rules}")
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${rules_file}")
endif()

# Events are made on one thread and destroyed on another, which this allocator does in less than
# half the time that the C library's takes. A sanitizer brings its own.
if(NOT ORVANE_SANITIZE)
  pkg_check_modules(JEMALLOC REQUIRED IMPORTED_TARGET jemalloc)
endif()

# Puts the allocator into a program. A library leaves the choice to the program that loads it.
function(orvane_link_allocator program)
  if(NOT ORVANE_SANITIZE)
    target_sources(${program} PRIVATE "${PROJECT_SOURCE_DIR}/host/AllocatorSettings.cpp")
    # No source names it, so the linker would leave it out where it may.
    target_link_options(${program} PRIVATE LINKER:--push-state,--no-as-needed
      ${JEMALLOC_LINK_LIBRARIES} LINKER:--pop-state)
  endif()
endfunction()

# In the tree, users' includes (<orvane/sdk/Strategy.h>) resolve through this link, so that the
# examples read as they do against an installed package.
file(MAKE_DIRECTORY "${PROJECT_BINARY_DIR}/include")
file(CREATE_LINK "${PROJECT_SOURCE_DIR}" "${PROJECT_BINARY_DIR}/include/orvane" SYMBOLIC)

# Gives a target the common options and the include folders: the tree's root while building, and
# the installed ones for users.
function(orvane_setup target)
  get_target_property(type ${target} TYPE)
  if(type STREQUAL "INTERFACE_LIBRARY")
    set(scope INTERFACE)
  else()
    set(scope PUBLIC)
    target_link_libraries(${target} PRIVATE
      $<BUILD_INTERFACE:orvane_options> $<BUILD_INTERFACE:orvane_warnings>)
  endif()
  if(ORVANE_TIDY AND NOT scope STREQUAL "INTERFACE"
     AND NOT CMAKE_CURRENT_SOURCE_DIR MATCHES "^${PROJECT_SOURCE_DIR}/(tests|bench)")
    set_target_properties(${target} PROPERTIES CXX_CLANG_TIDY "${ORVANE_TIDY_COMMAND}")
  endif()
  target_compile_features(${target} ${scope} cxx_std_20)
  target_include_directories(${target} ${scope}
    $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>
    $<BUILD_INTERFACE:${PROJECT_BINARY_DIR}/include>
    $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>
    $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/orvane>)
endfunction()

# Most of the time that a test takes to compile goes into headers which it shares with all others.
# They are compiled once for each target that asks. Of the libraries and the command only the
# sanitized builds do that, so that a forgotten include is found by the plain one.
option(ORVANE_PCH "Compile headers that many sources share once for all of them" ON)
function(orvane_precompile target)
  if(ORVANE_PCH AND (ORVANE_SANITIZE OR "ALWAYS" IN_LIST ARGN))
    list(REMOVE_ITEM ARGN ALWAYS)
    target_precompile_headers(${target} PRIVATE
      <algorithm> <atomic> <functional> <list> <map> <memory> <mutex> <set> <string> <thread>
      <vector> ${ARGN})
  endif()
endfunction()
