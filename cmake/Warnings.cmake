# The warnings that every target is built with; each one is an error.
add_library(eps_warnings INTERFACE)
target_compile_options(eps_warnings INTERFACE
  -Wall -Wextra -Wpedantic -Werror
  -Wconversion -Wsign-conversion
  -Wshadow -Wnon-virtual-dtor -Wold-style-cast -Woverloaded-virtual -Wcast-qual
  -Wformat=2 -Wno-format-nonliteral
  # g++ 12 finds an overlap in std::string's own operator+ where there is none.
  $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>)
