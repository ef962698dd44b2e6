# What turns a write beyond memory into the end of the process instead of somebody else's code. docs/robustness.md has what
# it costs, scripts/check_hardening.py finds it in what was linked.

include(CheckCXXCompilerFlag)

add_compile_options(-fstack-protector-strong)
foreach(flag -fstack-clash-protection -fcf-protection)  # not on every processor
  string(MAKE_C_IDENTIFIER "TARN_HAS${flag}" has)
  check_cxx_compiler_flag(${flag} ${has})
  if(${has})
    add_compile_options(${flag})
  endif()
endforeach()
# The C library's own checks of sizes need an optimiser, and sanitizers have better ones.
if(CMAKE_BUILD_TYPE STREQUAL "Release" AND NOT TARN_SANITIZE_THREADS)
  add_compile_options(-U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=3)
endif()
# All symbols are found when the program starts, and what they were written to is read-only from then on.
add_link_options(-Wl,-z,relro -Wl,-z,now -Wl,-z,noexecstack)
