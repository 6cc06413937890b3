# libquorvel.so, from the object libraries of its folders. What Android.bp does on a device.
add_library(quorvel SHARED)
add_library(quorvel::quorvel ALIAS quorvel)
target_link_libraries(quorvel PRIVATE quorvel_common quorvel_battery quorvel_sensor
                      quorvel_thermal quorvel_thermal_hidl_wrapper quorvel_platform)
target_include_directories(quorvel PUBLIC $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include>)
set_target_properties(quorvel PROPERTIES
  VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR}
  LINK_DEPENDS ${PROJECT_SOURCE_DIR}/libquorvel.map.txt)
target_link_options(quorvel PRIVATE
  # The exports, and nothing else.
  LINKER:--version-script=${PROJECT_SOURCE_DIR}/libquorvel.map.txt
  # Its own calls go straight to its own functions: nobody is to stand before one of them.
  LINKER:-Bsymbolic-functions
  # The platform may hold callbacks of the library after the last handle is gone: its code stays.
  LINKER:-z,nodelete)
if(NOT QUORVEL_SANITIZE)
  target_link_options(quorvel PRIVATE LINKER:-z,defs)
endif()
