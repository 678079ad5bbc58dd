# The Debian packages by CPack: the provider, the chip library of any Linux machine, the simulated terminal, the host, its
# services, what watches many terminals. Made by the preset "package".
foreach(package zelsensors zelsensors-linux zelsensors-simulator zelhost zelsensors-metrics zelsensors-fleet)
    set(component_of_zelsensors provider)
    set(component_of_zelsensors-linux zelsensors-linux)
    set(component_of_zelsensors-simulator simulator)
    set(component_of_zelhost host)
    set(component_of_zelsensors-metrics metrics)
    set(component_of_zelsensors-fleet fleet)
    set(component ${component_of_${package}})
    # Each package has its own copyright file, since the programs differ in the libraries that are compiled into them.
    install(FILES debian/${package}.copyright DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${package}
        RENAME copyright COMPONENT ${component})
    configure_file(debian/changelog.in ${CMAKE_CURRENT_BINARY_DIR}/${package}/changelog @ONLY)
    install(FILES ${CMAKE_CURRENT_BINARY_DIR}/${package}/changelog
        DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${package} COMPONENT ${component})
    if(EXISTS ${CMAKE_CURRENT_SOURCE_DIR}/debian/${package}.lintian-overrides)
        install(FILES debian/${package}.lintian-overrides DESTINATION ${CMAKE_INSTALL_DATADIR}/lintian/overrides
            RENAME ${package} COMPONENT ${component})
    endif()

    string(TOUPPER ${component} COMPONENT_NAME)
    set(CPACK_DEBIAN_${COMPONENT_NAME}_PACKAGE_NAME ${package})
endforeach()

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME zelsensors)
set(CPACK_PACKAGE_CONTACT "Zelsensors Developers <zelsensors@quorvel.example>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")  # or CPack puts one line before the description of each
set(CPACK_DEBIAN_PACKAGE_SECTION admin)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_SET_DESTDIR ON)  # for what goes outside the prefix: /etc and /var
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_CURRENT_SOURCE_DIR}/FinishStaging.cmake)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL provider zelsensors-linux simulator host metrics fleet)
set(CPACK_COMPONENTS_GROUPING ONE_PER_GROUP)

# The provider's package depends on no package with a chip library: the terminal has its own, and on any other machine
# the administrator chooses one.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR}/chipsim)

