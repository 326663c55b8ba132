# GMime with what it needs: GLib and GObject, and GNU libiconv.
set(glib ${ZEB_DEPS_DIR}/glib2.0)
set(gmime ${ZEB_DEPS_DIR}/gmime)
set(iconv ${ZEB_DEPS_DIR}/node_modules/iconv)
set(made ${CMAKE_BINARY_DIR}/gmime)

function(zeb_make_glibconfig)
  foreach(bits 16 32 64)
    set(gint${bits}_modifier "\"\"")
    set(gint${bits}_format "\"i\"")
    set(guint${bits}_format "\"u\"")
  endforeach()
  set(gint16 short)
  set(gint16_modifier "\"h\"")
  set(gint16_format "\"hi\"")
  set(guint16_format "\"hu\"")
  set(gint32 int)
  set(gint64 "long long")
  set(glib_extension "__extension__ ")
  set(gint64_constant "(G_GNUC_EXTENSION (val##LL))")
  set(guint64_constant "(G_GNUC_EXTENSION (val##ULL))")
  foreach(name gint64 gsize gintptr gssize)
    set(${name}_modifier "\"ll\"")
    set(${name}_format "\"lli\"")
  endforeach()
  set(gsize_format "\"llu\"")
  set(guint64_format "\"llu\"")
  set(guintptr_format "\"llu\"")
  set(glib_void_p 8)
  set(glib_long 4)
  set(glib_size_t 8)
  set(glib_ssize_t 8)
  set(glib_size_type_define "long long")
  set(glib_intptr_type_define "long long")
  set(glib_msize_type INT64)
  set(g_pollfd_format "\"%#llx\"")
  set(glib_gpi_cast "(gint64)")
  set(glib_gpui_cast "(guint64)")
  string(REGEX MATCH "version : '([0-9]+)\\.([0-9]+)\\.([0-9]+)'" found "${project}")
  set(GLIB_MAJOR_VERSION ${CMAKE_MATCH_1})
  set(GLIB_MINOR_VERSION ${CMAKE_MATCH_2})
  set(GLIB_MICRO_VERSION ${CMAKE_MATCH_3})
  set(glib_os "#define G_OS_WIN32\n#define G_PLATFORM_WIN32")
  set(glib_vacopy "#define G_VA_COPY va_copy")
  set(G_ATOMIC_LOCK_FREE 1)
  set(g_threads_impl_def WIN32)
  set(g_bs_native LE)
  set(g_bs_alien BE)
  set(glongbits 32)
  set(gintbits 32)
  set(gsizebits 64)
  set(g_byte_order G_LITTLE_ENDIAN)
  set(g_pollin 1)
  set(g_pollout 4)
  set(g_pollpri 2)
  set(g_pollhup 16)
  set(g_pollerr 8)
  set(g_pollnval 32)
  set(g_module_suffix dll)
  set(g_pid_type "void*")
  set(g_pid_format "\"p\"")
  set(g_af_unix 1)
  set(g_af_inet 2)
  set(g_af_inet6 23)
  set(g_msg_oob 1)
  set(g_msg_peek 2)
  set(g_msg_dontroute 4)
  set(g_dir_separator "\\\\")
  set(g_searchpath_separator ";")
  file(READ ${glib}/glib/glibconfig.h.in text)
  string(REPLACE "#mesondefine" "#cmakedefine" text "${text}")
  file(CONFIGURE OUTPUT ${made}/glibconfig.h CONTENT "${text}" @ONLY)
endfunction()

# zeb_make_config(FOLDER LINES...): FOLDER/config.h with these definitions.
function(zeb_make_config folder)
  list(TRANSFORM ARGN PREPEND "#define ")
  list(JOIN ARGN "\n" text)
  file(CONFIGURE OUTPUT ${folder}/config.h CONTENT "${text}\n" @ONLY)
endfunction()

file(READ ${glib}/meson.build project LIMIT 1000)
zeb_make_glibconfig()
zeb_make_config(${made}/glib "GETTEXT_PACKAGE \"glib20\"" "GLIB_LOCALE_DIR \"\"" "GLIB_INTERFACE_AGE 6" "GLIB_BINARY_AGE 7406"
  "THREADS_WIN32 1" "LC_MESSAGES LC_ALL" "HAVE_DIRENT_H 1" "HAVE_FLOAT_H 1"
  "HAVE_INTTYPES_H 1" "HAVE_LIMITS_H 1" "HAVE_LOCALE_H 1" "HAVE_MALLOC_H 1" "HAVE_STDINT_H 1" "HAVE_STDLIB_H 1" "HAVE_STRING_H 1"
  "HAVE_SYS_STAT_H 1" "HAVE_SYS_TIME_H 1" "HAVE_SYS_TYPES_H 1" "HAVE_UNISTD_H 1" "HAVE_WCHAR_H 1" "HAVE__ALIGNED_MALLOC 1"
  "HAVE_LONG_DOUBLE 1" "HAVE_LONG_LONG 1" "HAVE_WCHAR_T 1" "HAVE_WINT_T 1" "HAVE_INTMAX_T 1" "HAVE_PTRDIFF_T 1" "HAVE_SNPRINTF 1"
  "HAVE_VASPRINTF 1" "HAVE_C99_SNPRINTF 1" "HAVE_C99_VSNPRINTF 1" "HAVE_STRCASECMP 1" "HAVE_STRNCASECMP 1" "USE_SYSTEM_PRINTF 1"
  "SIZEOF_CHAR 1" "SIZEOF_SHORT 2" "SIZEOF_INT 4" "SIZEOF_LONG 4" "SIZEOF_LONG_LONG 8" "SIZEOF_SIZE_T 8" "SIZEOF_SSIZE_T 8"
  "SIZEOF_VOID_P 8" "SIZEOF_WCHAR_T 2" "ALIGNOF_GUINT32 4" "ALIGNOF_GUINT64 8" "ALIGNOF_UNSIGNED_LONG 4")

