# What makes a fault of the program hard to exploit, for all that is built. scripts/check-hardening.sh
# looks for it in the files.
include(CheckCXXCompilerFlag)
include(CheckPIESupported)
check_pie_supported(LANGUAGES CXX)

add_compile_options(-fstack-protector-strong)
# Not every processor has these.
foreach(flag -fstack-clash-protection -fcf-protection=full)
  string(MAKE_C_IDENTIFIER "MAPEXPORT_HAS${flag}" has_flag)
  check_cxx_compiler_flag(${flag} ${has_flag})
  if(${has_flag})
    add_compile_options(${flag})
  endif()
endforeach()

# The assertions of the standard library cost the exporter's inner loops some percent. There only the
# sanitizer builds have them; src/CMakeLists.txt turns them on for side B.
set(MAPEXPORT_ASSERTIONS -D_GLIBCXX_ASSERTIONS)

# The checks within library functions need the optimiser, and the sanitizers have their own.
if(MAPEXPORT_SANITIZE)
  add_compile_options(${MAPEXPORT_ASSERTIONS})
else()
  add_compile_options("$<$<CONFIG:Release,RelWithDebInfo,MinSizeRel>:-U_FORTIFY_SOURCE>"
                      "$<$<CONFIG:Release,RelWithDebInfo,MinSizeRel>:-D_FORTIFY_SOURCE=3>")
endif()

add_link_options(LINKER:-z,relro LINKER:-z,now LINKER:-z,noexecstack)
