# This file says which floor is linked with which library, on which platform; the list is at the end. Libraries used as
# headers only are in Floors.cmake.

# vantrel_library(FLOOR PLATFORM HEADER LIBRARY SOURCE [DEFINITION…])
# Links a floor's code with a library on one platform, LINUX or WINDOWS. The source is where the library and its header
# come from: a Debian package, or windows-libraries.sh. A library stands before those that it needs itself. The
# definitions are for the floor's own sources. With LOADED in their place it is not linked, only looked for: the floor's
# code takes its types from the header and loads it when it is first needed.
function(vantrel_library FLOOR PLATFORM HEADER LIBRARY SOURCE)
  if(WIN32)
    set(platform WINDOWS)
  else()
    set(platform LINUX)
  endif()
  if(NOT TARGET vantrel_${FLOOR} OR NOT PLATFORM STREQUAL platform)
    return()
  endif()
  string(MAKE_C_IDENTIFIER "VANTREL_${LIBRARY}" name)
  # Looks again for a library that is gone, as after deleting .libraries.
  foreach(found ${name}_INCLUDE_DIR ${name}_LIBRARY)
    if(DEFINED ${found} AND NOT EXISTS "${${found}}")
      unset(${found} CACHE)
    endif()
  endforeach()
  find_path(${name}_INCLUDE_DIR ${HEADER})
  find_library(${name}_LIBRARY ${LIBRARY})
  if(NOT ${name}_INCLUDE_DIR OR NOT ${name}_LIBRARY)
    if(SOURCE STREQUAL "windows-libraries.sh")
      set(advice "run cmake/windows-libraries.sh, which builds it, or ./test, which starts that by itself")
    else()
      set(advice "install the Debian package ${SOURCE}, or start ./run or ./test, which do that by themselves")
    endif()
    message(FATAL_ERROR "The library ${LIBRARY} with its header ${HEADER}, for ${FLOOR}/, is missing: ${advice}.")
  endif()
  target_include_directories(vantrel_${FLOOR} SYSTEM PRIVATE ${${name}_INCLUDE_DIR})
  if(ARGN STREQUAL "LOADED")
    return()
  endif()
  target_compile_definitions(vantrel_${FLOOR} PRIVATE ${ARGN})
  target_link_libraries(vantrel_${FLOOR} PRIVATE ${${name}_LIBRARY})
endfunction()

# Libraries of Windows itself, which every Windows compiler includes.
if(WIN32)
  target_link_libraries(vantrel_platform PRIVATE shlwapi ntdll advapi32 mpr)
  target_link_libraries(vantrel_search PRIVATE bcrypt)
endif()

#               floor    platform  header            library   from                  definitions
vantrel_library(platform LINUX     unicode/uchar.h   icuuc     libicu-dev)
vantrel_library(search   LINUX     pcre2.h           pcre2-16  libpcre2-dev)
vantrel_library(search   WINDOWS   pcre2.h           pcre2-16  windows-libraries.sh  PCRE2_STATIC)
vantrel_library(search   LINUX     openssl/evp.h     crypto    libssl-dev)
vantrel_library(export   LINUX     expat.h           expat     libexpat1-dev)
vantrel_library(export   LINUX     zip.h             zip       libzip-dev)
vantrel_library(export   LINUX     zlib.h            z         zlib1g-dev)
vantrel_library(export   WINDOWS   expat.h           expat     windows-libraries.sh  XML_STATIC)
vantrel_library(export   WINDOWS   zip.h             zip       windows-libraries.sh  ZIP_STATIC)
vantrel_library(export   WINDOWS   zlib.h            z         libz-mingw-w64-dev)
vantrel_library(export   LINUX     sqlite3.h         sqlite3   libsqlite3-dev)
vantrel_library(export   WINDOWS   sqlite3.h         sqlite3   windows-libraries.sh)
vantrel_library(automation LINUX   curl/curl.h       curl      libcurl4-openssl-dev  LOADED)
vantrel_library(automation WINDOWS curl/curl.h       curl      windows-libraries.sh  CURL_STATICLIB)
if(WIN32)
  # What libcurl needs itself: sockets, certificates, random numbers.
  target_link_libraries(vantrel_automation PRIVATE ws2_32 crypt32 bcrypt)
endif()
