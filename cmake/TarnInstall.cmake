# What `cmake --install` brings besides the command and its pages (apps/tarn): the library, the headers for a host of
# one's own, the packages of CMake and pkg-config that find them, and the documentation. Nothing in it names the prefix,
# so an installed tree can be moved.

include(CMakePackageConfigHelpers)

# The include directory is ${TARN_INCLUDES} itself; below it the headers stand as in src/, as their own includes say.
set(TARN_INCLUDES ${CMAKE_INSTALL_INCLUDEDIR}/tarn)
set(TARN_CMAKE_FOLDER ${CMAKE_INSTALL_LIBDIR}/cmake/tarn)

# ---- The library, and what a caller in C++ links beside it ----

set_target_properties(tarn_library PROPERTIES EXPORT_NAME tarn)
install(TARGETS tarn_library EXPORT tarnTargets INCLUDES DESTINATION ${TARN_INCLUDES})
install(EXPORT tarnTargets NAMESPACE tarn:: DESTINATION ${TARN_CMAKE_FOLDER})

# Settings and fields are classes that a caller in C++ makes itself. The library has them within it and doesn't show
# them, so they come as an archive. It is a set of its own: a host in C needs neither it nor the library that it needs.
set_target_properties(tarn_common PROPERTIES EXPORT_NAME common)
install(TARGETS tarn_common EXPORT tarnCommonTargets INCLUDES DESTINATION ${TARN_INCLUDES})
install(EXPORT tarnCommonTargets NAMESPACE tarn:: DESTINATION ${TARN_CMAKE_FOLDER})

# ---- Headers ----

install(DIRECTORY platform/hx DESTINATION ${TARN_INCLUDES}/platform FILES_MATCHING PATTERN "*.h")
install(FILES src/catalogue/TARNFactory.h DESTINATION ${TARN_INCLUDES}/catalogue)
install(FILES src/planning/TARNReporter.h DESTINATION ${TARN_INCLUDES}/planning)
install(FILES platform/Export.h DESTINATION ${TARN_INCLUDES}/platform)
install(FILES src/support/QKVecValue.h DESTINATION ${TARN_INCLUDES}/support)
foreach(header IQKAlgorithm IQKSettingValue Progress QKDisplay QKMV QKSettings QKStatus QKVarList Record)
  install(FILES platform/common/${header}.h DESTINATION ${TARN_INCLUDES}/platform/common)
endforeach()

# ---- How others find it ----

configure_package_config_file(cmake/tarnConfig.cmake.in tarnConfig.cmake INSTALL_DESTINATION ${TARN_CMAKE_FOLDER})
write_basic_package_version_file(tarnConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/tarnConfig.cmake ${CMAKE_CURRENT_BINARY_DIR}/tarnConfigVersion.cmake
  DESTINATION ${TARN_CMAKE_FOLDER})

# From the folder of the file itself to the prefix.
file(RELATIVE_PATH TARN_PREFIX_FROM_PKGCONFIG ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
string(REGEX REPLACE "/$" "" TARN_PREFIX_FROM_PKGCONFIG ${TARN_PREFIX_FROM_PKGCONFIG})
configure_file(cmake/tarn.pc.in tarn.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/tarn.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

# ---- Published results and tables of functions, which `tarn verify` runs ----

install(DIRECTORY share/reference/ DESTINATION ${TARN_REFERENCE} PATTERN __pycache__ EXCLUDE)

# ---- Documentation; the licence under the name that a Debian package has to give it ----

install(FILES LICENSE DESTINATION ${CMAKE_INSTALL_DOCDIR} RENAME copyright)
install(FILES README.md CHANGELOG.md DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(DIRECTORY docs examples DESTINATION ${CMAKE_INSTALL_DOCDIR})
