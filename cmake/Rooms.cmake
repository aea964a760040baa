# Rooms: a target sees its own folder and the rooms that it names, and no other.
#
# Includes are written from the repository root ("host/kex/reference/Ptr.h"). Were that root an include
# folder, every room would see every other one; so each room has an include folder of its own,
# whose only entry is a link to the room.
function(room target)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "IN" "SEES")
  foreach(seen IN ITEMS ${arg_IN} LISTS arg_SEES)
    set(folder "${CMAKE_BINARY_DIR}/rooms/${seen}")
    file(MAKE_DIRECTORY "${folder}")
    file(CREATE_LINK "${CMAKE_SOURCE_DIR}/${seen}" "${folder}/${seen}" SYMBOLIC)
    target_include_directories(${target} PRIVATE "${folder}")
    target_compile_options(${target} PRIVATE
      "-fmacro-prefix-map=${folder}/="
      $<$<BOOL:${EPS_COVERAGE}>:-fprofile-prefix-map=${folder}/=${CMAKE_SOURCE_DIR}/>)
  endforeach()
  target_link_libraries(${target} PRIVATE eps_warnings)
endfunction()

# Sets `variable` to the sources below the calling folder that match the patterns.
function(room_sources variable)
  list(TRANSFORM ARGN PREPEND "${CMAKE_CURRENT_SOURCE_DIR}/")
  file(GLOB_RECURSE sources CONFIGURE_DEPENDS ${ARGN})
  set(${variable} "${sources}" PARENT_SCOPE)
endfunction()
