# Debian packages, one for each component of the installation (./dev package):
#
#   libquorvel1               both libraries: one without the other serves nobody
#   libquorvel-dev            to build a program: also the platform's headers, since a program has
#                             to start its binder threads
#   libquorvel-simulated-dev  to test one; apart, since it is for nobody's product
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

# debian_component(COMPONENT PACKAGE SECTION TEXT [COMPONENT...]): the package, and the
# components that it needs in the same version.
function(debian_component component package section text)
  string(TOUPPER ${component} key)
  set(CPACK_DEBIAN_${key}_PACKAGE_NAME ${package} PARENT_SCOPE)
  set(CPACK_DEBIAN_${key}_PACKAGE_SECTION ${section} PARENT_SCOPE)
  set(CPACK_DEBIAN_${key}_DESCRIPTION "${text}" PARENT_SCOPE)
  set(CPACK_COMPONENT_${key}_DEPENDS ${ARGN} PARENT_SCOPE)
  set(CPACK_COMPONENTS_ALL ${CPACK_COMPONENTS_ALL} ${component} PARENT_SCOPE)
  if(QUORVEL_DEBIAN)
    # What every package has to say of itself.
    set(doc ${CMAKE_INSTALL_DATADIR}/doc/${package})
    install(FILES packaging/debian/copyright DESTINATION ${doc} COMPONENT ${component})
    install(FILES ${PROJECT_BINARY_DIR}/changelog.Debian.gz DESTINATION ${doc}
            COMPONENT ${component})
  endif()
endfunction()

set(about "Battery and chargers, proximity sensor and hinge angle, thermal throttling
and temperatures, as an audio stack on an Android device wants to know them.
On a host a fake platform takes the place of the real one.")
set(CPACK_COMPONENTS_ALL)
debian_component(runtime libquorvel${PROJECT_VERSION_MAJOR} libs
  "${about}\n\nThis package has the library and the fake platform.")
debian_component(dev libquorvel-dev libdevel
  "${about}\n\nThis package has what programs need to be built with the library." runtime)
debian_component(simulated libquorvel-simulated-dev libdevel
  "${about}\n\nThis package has a phone inside the program, for tests of what uses the\nlibrary."
  dev)
if(QUORVEL_MONITOR)
  debian_component(monitor quorvel utils
    "${about}\n\nThis package has a program that watches, asks, records and plays." runtime)
  set(CPACK_DEBIAN_MONITOR_PACKAGE_RECOMMENDS gnuplot)
endif()
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/packaging/debian/triggers)
set(CPACK_DEBIAN_DEV_PACKAGE_SUGGESTS "libquorvel-simulated-dev, quorvel")

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
