# What goes where when the project is installed. Components: Runtime (the library), Development
# (what an application is built with), Recorder (the recording plug-in), Kit (the development kit),
# Documentation.
include(CMakePackageConfigHelpers)

set(include_dir ${CMAKE_INSTALL_INCLUDEDIR}/communications-service)
set(cmake_dir ${CMAKE_INSTALL_LIBDIR}/cmake/CommunicationsService)
set(pkgconfig_dir ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
set(generated_dir ${PROJECT_BINARY_DIR}/install)

# install_library(TARGET COMPONENT DEVELOPMENT-COMPONENT)
function(install_library target component development)
  install(
    TARGETS ${target}
    EXPORT ${target}Targets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
            COMPONENT ${component}
            NAMELINK_COMPONENT ${development}
    INCLUDES
    DESTINATION ${include_dir})
  install(
    EXPORT ${target}Targets
    NAMESPACE CommunicationsService::
    DESTINATION ${cmake_dir}
    COMPONENT ${development})
endfunction()

# install_pkgconfig(NAME COMPONENT): found from where the file itself lies, wherever that is.
function(install_pkgconfig name component)
  foreach(variable IN ITEMS LIBDIR INCLUDEDIR)
    string(TOLOWER ${variable} lower)
    set(${lower} ${CMAKE_INSTALL_FULL_${variable}})
    cmake_path(RELATIVE_PATH ${lower} BASE_DIRECTORY ${CMAKE_INSTALL_PREFIX})
  endforeach()
  set(up ${CMAKE_INSTALL_PREFIX})
  cmake_path(RELATIVE_PATH up BASE_DIRECTORY ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig)
  configure_file(${PROJECT_SOURCE_DIR}/cmake/${name}.pc.in ${generated_dir}/${name}.pc @ONLY)
  install(
    FILES ${generated_dir}/${name}.pc
    DESTINATION ${pkgconfig_dir}
    COMPONENT ${component})
endfunction()

# compressed(VARIABLE): puts a compressed copy in the place of the named file, as Debian wants it.
function(compressed variable)
  cmake_path(GET ${variable} FILENAME name)
  configure_file(${${variable}} ${generated_dir}/compressed/${name} COPYONLY)
  execute_process(COMMAND gzip -9nf ${generated_dir}/compressed/${name} COMMAND_ERROR_IS_FATAL ANY)
  set(${variable}
      ${generated_dir}/compressed/${name}.gz
      PARENT_SCOPE)
endfunction()

# The library.
install_library(CommunicationsServiceClient Runtime Development)
install(
  TARGETS CommunicationsServiceHeaders
  EXPORT CommunicationsServiceClientTargets
  INCLUDES
  DESTINATION ${include_dir})
install(
  DIRECTORY ${PROJECT_SOURCE_DIR}/include/
  DESTINATION ${include_dir}
  COMPONENT Development
  FILES_MATCHING
  PATTERN "*.h")
install(
  DIRECTORY ${PROJECT_SOURCE_DIR}/application
  DESTINATION ${include_dir}
  COMPONENT Development
  FILES_MATCHING
  PATTERN "*.h")
install_pkgconfig(communications-service-client Development)

configure_package_config_file(
  ${PROJECT_SOURCE_DIR}/cmake/CommunicationsServiceConfig.cmake.in
  ${generated_dir}/CommunicationsServiceConfig.cmake
  INSTALL_DESTINATION ${cmake_dir}
  PATH_VARS include_dir)
write_basic_package_version_file(${generated_dir}/CommunicationsServiceConfigVersion.cmake
                                 COMPATIBILITY SameMajorVersion)
install(
  FILES ${generated_dir}/CommunicationsServiceConfig.cmake
        ${generated_dir}/CommunicationsServiceConfigVersion.cmake
  DESTINATION ${cmake_dir}
  COMPONENT Development)

# The name under which the framework opens the library.
if(COMMUNICATIONS_SERVICE_PLUGIN)
  cmake_path(ABSOLUTE_PATH COMMUNICATIONS_SERVICE_PLUGIN BASE_DIRECTORY ${CMAKE_INSTALL_PREFIX}
             OUTPUT_VARIABLE plugin)
  cmake_path(GET plugin PARENT_PATH plugin_dir)
  cmake_path(GET plugin FILENAME plugin_name)
  if(plugin_dir STREQUAL CMAKE_INSTALL_FULL_LIBDIR
     AND plugin_name MATCHES "^libCommunicationsServiceClient\\.so")
    message(
      FATAL_ERROR "COMMUNICATIONS_SERVICE_PLUGIN=${COMMUNICATIONS_SERVICE_PLUGIN} is a name that "
                  "the library has anyway; leave it empty or choose another")
  endif()
  set(library
      ${CMAKE_INSTALL_FULL_LIBDIR}/libCommunicationsServiceClient.so.${COMMUNICATIONS_SERVICE_SOVERSION}
  )
  cmake_path(RELATIVE_PATH library BASE_DIRECTORY ${plugin_dir})
  file(MAKE_DIRECTORY ${generated_dir}/plugin)
  file(CREATE_LINK ${library} ${generated_dir}/plugin/${plugin_name} SYMBOLIC)
  cmake_path(IS_PREFIX CMAKE_INSTALL_PREFIX ${plugin_dir} inside)
  if(inside)
    cmake_path(RELATIVE_PATH plugin_dir BASE_DIRECTORY ${CMAKE_INSTALL_PREFIX})
  endif()
  install(
    FILES ${generated_dir}/plugin/${plugin_name}
    DESTINATION ${plugin_dir}
    COMPONENT Runtime)
endif()

# The recording plug-in, which has the library's name: in a folder of its own.
if(TARGET CommunicationsServiceRecorder)
  install(
    TARGETS CommunicationsServiceRecorder
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}/communications-service/recording
            COMPONENT Recorder)
