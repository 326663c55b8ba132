# libpff with the libraries that its sources bring along.
set(pff ${ZEB_DEPS_DIR}/libpff)
file(GLOB sources ${pff}/libpff/*.c)
foreach(part bfio cdata cerror cfile clocale cnotify cpath csplit cthreads fcache fdata fdatetime fguid fmapi fvalue fwnt una)
  file(GLOB found ${pff}/lib${part}/*.c)
  list(APPEND sources ${found})
  list(APPEND folders ${pff}/lib${part})
  string(TOUPPER ${part} name)
  list(APPEND local HAVE_LOCAL_LIB${name})
endforeach()
add_library(pff SHARED ${sources})
target_include_directories(pff PRIVATE ${pff}/include ${pff}/common ${pff}/libpff ${folders})
# With UNICODE, paths stay in 16 bits. Without HAVE_CONFIG_H the sources use what they have for Windows; what was generated for others is not read.
target_compile_definitions(pff PRIVATE ${local} HAVE_WINDOWS_H HAVE_STDLIB_H HAVE_STRING_H HAVE_WCHAR_H HAVE_STDARG_H HAVE_ERRNO_H
  HAVE_MULTI_THREAD_SUPPORT WIN32_LEAN_AND_MEAN UNICODE _UNICODE)
set_target_properties(pff PROPERTIES UNITY_BUILD ON UNITY_BUILD_BATCH_SIZE 16)
zeb_mail_dll(pff 2018.7.14 "libpff, which reads PST and OST files" "GNU LGPL 3 or later")