set(CPACK_DEBIAN_PROVIDER_DESCRIPTION "hardware-health CIM provider of a point-of-sale terminal
A CMPI instance provider for an object manager (sfcb, OpenPegasus). It
publishes the terminal's temperatures, voltages, currents and fan speeds as
TQS_NumericSensor, and the motherboard's event log as TQS_SystemEventLog.

The chip library libzelchip.so.0, which the provider needs, comes with the
terminal and is in no Debian package. On another machine the package
zelsensors-linux has one that shows that machine's sensors, and the package
zelsensors-simulator one that plays a terminal.")
set(CPACK_DEBIAN_PROVIDER_PACKAGE_RECOMMENDS "logrotate")
set(CPACK_DEBIAN_PROVIDER_PACKAGE_SUGGESTS "zelhost, zelsensors-linux, zelsensors-simulator")
set(CPACK_DEBIAN_PROVIDER_PACKAGE_CONTROL_EXTRA
    ${CMAKE_CURRENT_SOURCE_DIR}/debian/zelsensors/conffiles
    ${CMAKE_CURRENT_SOURCE_DIR}/debian/zelsensors/postrm
    ${CMAKE_CURRENT_SOURCE_DIR}/debian/zelsensors/prerm
    ${CMAKE_CURRENT_SOURCE_DIR}/debian/zelsensors/triggers)

# libzelchip0 stands for whatever package brings the terminal's own library. On a terminal that has it from none,
# preinst refuses.
set(CPACK_DEBIAN_ZELSENSORS-LINUX_DESCRIPTION "chip library of any Linux machine for the provider zelsensors
The library libzelchip.so.0 for machines that are no terminals. It shows what
the kernel's drivers measure (temperatures, voltages, currents, power, fans,
humidity), as libsensors reads it, and the event log of the firmware.

It is installed where the system's loader finds it, and so must not be on a
terminal, which has a library of that name for its own chip: installing it
there is refused.")
set(CPACK_DEBIAN_ZELSENSORS-LINUX_PACKAGE_PROVIDES "libzelchip0")
set(CPACK_DEBIAN_ZELSENSORS-LINUX_PACKAGE_CONFLICTS "libzelchip0")
set(CPACK_DEBIAN_ZELSENSORS-LINUX_PACKAGE_RECOMMENDS "zelsensors")
set(CPACK_DEBIAN_ZELSENSORS-LINUX_PACKAGE_SUGGESTS "lm-sensors, zelhost")
set(CPACK_DEBIAN_ZELSENSORS-LINUX_PACKAGE_CONTROL_EXTRA
    ${CMAKE_CURRENT_SOURCE_DIR}/debian/zelsensors-linux/preinst
    ${CMAKE_CURRENT_SOURCE_DIR}/debian/zelsensors-linux/triggers)

set(CPACK_DEBIAN_SIMULATOR_DESCRIPTION "simulated point-of-sale terminal for the provider zelsensors
A chip library with the name and the symbols of the terminal's own, driven by
scenario files, for development, demonstrations and tests. It is installed in
a directory of its own, where the system's loader does not find it: on a
terminal it never takes the place of the real library.")
set(CPACK_DEBIAN_SIMULATOR_PACKAGE_SUGGESTS "zelsensors, zelhost")

set(CPACK_DEBIAN_HOST_DESCRIPTION "command-line host for CMPI instance providers
Loads a provider library as an object manager does, sends it requests and
shows the answers as a table, as JSON or as MOF. Shows the sensors and the
event log of a point-of-sale terminal without an object manager.")
set(CPACK_DEBIAN_HOST_PACKAGE_RECOMMENDS "zelsensors")
set(CPACK_DEBIAN_HOST_PACKAGE_SUGGESTS "zelsensors-simulator, zelsensors-metrics")

set(CPACK_DEBIAN_METRICS_DESCRIPTION "health of a point-of-sale terminal for Prometheus and the journal
Two sandboxed services of systemd. One keeps a page with the terminal's
readings, thresholds and states, which the textfile collector of
prometheus-node-exporter takes. The other writes each new line of the
motherboard's event log into the journal, once.

They show the terminal's own sensors, never those of a simulated terminal.")
set(CPACK_DEBIAN_METRICS_PACKAGE_ARCHITECTURE "all")
set(CPACK_DEBIAN_METRICS_PACKAGE_SHLIBDEPS OFF)
set(CPACK_DEBIAN_METRICS_PACKAGE_DEPENDS "zelsensors (>= ${PROJECT_VERSION}), zelhost (>= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_METRICS_PACKAGE_RECOMMENDS "prometheus-node-exporter")
set(CPACK_DEBIAN_METRICS_PACKAGE_SUGGESTS "zelsensors-linux")
set(CPACK_DEBIAN_METRICS_PACKAGE_CONTROL_EXTRA
    ${CMAKE_CURRENT_SOURCE_DIR}/debian/zelsensors-metrics/conffiles
    ${CMAKE_CURRENT_SOURCE_DIR}/debian/zelsensors-metrics/postinst
    ${CMAKE_CURRENT_SOURCE_DIR}/debian/zelsensors-metrics/prerm
    ${CMAKE_CURRENT_SOURCE_DIR}/debian/zelsensors-metrics/postrm)

set(CPACK_DEBIAN_FLEET_DESCRIPTION "rules and page for many point-of-sale terminals
For the Prometheus server that watches terminals: recording and alerting
rules for what zelhost metrics tells, a page of all terminals for its console
directory, and examples for Prometheus and Alertmanager.

It changes no configuration: fleet.md says which lines to add.")
set(CPACK_DEBIAN_FLEET_PACKAGE_ARCHITECTURE all)
set(CPACK_DEBIAN_FLEET_PACKAGE_SHLIBDEPS OFF)
set(CPACK_DEBIAN_FLEET_PACKAGE_RECOMMENDS "prometheus")
set(CPACK_DEBIAN_FLEET_PACKAGE_SUGGESTS "prometheus-alertmanager, prometheus-node-exporter")
set(CPACK_DEBIAN_FLEET_PACKAGE_CONTROL_EXTRA ${CMAKE_CURRENT_SOURCE_DIR}/debian/zelsensors-fleet/conffiles)

include(CPack)
