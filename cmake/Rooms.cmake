# Rooms: a target sees the folders that cmake/rooms.txt grants its room, and no other.
#
# Includes are written from the repository root ("host/kex/reference/Ptr.h"). Were that root an
# include folder, every room would see every other one; so each room has an include folder of its
# own, whose only entry is a link to the room.

set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${CMAKE_CURRENT_LIST_DIR}/rooms.txt")
file(STRINGS "${CMAKE_CURRENT_LIST_DIR}/rooms.txt" lines REGEX "^[a-z]")
foreach(line IN LISTS lines)
  string(REGEX MATCH "^([^ ]+) +([^ ]+) *:([^|]*)\\|?(.*)$" matched "${line}")
  set(room "${CMAKE_MATCH_1}")
  set(built_into "${CMAKE_MATCH_2}")
  separate_arguments(passed_on UNIX_COMMAND "${CMAKE_MATCH_3}")
  separate_arguments(kept UNIX_COMMAND "${CMAKE_MATCH_4}")
  # What `room` sees; of that, what others see through it; and the target that holds it.
  set(visible_${room} "${room}")
  set(through_${room} "${room}")
  foreach(seen IN LISTS passed_on)
    list(APPEND through_${room} ${through_${seen}})
    list(APPEND visible_${room} ${through_${seen}})
  endforeach()
  foreach(seen IN LISTS kept)
    list(APPEND visible_${room} ${through_${seen}})
  endforeach()
  list(REMOVE_DUPLICATES through_${room})
  list(REMOVE_DUPLICATES visible_${room})
  set(target_of_${room} "${built_into}")
  list(APPEND rooms_of_${built_into} "${room}")
endforeach()

# Lets `target` see what its room sees, and, unless it is a mere part of something, links it to what
# holds these rooms.
function(room target room)
  get_target_property(type ${target} TYPE)
  target_link_libraries(${target} PRIVATE eps_warnings)
  foreach(seen IN LISTS visible_${room})
    set(folder "${CMAKE_BINARY_DIR}/rooms/${seen}")
    cmake_path(GET seen PARENT_PATH parent)
    file(MAKE_DIRECTORY "${folder}/${parent}")
    file(CREATE_LINK "${CMAKE_SOURCE_DIR}/${seen}" "${folder}/${seen}" SYMBOLIC)
    target_include_directories(${target} PRIVATE "${folder}")
    target_compile_options(${target} PRIVATE
      "-fmacro-prefix-map=${folder}/="
      $<$<BOOL:${EPS_COVERAGE}>:-fprofile-prefix-map=${folder}/=${CMAKE_SOURCE_DIR}/>)
    set(holder "${target_of_${seen}}")
    if(NOT type STREQUAL "OBJECT_LIBRARY" AND NOT holder MATCHES "^(-|${target})$" AND
       seen IN_LIST through_${room})
      target_link_libraries(${target} PRIVATE ${holder})
    endif()
  endforeach()
endfunction()

# Makes an object library of each room that is built into `target`, with what `needs` says that it
# uses from outside, and adds them to the target's sources.
function(room_parts target needs)
  foreach(room IN LISTS rooms_of_${target})
    string(REPLACE "/" "-" part "${room}")
    room_sources(sources "${room}")
    add_library(${part} OBJECT ${sources})
    target_link_libraries(${part} PRIVATE ${needs})
    room(${part} "${room}")
    target_sources(${target} PRIVATE $<TARGET_OBJECTS:${part}>)
  endforeach()
endfunction()

# Sets `variable` to the sources below the folders, which are given from the repository root.
function(room_sources variable)
  list(TRANSFORM ARGN REPLACE "(.+)" "${CMAKE_SOURCE_DIR}/\\1/*.cpp" OUTPUT_VARIABLE patterns)
  file(GLOB_RECURSE sources CONFIGURE_DEPENDS ${patterns})
  set(${variable} "${sources}" PARENT_SCOPE)
endfunction()
