# Installation: libraries, public headers, package files for find_package(RQ CONFIG), the program.
include(CMakePackageConfigHelpers)

install(TARGETS RQHost RQ rqio EXPORT RQTargets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    FILE_SET HEADERS DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(EXPORT RQTargets NAMESPACE RQ:: DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/RQ)
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/RQConfig.cmake.in ${PROJECT_BINARY_DIR}/RQConfig.cmake
    INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/RQ)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/RQConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/RQConfig.cmake ${PROJECT_BINARY_DIR}/RQConfigVersion.cmake
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/RQ)
if(RQ_BUILD_APPS)
    install(TARGETS rq_program RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
    set(manual ${PROJECT_BINARY_DIR}/apps/manual)
    install(FILES ${manual}/rq.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 OPTIONAL)
    install(FILES ${manual}/rq.bash DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions RENAME rq OPTIONAL)
    install(FILES ${manual}/_rq DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/site-functions OPTIONAL)
    install(FILES ${manual}/rq.fish DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d OPTIONAL)
endif()
