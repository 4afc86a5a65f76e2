# Compiler settings shared by all targets, and the functions that declare them.

set(CMAKE_CXX_STANDARD 17)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

# deal.II hands its own build's warning, debug and hardening flags on to every target that uses it;
# only its include paths, definitions and libraries are wanted here.
set(DEAL_II_CXX_FLAGS "")
set(DEAL_II_CXX_FLAGS_DEBUG "")
set(DEAL_II_CXX_FLAGS_RELEASE "")
set(CMAKE_CXX_FLAGS_RELEASE "-O2")
set(CMAKE_CXX_FLAGS_DEBUG "-O0 -g")

function(tavelo_setup target)
  deal_ii_setup_target(${target})
  target_include_directories(${target} PRIVATE ${CMAKE_SOURCE_DIR}/src)
  target_link_libraries(${target} nlohmann_json::nlohmann_json ${NETTLE} ${MUPARSER})
  # No contraction of a*b+c: Release and Debug must write the same bytes.
  target_compile_options(${target} PRIVATE
    -ffp-contract=off -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Werror)
  # In clang -Wconversion includes signs.
  if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    target_compile_options(${target} PRIVATE -Wno-sign-conversion)
  endif()
  if(TAVELO_FUZZ)
    target_compile_options(${target} PRIVATE -fsanitize=fuzzer-no-link)
  endif()
  if(TAVELO_SANITIZE)
    target_compile_options(${target} PRIVATE -fsanitize=address,undefined -fno-sanitize-recover)
    target_link_options(${target} PRIVATE -fsanitize=address,undefined)
  endif()
endfunction()

# A component of the program. Object libraries keep every object file in the link, also those that
# nothing but their own registration line refers to.
function(tavelo_component name)
  add_library(tavelo_${name} OBJECT ${ARGN})
  tavelo_setup(tavelo_${name})
  set_property(GLOBAL APPEND PROPERTY TAVELO_COMPONENTS tavelo_${name})
endfunction()

# An executable that holds all components.
function(tavelo_executable name)
  add_executable(${name} ${ARGN})
  tavelo_setup(${name})
  get_property(components GLOBAL PROPERTY TAVELO_COMPONENTS)
  target_link_libraries(${name} ${components})
endfunction()
