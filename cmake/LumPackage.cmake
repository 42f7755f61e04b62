# What `cmake --install` puts into a prefix: the library, its public headers, the files for
# find_package(lumcore CONFIG) and lumcore.pc. All of it works from wherever the prefix is moved.

include(CMakePackageConfigHelpers)

set(lum_cmake_dir ${CMAKE_INSTALL_LIBDIR}/cmake/lumcore)
set(lum_pkgconfig_dir ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

# Only our own sources see Boost, so a program that links the archive does not need it.
get_target_property(lum_links lumcore INTERFACE_LINK_LIBRARIES)
list(REMOVE_ITEM lum_links "$<LINK_ONLY:Boost::headers>")
set_property(TARGET lumcore PROPERTY INTERFACE_LINK_LIBRARIES ${lum_links})

# Each folder declares the public headers that it holds as a file set of its own.
get_target_property(lum_header_sets lumcore INTERFACE_HEADER_SETS)
set(lum_header_arguments "")
foreach(set ${lum_header_sets})
    list(APPEND lum_header_arguments FILE_SET ${set} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
endforeach()
install(TARGETS lumcore EXPORT lumcore-targets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
    RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
    ${lum_header_arguments})
install(EXPORT lumcore-targets NAMESPACE lumcore:: DESTINATION ${lum_cmake_dir})

configure_package_config_file(cmake/lumcore-config.cmake.in
    ${PROJECT_BINARY_DIR}/cmake/lumcore-config.cmake INSTALL_DESTINATION ${lum_cmake_dir})
# Before 1.0 a minor version may change the interface.
write_basic_package_version_file(${PROJECT_BINARY_DIR}/cmake/lumcore-config-version.cmake
    COMPATIBILITY SameMinorVersion)
install(FILES
    ${PROJECT_BINARY_DIR}/cmake/lumcore-config.cmake
    ${PROJECT_BINARY_DIR}/cmake/lumcore-config-version.cmake
    DESTINATION ${lum_cmake_dir})

# A program that links the shared library needs nothing else. One that links the archive needs what
# the archive needs, and pkg-config tells private needs only when asked with --static; so in a
# prefix that holds the archive alone they are not private.
if(BUILD_SHARED_LIBS)
    set(lum_pc_definitions " -DLUM_SHARED")
    set(lum_pc_archive_libs "")
    set(lum_pc_requires ".private")
else()
    set(lum_pc_definitions "")
    set(lum_pc_archive_libs " -pthread")
    set(lum_pc_requires "")
endif()
cmake_path(IS_ABSOLUTE CMAKE_INSTALL_LIBDIR lum_libdir_is_absolute)
if(lum_libdir_is_absolute)
    set(lum_pc_prefix ${CMAKE_INSTALL_PREFIX})
else()
    file(RELATIVE_PATH lum_pc_prefix /${lum_pkgconfig_dir} /)
    string(REGEX REPLACE "/$" "" lum_pc_prefix "\${pcfiledir}/${lum_pc_prefix}")
endif()
cmake_path(APPEND lum_pc_libdir "\${prefix}" ${CMAKE_INSTALL_LIBDIR})
cmake_path(APPEND lum_pc_includedir "\${prefix}" ${CMAKE_INSTALL_INCLUDEDIR})
configure_file(cmake/lumcore.pc.in ${PROJECT_BINARY_DIR}/cmake/lumcore.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/cmake/lumcore.pc DESTINATION ${lum_pkgconfig_dir})
