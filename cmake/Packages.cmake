# Debian packages, one for each component, made by cpack. packaging/build configures for them:
# prefix, directories and flags as Debian wants them.
set(CPACK_PACKAGE_NAME communications-service-client)
# Each package has a summary of its own.
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")
set(CPACK_PACKAGE_VENDOR "communications-service-client")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR}/packages)
set(CPACK_PACKAGE_CHECKSUM SHA256)
set(CPACK_PACKAGING_INSTALL_PREFIX ${CMAKE_INSTALL_PREFIX})
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ
    OWNER_WRITE
    OWNER_EXECUTE
    GROUP_READ
    GROUP_EXECUTE
    WORLD_READ
    WORLD_EXECUTE)
set(CPACK_COMPONENTS_ALL Runtime Development Documentation)
if(TARGET CommunicationsServiceRecorder)
  list(APPEND CPACK_COMPONENTS_ALL Recorder)
endif()
if(TARGET CommunicationsServiceKit)
  list(APPEND CPACK_COMPONENTS_ALL Kit)
endif()

set(CPACK_GENERATOR DEB)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER
    "Communications service client <communications-service-client@packages.invalid>")
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")

set(soname_package libcommunicationsserviceclient${COMMUNICATIONS_SERVICE_SOVERSION})
set(exactly "(= ${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})")

# debian_package(COMPONENT NAME SECTION SUMMARY TEXT-LINE...)
macro(debian_package component name section summary)
  string(TOUPPER ${component} upper)
  set(text "${summary}" ${ARGN})
  list(JOIN text "\n" CPACK_COMPONENT_${upper}_DESCRIPTION)
  set(CPACK_DEBIAN_${upper}_PACKAGE_NAME ${name})
  set(CPACK_DEBIAN_${upper}_PACKAGE_SECTION ${section})
  set(CPACK_DEBIAN_${upper}_DESCRIPTION "${CPACK_COMPONENT_${upper}_DESCRIPTION}")

  # What Debian wants to find in every package, and only there.
  set(changelog ${PROJECT_SOURCE_DIR}/packaging/changelog.Debian)
  compressed(changelog)
  install(
    FILES ${PROJECT_SOURCE_DIR}/packaging/copyright ${changelog}
    DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/doc/${name}
    COMPONENT ${component})
  if(EXISTS ${PROJECT_SOURCE_DIR}/packaging/overrides/${name})
    install(
      FILES ${PROJECT_SOURCE_DIR}/packaging/overrides/${name}
      DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/lintian/overrides
      COMPONENT ${component})
  endif()
endmacro()

debian_package(
  Runtime ${soname_package} libs "client library of a telephony communications service"
  "The library that the service framework of an IP phone opens: it turns the"
  "calls of applications into requests to the communications service, and the"
  "events of the service into calls of applications.")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SHLIBDEPS ON)

debian_package(
  Development libcommunicationsserviceclient-dev libdevel
  "what applications of a telephony communications service are built with"
  "Headers, and the files by which CMake and pkg-config find the client library"
  "of the communications service.")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${soname_package} ${exactly}")

debian_package(
  Documentation communications-service-client-doc doc
  "client library of a telephony communications service (documentation)"
  "How to write and to test applications of the communications service, how to"
  "bring the library onto a phone, and all requests and events as they travel.")
set(CPACK_DEBIAN_DOCUMENTATION_PACKAGE_ARCHITECTURE all)

debian_package(
  Recorder communications-service-recorder libs
  "client library of a telephony communications service (recording)"
  "A plug-in that the service framework of an IP phone opens in the place of the"
  "client library, and that writes what passes between applications and the"
  "communications service into a file.")
set(CPACK_DEBIAN_RECORDER_PACKAGE_SHLIBDEPS ON)

debian_package(
  Kit communications-service-kit devel
  "development kit for applications of a telephony communications service"
  "A stand-in for the framework of the phone, a simulated communications service,"
  "a console phone to drive it with, and helpers for the tests of applications.")
set(CPACK_DEBIAN_KIT_PACKAGE_DEPENDS
    "${soname_package} ${exactly}, libcommunicationsserviceclient-dev ${exactly}")
set(CPACK_DEBIAN_KIT_PACKAGE_SUGGESTS "libgmock-dev")
set(CPACK_DEBIAN_KIT_PACKAGE_SHLIBDEPS ON)

# A trigger lets ldconfig run. CPack would call it in scripts of its own, which Debian has given up:
# naming scripts that are not there keeps it from that.
file(WRITE ${generated_dir}/triggers "activate-noawait ldconfig\n")
foreach(upper IN ITEMS RUNTIME KIT)
  set(CPACK_DEBIAN_${upper}_PACKAGE_CONTROL_EXTRA
      ${generated_dir}/triggers ${generated_dir}/none/postinst ${generated_dir}/none/postrm)
endforeach()

include(CPack)
