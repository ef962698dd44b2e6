# The libraries that tarn calls, one line each; scripts/install-dependencies installs their Debian packages.

find_package(Threads REQUIRED)
find_package(Boost 1.81 REQUIRED)      # header-only use: Boost.Math behind the distribution functions
find_package(pugixml REQUIRED)         # XML in and out
find_package(hwy QUIET)              # the vectorised sort; without it a radix sort does the work
find_package(nlohmann_json REQUIRED)   # JSON in the host
find_package(CLI11 REQUIRED)           # the command line
find_package(ZLIB REQUIRED)            # tables compressed by gzip
find_package(PkgConfig REQUIRED)
pkg_check_modules(zstd REQUIRED IMPORTED_TARGET libzstd)   # tables compressed by Zstandard
pkg_check_modules(nettle REQUIRED IMPORTED_TARGET nettle)  # the hash of a table in a report
pkg_check_modules(xlsxwriter REQUIRED IMPORTED_TARGET xlsxwriter)   # results as a workbook
if(TARN_TESTS OR TARN_FUZZ)
  find_package(GTest REQUIRED)
endif()
if(TARN_TESTS)
  find_package(rapidcheck REQUIRED)    # properties over random input
endif()
if(TARN_BENCH)
  find_package(benchmark REQUIRED)
endif()
