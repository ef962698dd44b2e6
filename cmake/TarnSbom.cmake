# What a build is made of, as a list that programs read (CycloneDX): installed beside the documentation, and in the wheel
# (python/CMakeLists.txt). It is made where the packages of Debian can be asked; elsewhere an installation does without.

find_package(Python3 QUIET COMPONENTS Interpreter)
find_program(TARN_DPKG_QUERY dpkg-query)
find_program(TARN_READELF readelf)
set(TARN_MAKE_SBOM ${CMAKE_SOURCE_DIR}/scripts/make_sbom.py)
if(NOT Python3_FOUND OR NOT TARN_DPKG_QUERY OR NOT TARN_READELF)
  return()
endif()
# Libraries of headers alone leave nothing in what is linked: each by one of its headers.
find_file(TARN_HEADER_OF_MATH boost/math/distributions.hpp)
find_file(TARN_HEADER_OF_JSON nlohmann/json.hpp)
find_file(TARN_HEADER_OF_CLI11 CLI/CLI.hpp)
set(TARN_SBOM_HEADERS boost-math=${TARN_HEADER_OF_MATH} nlohmann-json=${TARN_HEADER_OF_JSON})

if(NOT TARN_BUILT)
  set(TARN_SBOM ${CMAKE_BINARY_DIR}/tarn.cdx.json)
  add_custom_command(OUTPUT ${TARN_SBOM}
    COMMAND ${Python3_EXECUTABLE} ${TARN_MAKE_SBOM} --version ${PROJECT_VERSION}
      $<TARGET_FILE:tarn_app> $<TARGET_FILE:tarn_library>
      --headers ${TARN_SBOM_HEADERS} CLI11=${TARN_HEADER_OF_CLI11}
      > ${TARN_SBOM}
    DEPENDS tarn_app tarn_library ${TARN_MAKE_SBOM} VERBATIM)
  add_custom_target(tarn_sbom ALL DEPENDS ${TARN_SBOM})
  install(FILES ${TARN_SBOM} DESTINATION ${CMAKE_INSTALL_DOCDIR})
endif()
