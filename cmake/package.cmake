# Read by cpack before it packages the build tree. A package is for other
# machines: say so when it is made from a debug or sanitized build.
set(vexa_type "${CPACK_VEXA_BUILD_TYPE}")
if(CPACK_BUILD_CONFIG)
  set(vexa_type "${CPACK_BUILD_CONFIG}")
endif()
if(NOT vexa_type STREQUAL "Release" OR CPACK_VEXA_SANITIZE)
  message(WARNING "Packaging a build that is not a plain Release build; a package to hand "
                  "out comes from: cmake -S . -B build -DCMAKE_BUILD_TYPE=Release")
endif()

# Every file's time in the package, unless the caller chose one.
if(NOT DEFINED ENV{SOURCE_DATE_EPOCH})
  set(ENV{SOURCE_DATE_EPOCH} "${CPACK_VEXA_SOURCE_DATE_EPOCH}")
endif()
