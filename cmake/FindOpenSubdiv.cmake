# Find OpenSubdiv's CPU library as OpenSubdiv::osdCPU.  Its own package files are of no use on Debian: they name static
# libraries that the package does not have.
find_path(OpenSubdiv_INCLUDE_DIR opensubdiv/version.h)
find_library(OpenSubdiv_CPU_LIBRARY osdCPU)
if(OpenSubdiv_INCLUDE_DIR)
    file(STRINGS ${OpenSubdiv_INCLUDE_DIR}/opensubdiv/version.h version REGEX "define OPENSUBDIV_VERSION v[0-9_]+")
    string(REGEX REPLACE ".*v([0-9]+)_([0-9]+)_([0-9]+).*" "\\1.\\2.\\3" OpenSubdiv_VERSION "${version}")
endif()
include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(OpenSubdiv
    REQUIRED_VARS OpenSubdiv_CPU_LIBRARY OpenSubdiv_INCLUDE_DIR VERSION_VAR OpenSubdiv_VERSION)
mark_as_advanced(OpenSubdiv_INCLUDE_DIR OpenSubdiv_CPU_LIBRARY)
if(OpenSubdiv_FOUND AND NOT TARGET OpenSubdiv::osdCPU)
    add_library(OpenSubdiv::osdCPU UNKNOWN IMPORTED)
    set_target_properties(OpenSubdiv::osdCPU PROPERTIES
        IMPORTED_LOCATION ${OpenSubdiv_CPU_LIBRARY}
        INTERFACE_INCLUDE_DIRECTORIES ${OpenSubdiv_INCLUDE_DIR})
endif()
