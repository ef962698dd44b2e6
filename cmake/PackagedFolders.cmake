# Run by CPack before it packs: gives the folders the modes that a package has to have. Those that CPack itself asks for
# are cut by the umask of whoever builds.
file(CHMOD_RECURSE "${CPACK_TEMPORARY_INSTALL_DIRECTORY}"
  DIRECTORY_PERMISSIONS ${CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS})
