# MAPI's declarations as published for 64-bit Windows.
#
# zeb_mapi_copy(SOURCE TARGET) writes copies of MinGW's MAPI headers into the folder TARGET. MinGW declares connections,
# bookmarks, window parameters and form tokens with 32 bits, where the published declarations are pointer-sized: the
# copies have ULONG_PTR in those 59 places and are otherwise the same. Each count is checked, so that headers of another
# version stop the build instead of being corrected halfway.
set(zeb_mapi_corrected mapidefs mapix mapispi mapiutil)
# A declaration of 32 bits, and how often it occurs in each of the headers above.
set(zeb_mapi_widened
  "ULONG ulUIParam|19|0|14|0"
  "ULONG *lpulUIParam|0|1|2|0"
  "ULONG *lpulConnection|2|2|3|0"
  "ULONG ulConnection|2|2|3|0"
  "ULONG ulMessageToken|0|1|0|0"
  "ULONG *lpulMessageToken|0|1|0|0"
  "typedef ULONG BOOKMARK|1|0|0|0"
  "ULONG *lpulMsgRef|0|0|2|0"
  "ULONG ulMsgRef|0|0|1|0"
  "ULONG *lpulReturnParm|0|0|1|0"
  "ULONG ulCallerData|0|0|0|2")

function(zeb_mapi_copy source target)
  set(column 0)
  foreach(header ${zeb_mapi_corrected})
    math(EXPR column "${column} + 1")
    if(NOT EXISTS ${source}/${header}.h)
      message(FATAL_ERROR "${source}/${header}.h is missing: run scripts/setup.sh first")
    endif()
    set_property(DIRECTORY ${CMAKE_SOURCE_DIR} APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${source}/${header}.h)
    file(READ ${source}/${header}.h text)
    foreach(row ${zeb_mapi_widened})
      string(REPLACE "|" ";" row "${row}")
      list(GET row 0 narrow)
      list(GET row ${column} expected)
      string(REPLACE "ULONG" "ULONG_PTR" wide "${narrow}")
      string(REGEX REPLACE "([*])" "\\\\\\1" pattern "${narrow}")
      string(LENGTH "${text}" before)
      string(REGEX REPLACE "${pattern}([^A-Za-z0-9_])" "${wide}\\1" text "${text}")
      string(LENGTH "${text}" after)
      math(EXPR count "(${after} - ${before}) / 4") # "_PTR" came in so many times
      if(NOT count EQUAL expected)
        message(FATAL_ERROR "${source}/${header}.h has '${narrow}' ${count} times, not ${expected}: compare its "
                            "declarations with the published ones and correct cmake/ZebMapiHeaders.cmake")
      endif()
    endforeach()
    # Written only when it differs, so that a new configuration compiles nothing again.
    file(CONFIGURE OUTPUT ${target}/${header}.h CONTENT "@text@" @ONLY NEWLINE_STYLE UNIX)
  endforeach()
endfunction()
