# SPDX-FileCopyrightText: 2026 The quorvel developers
# SPDX-License-Identifier: Apache-2.0

# Rules for cmake --install, in five components, one per package:
#
#   runtime    the library and the fake platform
#   dev        for building programs: headers, link names, pkg-config, CMake, documents
#   simulated  for tests: the simulated phone and the controls of the fake platform
#   linux      the Linux machine, whose services are in the component simulated
#   monitor    the monitor, its manual page and its completions
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)
if(QUORVEL_DEBIAN)
  # No cache variables: the same build can also be installed elsewhere.
  set(CMAKE_INSTALL_LIBDIR lib/${CMAKE_LIBRARY_ARCHITECTURE})
  set(CMAKE_INSTALL_DOCDIR ${CMAKE_INSTALL_DATADIR}/doc/libquorvel-dev)
endif()

foreach(dir BINDIR LIBDIR INCLUDEDIR DATADIR DOCDIR MANDIR)
  if(IS_ABSOLUTE "${CMAKE_INSTALL_${dir}}")
    message(FATAL_ERROR "CMAKE_INSTALL_${dir} is '${CMAKE_INSTALL_${dir}}': use a relative path, "
            "so that the installed tree can be moved")
  endif()
endforeach()

set(quorvel_include ${CMAKE_INSTALL_INCLUDEDIR}/quorvel)
set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/quorvel)

# A relative run path, so that the installed tree can be moved. Packages for the system's folders
# have none.
if(NOT QUORVEL_DEBIAN)
  set_target_properties(quorvel PROPERTIES INSTALL_RPATH "$ORIGIN")
endif()

