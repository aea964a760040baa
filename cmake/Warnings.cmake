# The warnings that every target is built with. They are errors where this is developed, and not for
# those who build what was released, with a compiler that nobody here has seen.
if(EXISTS "${CMAKE_SOURCE_DIR}/.git")
  set(is_checkout ON)
else()
  set(is_checkout OFF)
endif()
option(EPS_WARNINGS_ARE_ERRORS "Take warnings for errors" ${is_checkout})
add_library(eps_warnings INTERFACE)
target_compile_options(eps_warnings INTERFACE
  -Wall -Wextra -Wpedantic $<$<BOOL:${EPS_WARNINGS_ARE_ERRORS}>:-Werror>
  -Wconversion -Wsign-conversion
  -Wshadow -Wnon-virtual-dtor -Wold-style-cast -Woverloaded-virtual -Wcast-qual
  -Wformat=2 -Wno-format-nonliteral
  # g++ 12 finds an overlap in std::string's own operator+ where there is none.
  $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>)
