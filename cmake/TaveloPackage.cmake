# `cpack` in the build folder makes a package for Debian of what is built there, with the dependencies that the program
# was linked to.
set(CMAKE_SKIP_INSTALL_ALL_DEPENDENCY ON)  # no tests in the package, so none need to be built for it
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_CONTACT "The Tavelo developers <tavelo@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "simulator of striated-muscle contraction, molecule by molecule")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION science)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
string(CONCAT CPACK_DEBIAN_PACKAGE_DEPENDS "python3 (>= 3.11), python3-numpy, python3-pandas, python3-scipy, python3-matplotlib, "
  "python3-xarray, python3-h5netcdf, python3-distributed, python3-asteval, python3-rich, python3-optuna, python3-cmaes, libjs-three")
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
include(CPack)
