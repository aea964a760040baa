# What a version promises to those who build against the host library: docs/host.md says it, and the
# soname, the CMake package and the Debian packages' names and dependencies follow from here.
set(EPS_COMPATIBILITY SameMinorVersion)
set(EPS_SOVERSION "${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR}")
