# What `cmake --install` puts in place, and the CMake package for those who build against the host.
include(CMakePackageConfigHelpers)
set(package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/EmersonPowerSupply")

# The plug-in finds the host library two folders up, also in a host that did not load it before.
set_target_properties(EmersonPowerSupply PROPERTIES INSTALL_RPATH "$ORIGIN;$ORIGIN/../..")
install(TARGETS EmersonPowerSupply LIBRARY DESTINATION "${EPS_PLUGIN_DIR}")
install(TARGETS powersupplyhost EXPORT EmersonPowerSupply
        LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}"
        INCLUDES DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/powersupplyhost")
install(DIRECTORY "${CMAKE_SOURCE_DIR}/host"
        DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/powersupplyhost"
        FILES_MATCHING PATTERN "*.h")

# psu-agent, its man page, its completions, and its service with what that needs.
install(TARGETS psu-agent RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}")
install(FILES docs/psu-agent.1 DESTINATION "${CMAKE_INSTALL_MANDIR}/man1")
install(FILES packaging/completion/psu-agent.bash RENAME psu-agent
        DESTINATION "${CMAKE_INSTALL_DATADIR}/bash-completion/completions")
install(FILES packaging/completion/psu-agent.fish
        DESTINATION "${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d")
install(FILES packaging/completion/psu-agent.zsh RENAME _psu-agent
        DESTINATION "${CMAKE_INSTALL_DATADIR}/zsh/vendor-completions")
install(DIRECTORY samples/models DESTINATION "${CMAKE_INSTALL_DATADIR}/psu-agent"
        FILES_MATCHING PATTERN "*.json")
install(FILES agent/models/model-file.schema.json
        DESTINATION "${CMAKE_INSTALL_DATADIR}/psu-agent")
string(JOIN " " EPS_SERVICE_COMMAND
       "${CMAKE_INSTALL_FULL_BINDIR}/psu-agent" monitor
       --models "${CMAKE_INSTALL_FULL_SYSCONFDIR}/psu-agent/models.d"
       --config "${CMAKE_INSTALL_FULL_SYSCONFDIR}/psu-agent.conf"
       --publish %t/psu-agent --keep --incidents %S/psu-agent)
configure_file(packaging/psu-agent.service.in psu-agent.service @ONLY)
install(FILES "${CMAKE_CURRENT_BINARY_DIR}/psu-agent.service" DESTINATION lib/systemd/system)
install(FILES packaging/psu-agent.conf DESTINATION "${CMAKE_INSTALL_SYSCONFDIR}")
install(DIRECTORY DESTINATION "${CMAKE_INSTALL_SYSCONFDIR}/psu-agent/models.d")
install(FILES packaging/psu-agent.sysusers RENAME psu-agent.conf DESTINATION lib/sysusers.d)
install(FILES packaging/60-psu-agent.rules DESTINATION lib/udev/rules.d)

set(plugin_file
    "${CMAKE_SHARED_LIBRARY_PREFIX}EmersonPowerSupply${CMAKE_SHARED_LIBRARY_SUFFIX}")
configure_package_config_file(cmake/package/EmersonPowerSupplyConfig.cmake.in
                              EmersonPowerSupplyConfig.cmake
                              INSTALL_DESTINATION "${package_dir}" PATH_VARS EPS_PLUGIN_DIR)
write_basic_package_version_file(EmersonPowerSupplyConfigVersion.cmake
                                 COMPATIBILITY ${EPS_COMPATIBILITY})
install(EXPORT EmersonPowerSupply NAMESPACE EmersonPowerSupply::
        FILE EmersonPowerSupplyTargets.cmake DESTINATION "${package_dir}")
install(FILES "${CMAKE_CURRENT_BINARY_DIR}/EmersonPowerSupplyConfig.cmake"
              "${CMAKE_CURRENT_BINARY_DIR}/EmersonPowerSupplyConfigVersion.cmake"
        DESTINATION "${package_dir}")
