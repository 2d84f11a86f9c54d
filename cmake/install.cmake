# The install layout (cmake --install BUILD --prefix DIR, or make install PREFIX=DIR):
#   lib/       libmdtlm_vraldcn.so and libmdtlm_platform.so with SONAME and version,
#              pkgconfig/*.pc, cmake/mdtlm_vraldcn/ (find_package)
#   include/mdtlm_vraldcn/   the public headers
#   bin/       mdtlm-sim, mdtlm-send, mdtlm-platform-check
#   share/mdtlm_vraldcn/proto/  the samples' protobuf schemas
#   share/man/man1/          the tools' manual pages
include(CMakePackageConfigHelpers)

install(TARGETS mdtlm_vraldcn mdtlm_platform EXPORT mdtlm_vraldcnTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  INCLUDES DESTINATION ${MDTLM_INCLUDE_SUBDIR})

# Exported entries and shared records; the platform's services for those who
# implement them; the host platform's control interface; the version.
install(FILES
  include/mdtlm_types.h
  include/mdtlm_layout_checks.h
  include/mdtlm_vraldcn.h
  include/mdtlm_platform.h
  include/mdtlm_host.h
  ${PROJECT_BINARY_DIR}/generated/mdtlm_version.h
  DESTINATION ${MDTLM_INCLUDE_SUBDIR})

install(DIRECTORY proto/ DESTINATION ${MDTLM_DATA_SUBDIR}/proto FILES_MATCHING PATTERN "*.proto")

foreach(module mdtlm_vraldcn mdtlm_platform)
  configure_file(cmake/${module}.pc.in ${PROJECT_BINARY_DIR}/pkgconfig/${module}.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/pkgconfig/${module}.pc DESTINATION ${MDTLM_PKGCONFIG_SUBDIR})
endforeach()

install(EXPORT mdtlm_vraldcnTargets NAMESPACE mdtlm_vraldcn:: DESTINATION ${MDTLM_CMAKE_SUBDIR})
configure_package_config_file(cmake/mdtlm_vraldcnConfig.cmake.in
  ${PROJECT_BINARY_DIR}/cmake/mdtlm_vraldcnConfig.cmake
  INSTALL_DESTINATION ${MDTLM_CMAKE_SUBDIR}
  PATH_VARS MDTLM_DATA_SUBDIR)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/cmake/mdtlm_vraldcnConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES
  ${PROJECT_BINARY_DIR}/cmake/mdtlm_vraldcnConfig.cmake
  ${PROJECT_BINARY_DIR}/cmake/mdtlm_vraldcnConfigVersion.cmake
  DESTINATION ${MDTLM_CMAKE_SUBDIR})

if(MDTLM_BUILD_TOOLS)
  set(MDTLM_TOOLS mdtlm-sim mdtlm-send mdtlm-platform-check)
  install(TARGETS ${MDTLM_TOOLS} RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
  foreach(tool ${MDTLM_TOOLS})
    configure_file(man/${tool}.1.in ${PROJECT_BINARY_DIR}/man/${tool}.1 @ONLY)
    install(FILES ${PROJECT_BINARY_DIR}/man/${tool}.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
  endforeach()
endif()
