# Where the installed files go, as paths relative to the install prefix, and
# the paths the installed tools use to find the libraries and the schemas
# relative to their own directory (so a prefix chosen at install time works).
include(GNUInstallDirs)

set(MDTLM_DATA_SUBDIR ${CMAKE_INSTALL_DATADIR}/mdtlm_vraldcn)
set(MDTLM_INCLUDE_SUBDIR ${CMAKE_INSTALL_INCLUDEDIR}/mdtlm_vraldcn)
set(MDTLM_CMAKE_SUBDIR ${CMAKE_INSTALL_LIBDIR}/cmake/mdtlm_vraldcn)
set(MDTLM_PKGCONFIG_SUBDIR ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

# "/prefix" stands for any prefix: only the relative paths between the
# directories below it matter.
file(RELATIVE_PATH MDTLM_BIN_TO_LIBDIR /prefix/${CMAKE_INSTALL_BINDIR} /prefix/${CMAKE_INSTALL_LIBDIR})
file(RELATIVE_PATH MDTLM_BIN_TO_DATADIR /prefix/${CMAKE_INSTALL_BINDIR} /prefix/${MDTLM_DATA_SUBDIR})
file(RELATIVE_PATH MDTLM_PKGCONFIG_TO_PREFIX /prefix/${MDTLM_PKGCONFIG_SUBDIR} /prefix)