# What GObject and GMime use of GLib, and what those parts use.
set(names garcbox garray gbase64 gbitlock gbytes gcharset gchecksum gconvert gdataset gdate gdatetime gdir genviron gerror gfileutils
  ggettext ghash ghook ghostutils giochannel giowin32 gkeyfile glib-init glib-private glist gmain gmappedfile gmarkup gmem gmessages
  goption gpattern gpoll gprintf gqsort gquark gqueue grand grcbox grefcount gshell gslice gslist gspawn-win32 gstdio gstrfuncs
  gstring gtestutils gthread-win32 gthread gtimer gtimezone gtranslit gtrashstack gtree gunidecomp guniprop guri gutf8 gutils gvariant-core
  gvariant-serialiser gvariant gvarianttype gvarianttypeinfo gversion gwakeup gwin32 libcharset/localcharset)
list(REMOVE_ITEM names gconvert)
list(TRANSFORM names PREPEND ${glib}/glib/)
list(TRANSFORM names APPEND .c)
# On Windows GLib converts with the system's code pages, which are not all there (GB18030). A copy next to this win_iconv.c
# uses GNU libiconv, as GMime does.
configure_file(${glib}/glib/gconvert.c ${made}/gconvert/gconvert.c COPYONLY)
file(CONFIGURE OUTPUT ${made}/gconvert/win_iconv.c CONTENT "#include <iconv.h>\n" @ONLY)
add_library(glib OBJECT ${names} ${made}/gconvert/gconvert.c)
# It does not compile without translations.
set_source_files_properties(${glib}/glib/gkeyfile.c PROPERTIES COMPILE_DEFINITIONS ENABLE_NLS)
target_compile_definitions(glib PRIVATE G_LOG_DOMAIN="GLib" GLIB_COMPILATION LIBDIR="")
target_include_directories(glib PRIVATE ${made}/glib ${glib}/glib/libcharset)

set(names gatomicarray gboxed gclosure genums gmarshal gobject gparam gparamspecs gsignal gtype gtypeplugin gvalue gvaluearray
  gvaluetransform gvaluetypes)
list(TRANSFORM names PREPEND ${glib}/gobject/)
list(TRANSFORM names APPEND .c)
add_library(gobject OBJECT ${names})
target_compile_definitions(gobject PRIVATE G_LOG_DOMAIN="GLib-GObject" GOBJECT_COMPILATION)
target_include_directories(gobject PRIVATE ${made}/glib ${glib}/gobject)

set(GMIME_MAJOR_VERSION 3)
set(GMIME_MINOR_VERSION 2)
set(GMIME_MICRO_VERSION 13)
set(GMIME_BINARY_AGE 213)
set(GMIME_INTERFACE_AGE 0)
configure_file(${gmime}/gmime/gmime-version.h.in ${made}/gmime/gmime-version.h @ONLY)
zeb_make_config(${made}/config "HAVE_ICONV_DETECT_H 1" "VERSION \"3.2.13\"")
# The forms in which GNU libiconv knows names of character sets.
file(CONFIGURE OUTPUT ${made}/config/iconv-detect.h CONTENT "#define ICONV_ISO_INT_FORMAT \"iso-%u-%u\"
#define ICONV_ISO_STR_FORMAT \"iso-%u-%s\"
#define ICONV_10646 \"ucs-4be\"
#define ICONV_SHIFT_JIS \"shift-jis\"
" @ONLY)

set(absent ${CMAKE_SOURCE_DIR}/absent)
file(GLOB names ${gmime}/gmime/*.c ${gmime}/util/*.c)
list(FILTER names EXCLUDE REGEX "(gen-table|charset-map|gmime-stream-gio|gmime-filter-gzip)\\.c$")
add_library(gmime-3 SHARED ${names} absent/absent.c ${iconv}/deps/libiconv/lib/iconv.c
  ${iconv}/support/localcharset.c)
target_include_directories(gmime-3 PRIVATE ${made}/config ${gmime} ${gmime}/util)
target_compile_definitions(gmime-3 PRIVATE G_LOG_DOMAIN="gmime" ENABLE_EXTRA=1)

foreach(target glib gobject gmime-3)
  target_compile_definitions(${target} PRIVATE GLIB_STATIC_COMPILATION GOBJECT_STATIC_COMPILATION HAVE_CONFIG_H __USE_MINGW_ANSI_STDIO=1
    ICONV_CONST=const G_DISABLE_CAST_CHECKS)
  target_include_directories(${target} PRIVATE ${absent} ${made} ${glib} ${glib}/glib ${iconv}/support)
  target_compile_options(${target} PRIVATE -mms-bitfields)
endforeach()
target_link_libraries(gmime-3 PRIVATE gobject glib ws2_32 ole32 shell32 winmm dnsapi iphlpapi)
zeb_mail_dll(gmime-3 3.2.13 "GMime with GLib and GNU libiconv, which read Internet mail" "GNU LGPL 2.1 or later")
