# Language, visibility, output folders, hardening and instrumentation: what holds for every target.
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

# The program finds its libraries and the plug-in beside it as built, and in their folders as
# installed.
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/bin")
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/bin")
set(plugin_folder psu-agent/plugins)
set(EPS_PLUGIN_DIR "${CMAKE_INSTALL_LIBDIR}/${plugin_folder}")
file(RELATIVE_PATH EPS_LIBDIR_FROM_BINDIR "${CMAKE_INSTALL_FULL_BINDIR}" "${CMAKE_INSTALL_FULL_LIBDIR}")
file(RELATIVE_PATH EPS_MODELDIR_FROM_BINDIR "${CMAKE_INSTALL_FULL_BINDIR}"
     "${CMAKE_INSTALL_FULL_DATADIR}/psu-agent/models")
set(EPS_PLUGINDIR_FROM_BINDIR "${EPS_LIBDIR_FROM_BINDIR}/${plugin_folder}")
set(CMAKE_BUILD_WITH_INSTALL_RPATH ON)
set(CMAKE_INSTALL_RPATH "$ORIGIN" "$ORIGIN/${EPS_LIBDIR_FROM_BINDIR}")

# Files of more than 2 GB and inodes above 32 bits, on 32-bit machines too.
add_compile_definitions(_FILE_OFFSET_BITS=64)

find_program(CCACHE_PROGRAM ccache)
if(CCACHE_PROGRAM)
  set(CMAKE_CXX_COMPILER_LAUNCHER "${CCACHE_PROGRAM}")
endif()

# File names in messages are written from the repository root, whatever folder is built in. Nobody
# puts functions in the place of a library's own, so these need no search when it is loaded.
add_compile_options(
  -ffunction-sections -fdata-sections -fno-semantic-interposition
  "-fmacro-prefix-map=${CMAKE_SOURCE_DIR}/="
  $<$<CONFIG:Debug>:-D_GLIBCXX_ASSERTIONS>)
add_link_options(-Wl,-z,now -Wl,-z,relro -Wl,-Bsymbolic-functions
                 $<$<CONFIG:Release>:-Wl,-O1,--gc-sections>)
# Relocations that only add where the library is loaded take a bit each. Linkers warn of what they
# do not know.
include(CheckLinkerFlag)
check_linker_flag(CXX -Wl,--fatal-warnings,-z,pack-relative-relocs EPS_PACKED_RELOCATIONS)
if(EPS_PACKED_RELOCATIONS)
  add_link_options(-Wl,-z,pack-relative-relocs)
endif()

if(EPS_SANITIZE)
  # Asio's fences, which g++ warns about, stand beside locks that the thread sanitizer does follow.
  add_compile_options(-fsanitize=${EPS_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer
                      $<$<CXX_COMPILER_ID:GNU>:-Wno-tsan>)
  add_link_options(-fsanitize=${EPS_SANITIZE})
else()
  # A sanitizer's runtime stands in the program only, so its libraries cannot be complete.
  add_link_options(-Wl,-z,defs)
endif()

if(EPS_COVERAGE)
  add_compile_options(--coverage -fprofile-update=atomic)
  add_link_options(--coverage)
endif()

# Nobody links ours with what compilers before GCC 7 made.
if(CMAKE_SYSTEM_PROCESSOR MATCHES "^arm" AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  add_compile_options(-Wno-psabi)
endif()
