# The Debian package, made of what `cmake --install` brings; scripts/package runs it. The library stands in /usr/lib
# itself, as in any other prefix, so that what is packaged is the very build that was tested.

set(TARN_PACKAGE_CONTACT "The maintainers of tarn" CACHE STRING "Who answers for the package: a name, <an address>")

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME tarn)
set(CPACK_PACKAGE_CONTACT ${TARN_PACKAGE_CONTACT})
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_CURRENT_LIST_DIR}/PackagedFolders.cmake)

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION math)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
"tarn reads a table and tests hypotheses about one, related and independent
samples without assuming that they are normal: sign, Wilcoxon, Mann-Whitney,
Kruskal-Wallis, Friedman and seventeen others, with exact significances,
comparisons of several samples, frequency weights and missing values.

The package holds the command, the library for programs that load the engine
themselves, its headers, and the documentation.")
# What the program and the library link, by looking at them. Their own library is in no package yet.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_BINARY_DIR})
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
# To build hosts against it; tarn::common alone needs pugixml.
set(CPACK_DEBIAN_PACKAGE_SUGGESTS "cmake, pkg-config, libpugixml-dev")
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION TRUE)

include(CPack)
