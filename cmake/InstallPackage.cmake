# What `cmake --install` puts in place, and the CMake package for those who build against the host.
include(CMakePackageConfigHelpers)
set(package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/EmersonPowerSupply")

install(TARGETS powersupplyhost EXPORT EmersonPowerSupply
        LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}"
        INCLUDES DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/powersupplyhost")
install(TARGETS EmersonPowerSupply LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}")
install(TARGETS psu-agent RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}")
install(DIRECTORY "${CMAKE_SOURCE_DIR}/host"
        DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/powersupplyhost"
        FILES_MATCHING PATTERN "*.h")

install(EXPORT EmersonPowerSupply NAMESPACE EmersonPowerSupply::
        FILE EmersonPowerSupplyConfig.cmake DESTINATION "${package_dir}")
write_basic_package_version_file(EmersonPowerSupplyConfigVersion.cmake
                                 COMPATIBILITY SameMinorVersion)
install(FILES "${CMAKE_CURRENT_BINARY_DIR}/EmersonPowerSupplyConfigVersion.cmake"
        DESTINATION "${package_dir}")
