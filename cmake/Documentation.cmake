# The target "documentation": headers and pages as HTML. Warnings are errors.
find_package(Doxygen 1.9.2 REQUIRED)

set(documentation_dir ${PROJECT_BINARY_DIR}/documentation)
set(documentation_input
    ${PROJECT_SOURCE_DIR}/README.md
    ${PROJECT_SOURCE_DIR}/CONTRIBUTING.md
    ${PROJECT_SOURCE_DIR}/docs
    ${PROJECT_SOURCE_DIR}/include
    ${PROJECT_SOURCE_DIR}/kit/framework
    ${PROJECT_SOURCE_DIR}/kit/protocol
    ${PROJECT_SOURCE_DIR}/kit/service/SimulatedService.h
    ${PROJECT_SOURCE_DIR}/kit/testing)
list(TRANSFORM documentation_input REPLACE "(.+)" "\"\\1\"")
list(JOIN documentation_input " " documentation_input)
configure_file(${PROJECT_SOURCE_DIR}/docs/Doxyfile.in ${documentation_dir}/Doxyfile @ONLY)

add_custom_target(
  documentation ALL
  COMMAND Doxygen::doxygen ${documentation_dir}/Doxyfile
  WORKING_DIRECTORY ${PROJECT_SOURCE_DIR}
  COMMENT "Documentation into ${documentation_dir}/html"
  VERBATIM)