# The libraries. The fake platform's include path has only the platform's headers, so that a program
# cannot include a header that a phone does not have.
set_target_properties(quorvel_fake_platform PROPERTIES EXPORT_NAME fake_platform)
set_target_properties(quorvel_simulated PROPERTIES EXPORT_NAME simulated)
target_include_directories(quorvel INTERFACE $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
target_include_directories(quorvel_fake_platform
  INTERFACE $<INSTALL_INTERFACE:${quorvel_include}/fake_platform>)
foreach(target quorvel_fake_platform_control quorvel_services quorvel_simulated)
  target_include_directories(${target} INTERFACE $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
endforeach()
target_compile_features(quorvel_services INTERFACE cxx_std_20)

install(TARGETS quorvel quorvel_fake_platform EXPORT quorvelTargets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT dev)
install(TARGETS quorvel_simulated quorvel_services quorvel_fake_platform_control
        EXPORT quorvelSimulatedTargets
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT simulated)
if(TARGET quorvel_linux_machine)
  target_include_directories(quorvel_linux_machine
    INTERFACE $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
  install(TARGETS quorvel_linux_machine EXPORT quorvelLinuxTargets
          ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT linux)
  install(EXPORT quorvelLinuxTargets NAMESPACE quorvel:: DESTINATION ${package_dir}
          COMPONENT linux)
  install(DIRECTORY host/linux_machine/include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
          COMPONENT linux)
endif()
install(FILES include/quorvel.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT dev)
install(DIRECTORY host/fake_platform/include/ DESTINATION ${quorvel_include}/fake_platform
        COMPONENT dev)
# For #include <quorvel/simulated/health.h>, <quorvel/services/...>, <quorvel/fake/...>.
install(DIRECTORY host/fake_platform/control/ host/services/include/ host/simulated/include/
        DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT simulated)

# The CMake package.
configure_package_config_file(packaging/quorvelConfig.cmake.in quorvelConfig.cmake
                              INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(quorvelConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/quorvelConfig.cmake
              ${PROJECT_BINARY_DIR}/quorvelConfigVersion.cmake
        DESTINATION ${package_dir} COMPONENT dev)
install(EXPORT quorvelTargets NAMESPACE quorvel:: DESTINATION ${package_dir} COMPONENT dev)
install(EXPORT quorvelSimulatedTargets NAMESPACE quorvel:: DESTINATION ${package_dir}
        COMPONENT simulated)

# pkg-config.
file(RELATIVE_PATH from_pc_to_prefix /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
foreach(name quorvel quorvel-fake-platform quorvel-simulated quorvel-linux)
  configure_file(packaging/${name}.pc.in ${name}.pc @ONLY)
endforeach()
install(FILES ${PROJECT_BINARY_DIR}/quorvel.pc ${PROJECT_BINARY_DIR}/quorvel-fake-platform.pc
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT dev)
install(FILES ${PROJECT_BINARY_DIR}/quorvel-simulated.pc
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT simulated)
if(TARGET quorvel_linux_machine)
  install(FILES ${PROJECT_BINARY_DIR}/quorvel-linux.pc
          DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT linux)
endif()

# Documents, in the folders of the source tree, because they link to each other.
install(FILES README.md DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT dev)
if(QUORVEL_DEBIAN)
  configure_file(CHANGELOG.md changelog COPYONLY)
  execute_process(COMMAND gzip -9 --no-name --force --keep ${PROJECT_BINARY_DIR}/changelog
                  COMMAND_ERROR_IS_FATAL ANY)
  install(FILES ${PROJECT_BINARY_DIR}/changelog.gz DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT dev)
else()
  install(FILES CHANGELOG.md DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT dev)
  install(FILES LICENSE DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT runtime)
endif()
# Other files that the documents link to.
foreach(file host/fake_platform/README.md host/linux_machine/README.md monitor/README.md
        include/quorvel.h Android.bp CONTRIBUTING.md SECURITY.md tests/random/README.md
        tests/stress/README.md)
  cmake_path(GET file PARENT_PATH folder)
  install(FILES ${file} DESTINATION ${CMAKE_INSTALL_DOCDIR}/${folder} COMPONENT dev)
endforeach()
install(DIRECTORY docs examples DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT dev
        PATTERN "Doxyfile*" EXCLUDE PATTERN "reference.md" EXCLUDE PATTERN "build" EXCLUDE)

if(QUORVEL_MONITOR)
  if(QUORVEL_DEBIAN)
    # The monitor's guide, and what it and the help refer to. Its package does not depend on
    # libquorvel-dev, which has all documents.
    set(doc ${CMAKE_INSTALL_DATADIR}/doc/quorvel)
    install(FILES docs/monitor.md docs/recordings.md docs/recording.schema.json
            DESTINATION ${doc}/docs COMPONENT monitor)
    install(DIRECTORY docs/examples DESTINATION ${doc}/docs COMPONENT monitor)
    install(FILES host/linux_machine/README.md DESTINATION ${doc}/host/linux_machine
            COMPONENT monitor)
    install(FILES monitor/README.md DESTINATION ${doc}/monitor COMPONENT monitor)
  else()
    file(RELATIVE_PATH from_bin_to_lib /${CMAKE_INSTALL_BINDIR} /${CMAKE_INSTALL_LIBDIR})
    set_target_properties(quorvel_monitor PROPERTIES INSTALL_RPATH "$ORIGIN/${from_bin_to_lib}")
  endif()
  # The build of the monitor makes both.
  install(FILES ${PROJECT_BINARY_DIR}/man/quorvel.1$<$<BOOL:${QUORVEL_DEBIAN}>:.gz> DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT monitor)
  install(TARGETS quorvel_monitor RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT monitor)
  # Where the shells look: Debian's zsh has a folder of its own for packages.
  set(zsh $<IF:$<BOOL:${QUORVEL_DEBIAN}>,vendor-completions,site-functions>)
  foreach(completion
          "quorvel.bash|bash-completion/completions|quorvel"
          "_quorvel|zsh/${zsh}|_quorvel"
          "quorvel.fish|fish/vendor_completions.d|quorvel.fish")
    string(REPLACE "|" ";" completion ${completion})
    list(GET completion 0 file)
    list(GET completion 1 folder)
    list(GET completion 2 name)
    install(FILES packaging/completions/${file} DESTINATION ${CMAKE_INSTALL_DATADIR}/${folder}
            RENAME ${name} COMPONENT monitor)
  endforeach()
endif()
