# What every target of this project is compiled with. Linked privately, so that none of it reaches
# those who use the library.
add_library(CommunicationsServiceOptions INTERFACE)
target_compile_features(CommunicationsServiceOptions INTERFACE cxx_std_17)
target_compile_options(CommunicationsServiceOptions INTERFACE -Wall -Wextra -Wpedantic -Wshadow
                                                              -Wconversion)
if(COMMUNICATIONS_SERVICE_WERROR)
  target_compile_options(CommunicationsServiceOptions INTERFACE -Werror)
endif()
if(COMMUNICATIONS_SERVICE_SANITIZE)
  target_compile_options(
    CommunicationsServiceOptions INTERFACE -fsanitize=${COMMUNICATIONS_SERVICE_SANITIZE}
                                           -fno-sanitize-recover=all -fno-omit-frame-pointer)
  # The check of dynamic types needs descriptors, and takes their lack for a fault; the simulated
  # service is tested without any.
  if(COMMUNICATIONS_SERVICE_SANITIZE MATCHES undefined)
    target_compile_options(
      CommunicationsServiceOptions
      INTERFACE
        "$<$<IN_LIST:$<TARGET_PROPERTY:NAME>,CommunicationsServiceKit;communications-service-sim>:-fno-sanitize=vptr>")
  endif()
  target_link_options(CommunicationsServiceOptions INTERFACE
                      -fsanitize=${COMMUNICATIONS_SERVICE_SANITIZE})
endif()
set(CMAKE_CXX_EXTENSIONS OFF)
