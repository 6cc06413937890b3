# SPDX-FileCopyrightText: 2026 The quorvel developers
# SPDX-License-Identifier: Apache-2.0

# Debian packages, one for each component of the installation (./dev package):
#
#   libquorvel1               the library and the fake platform, which it needs
#   libquorvel-dev            for building programs; with the platform's headers, because a program
#                             must start its binder threads
#   libquorvel-simulated-dev  for testing programs; separate, because a product does not need it
#   libquorvel-linux-dev      the same for programs that read the machine that they run on
#   quorvel                   the monitor
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME quorvel)
set(CPACK_PACKAGE_VENDOR quorvel)
set(CPACK_PACKAGE_CONTACT "The quorvel developers <quorvel@example.org>")
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR}/packages)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS
    ${PROJECT_BINARY_DIR}/src ${PROJECT_BINARY_DIR}/host/fake_platform)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)

# debian_component(COMPONENT PACKAGE SECTION TEXT [COMPONENT...]): makes a package of a component.
# It depends on the same version of the listed components.
function(debian_component component package section text)
  string(TOUPPER ${component} key)
  set(CPACK_DEBIAN_${key}_PACKAGE_NAME ${package} PARENT_SCOPE)
  set(CPACK_DEBIAN_${key}_PACKAGE_SECTION ${section} PARENT_SCOPE)
  set(CPACK_DEBIAN_${key}_DESCRIPTION "${text}" PARENT_SCOPE)
  set(CPACK_COMPONENT_${key}_DEPENDS ${ARGN} PARENT_SCOPE)
  set(CPACK_COMPONENTS_ALL ${CPACK_COMPONENTS_ALL} ${component} PARENT_SCOPE)
  if(QUORVEL_DEBIAN)
    # Every Debian package needs a copyright file and a changelog.
    set(doc ${CMAKE_INSTALL_DATADIR}/doc/${package})
    install(FILES packaging/debian/copyright DESTINATION ${doc} COMPONENT ${component})
    install(FILES ${PROJECT_BINARY_DIR}/changelog.Debian.gz DESTINATION ${doc}
            COMPONENT ${component})
  endif()
endfunction()

set(about "Battery, charger, proximity, hinge-angle and thermal state for the audio
service of an Android phone. On a host the library runs on a fake platform.")
set(CPACK_COMPONENTS_ALL)
debian_component(runtime libquorvel${PROJECT_VERSION_MAJOR} libs
  "${about}\n\nThis package contains the library and the fake platform.")
debian_component(dev libquorvel-dev libdevel
  "${about}\n\nThis package contains the headers and other files for building programs." runtime)
debian_component(simulated libquorvel-simulated-dev libdevel
  "${about}\n\nThis package contains a simulated phone for testing programs that use the\nlibrary."
  dev)
if(TARGET quorvel_linux_machine)
  debian_component(linux libquorvel-linux-dev libdevel
    "${about}\n\nThis package contains services with the batteries, temperatures and sensors of\nthis Linux machine."
    simulated)
  set(CPACK_DEBIAN_LINUX_PACKAGE_DEPENDS libudev-dev)
endif()
if(QUORVEL_MONITOR)
  debian_component(monitor quorvel utils
    "${about}\n\nThis package contains the monitor, which shows, records and plays back this\nstate."
    runtime)
  set(CPACK_DEBIAN_MONITOR_PACKAGE_RECOMMENDS "gnuplot-nox | gnuplot")
endif()
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/packaging/debian/triggers)
# The examples in it need the tools, and some the machine's package.
set(CPACK_DEBIAN_DEV_PACKAGE_SUGGESTS
    "cmake, g++, libquorvel-linux-dev, libquorvel-simulated-dev, make, pkg-config, quorvel")

if(QUORVEL_DEBIAN)
  # Dated as the changelog dates the version, so that packages come out alike every time.
  file(STRINGS CHANGELOG.md released REGEX "^## \\[${PROJECT_VERSION}\\] - ")
  string(REGEX REPLACE ".* - " "" released "${released}")
  execute_process(COMMAND date --utc --rfc-email --date "${released}" OUTPUT_VARIABLE released
                  OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
  configure_file(packaging/debian/changelog.in changelog.Debian @ONLY)
  execute_process(COMMAND gzip -9 --no-name --force --keep ${PROJECT_BINARY_DIR}/changelog.Debian
                  COMMAND_ERROR_IS_FATAL ANY)
endif()

include(CPack)
