# Helpers that every library, program and test of the project is made with.

# What all of our own code is compiled with.  Contraction stays off: results must not depend on the processor.
add_library(rq_compile_options INTERFACE)
target_compile_options(rq_compile_options INTERFACE -Wall -Wextra -Wshadow -Woverloaded-virtual -ffp-contract=off)
# Where a loop works out the address of a store as a whole number, GCC 12 takes it for a store to address 0, behind which
# nothing is done: the function counts as one that writes nothing, and calls of it are dropped (tests/host/bas/CompilerTest.cpp).
# Without this assumption about address 0 it does not.
target_compile_options(rq_compile_options INTERFACE $<$<CXX_COMPILER_ID:GNU>:-fno-delete-null-pointer-checks>)
if(RQ_WERROR)
    target_compile_options(rq_compile_options INTERFACE -Werror)
endif()
if(RQ_SANITIZE)
    add_compile_options(-fsanitize=${RQ_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
    add_link_options(-fsanitize=${RQ_SANITIZE})
    # GCC's flow analysis reports values that the instrumentation itself leaves unset.
    add_compile_options(-Wno-maybe-uninitialized)
endif()

# rq_add_library(TARGET EXPORT_NAME OUTPUT_NAME VERSION_SCRIPT): a versioned shared library of the export set RQTargets.
function(rq_add_library target export_name output_name version_script)
    add_library(${target} SHARED)
    add_library(RQ::${export_name} ALIAS ${target})
    set_target_properties(${target} PROPERTIES
        OUTPUT_NAME ${output_name}
        EXPORT_NAME ${export_name}
        VERSION ${PROJECT_VERSION}
        SOVERSION ${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR}
        LINK_DEPENDS ${version_script}
        VERIFY_INTERFACE_HEADER_SETS ON)
    target_compile_features(${target} PUBLIC cxx_std_20)
    target_link_libraries(${target} PRIVATE $<BUILD_INTERFACE:rq_compile_options>)
    target_link_options(${target} PRIVATE -Wl,--version-script=${version_script})
    if(NOT RQ_SANITIZE)
        target_link_options(${target} PRIVATE -Wl,--no-undefined)
    endif()
    target_sources(${target} PUBLIC FILE_SET HEADERS BASE_DIRS ${PROJECT_SOURCE_DIR})
endfunction()

# rq_library_folder(TARGET SOURCES ... HEADERS ...): add this folder's sources and public headers to TARGET.
function(rq_library_folder target)
    cmake_parse_arguments(ARG "" "" "SOURCES;HEADERS" ${ARGN})
    list(TRANSFORM ARG_HEADERS PREPEND ${CMAKE_CURRENT_SOURCE_DIR}/)
    list(TRANSFORM ARG_SOURCES PREPEND ${CMAKE_CURRENT_SOURCE_DIR}/)
    if(ARG_SOURCES)
        target_sources(${target} PRIVATE ${ARG_SOURCES})
    endif()
    if(ARG_HEADERS)
        target_sources(${target} PUBLIC FILE_SET HEADERS FILES ${ARG_HEADERS})
    endif()
endfunction()
