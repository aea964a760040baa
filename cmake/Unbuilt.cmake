# Scaffolding: lets targets configure whose sources are not written yet. Goes once all are.
file(CONFIGURE OUTPUT "${CMAKE_BINARY_DIR}/unbuilt.cpp" CONTENT "[[gnu::weak]] int main() {}\n")

# Sets `kept` to the arguments less the sources that do not exist; a target left with none gets one.
function(unbuilt_filter name)
  set(kept ${ARGN})
  foreach(item IN LISTS ARGN)
    cmake_path(ABSOLUTE_PATH item OUTPUT_VARIABLE file)
    if(item MATCHES "\\.cpp$" AND NOT EXISTS "${file}")
      list(REMOVE_ITEM kept "${item}")
    endif()
  endforeach()
  if(NOT kept MATCHES "\\.cpp|IMPORTED|INTERFACE|ALIAS|TARGET_OBJECTS")
    message(NOTICE "unbuilt: ${name} has no sources yet")
    list(APPEND kept "${CMAKE_BINARY_DIR}/unbuilt.cpp")
  endif()
  set(kept "${kept}" PARENT_SCOPE)
endfunction()

function(add_library name)
  unbuilt_filter(${name} ${ARGN})
  _add_library(${name} ${kept})
endfunction()

function(add_executable name)
  unbuilt_filter(${name} ${ARGN})
  _add_executable(${name} ${kept})
endfunction()
