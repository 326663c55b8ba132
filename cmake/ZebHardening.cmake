# What the compiler and the linker do against an exploited fault: protected stacks, checked buffers and indirect calls, addresses
# that are read-only after loading. The system's defaults are not repeated: no executable stack or data, random addresses.
# scripts/check-hardening.py looks for all of it in what is built. Not with sanitizers, which see more.
if(ZEB_SANITIZE OR ZEB_COVERAGE)
  return()
endif()

include(CheckPIESupported)
check_pie_supported()

if(MSVC)
  # Protected stacks are cl's default.
  add_compile_options($<$<COMPILE_LANGUAGE:C,CXX>:/guard:cf>)
  add_link_options(/guard:cf)
elseif(WIN32 AND NOT MINGW)
  add_compile_options($<$<COMPILE_LANGUAGE:C,CXX>:-fstack-protector-strong> "$<$<COMPILE_LANGUAGE:C,CXX>:SHELL:-Xclang -cfguard>")
  add_link_options(LINKER:/guard:cf)
elseif(MINGW)
  # GCC has no control flow guard.
  add_compile_options($<$<COMPILE_LANGUAGE:C,CXX>:-fstack-protector-strong>)
  add_link_options(-fstack-protector-strong)
else()
  add_compile_options(-fstack-protector-strong -fcf-protection=full)
  # Needs optimisation. A distribution's compiler or flags may have set a lower level.
  add_compile_options("$<$<CONFIG:Release>:SHELL:-U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=3>")
  add_link_options(-Wl,-z,relro -Wl,-z,now -Wl,-z,noexecstack)
endif()