endif()

# The development kit.
if(TARGET CommunicationsServiceKit)
  install_library(CommunicationsServiceKit Kit Kit)
  # A package lies where the loader looks; elsewhere, /usr/local included, programs are told.
  if(NOT COMMUNICATIONS_SERVICE_PACKAGES)
    set(rpath " -Wl,-rpath,\${libdir}")
  endif()
  install_pkgconfig(communications-service-kit Kit)
  # Of the service, its face alone: what it is made of is nobody's business.
  install(
    DIRECTORY ${PROJECT_SOURCE_DIR}/kit/binding ${PROJECT_SOURCE_DIR}/kit/framework
              ${PROJECT_SOURCE_DIR}/kit/protocol ${PROJECT_SOURCE_DIR}/kit/testing
              ${PROJECT_SOURCE_DIR}/kit/trace
    DESTINATION ${include_dir}/kit
    COMPONENT Kit
    FILES_MATCHING
    PATTERN "*.h"
    PATTERN "Mock*.cpp"
    PATTERN "Columns.h" EXCLUDE
    PATTERN "Frame.h" EXCLUDE
    PATTERN "FrameStream.h" EXCLUDE
    PATTERN "page" EXCLUDE)
  install(
    FILES ${PROJECT_SOURCE_DIR}/kit/service/EmbeddedConnection.h
          ${PROJECT_SOURCE_DIR}/kit/service/Replay.h
          ${PROJECT_SOURCE_DIR}/kit/service/Service.h
          ${PROJECT_SOURCE_DIR}/kit/service/SimulatedService.h
    DESTINATION ${include_dir}/kit/service
    COMPONENT Kit)
  set(libdir_from_bin ${CMAKE_INSTALL_FULL_LIBDIR})
  cmake_path(RELATIVE_PATH libdir_from_bin BASE_DIRECTORY ${CMAKE_INSTALL_FULL_BINDIR})
  foreach(program IN ITEMS communications-phone communications-service-sim)
    if(TARGET ${program})
      set_target_properties(${program} PROPERTIES INSTALL_RPATH "$ORIGIN/${libdir_from_bin}")
      install(TARGETS ${program} RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT Kit)
      set(manual ${PROJECT_SOURCE_DIR}/docs/man/${program}.1)
      if(COMMUNICATIONS_SERVICE_PACKAGES)
        compressed(manual)
      endif()
      install(
        FILES ${manual}
        DESTINATION ${CMAKE_INSTALL_MANDIR}/man1
        COMPONENT Kit)
    endif()
  endforeach()
endif()

# The documentation, laid out as in the repository, so that links from page to page hold, with all
# that the pages quote.
install(
  DIRECTORY ${PROJECT_SOURCE_DIR}/docs ${PROJECT_SOURCE_DIR}/examples
  DESTINATION ${CMAKE_INSTALL_DOCDIR}
  COMPONENT Documentation
  PATTERN "man" EXCLUDE
  PATTERN "*.in" EXCLUDE)
install(
  DIRECTORY ${PROJECT_SOURCE_DIR}/tests/install/outside
  DESTINATION ${CMAKE_INSTALL_DOCDIR}/tests/install
  COMPONENT Documentation)
install(
  FILES ${PROJECT_SOURCE_DIR}/README.md ${PROJECT_SOURCE_DIR}/CONTRIBUTING.md
  DESTINATION ${CMAKE_INSTALL_DOCDIR}
  COMPONENT Documentation)
if(TARGET documentation)
  install(
    DIRECTORY ${PROJECT_BINARY_DIR}/documentation/html
    DESTINATION ${CMAKE_INSTALL_DOCDIR}
    COMPONENT Documentation)
endif()

if(COMMUNICATIONS_SERVICE_PACKAGES)
  include(${CMAKE_CURRENT_LIST_DIR}/Packages.cmake)
endif()
