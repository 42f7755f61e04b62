# What `cmake --install` puts into a prefix: the library, its public headers, the files for
# find_package(lumcore CONFIG) and lumcore.pc. All of it works from wherever the prefix is moved.
# Of a shared library, `cpack` makes two Debian packages: what programs need to run, and what it
# takes to build them.

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
    list(APPEND lum_header_arguments FILE_SET ${set}
        DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development)
endforeach()
install(TARGETS lumcore EXPORT lumcore-targets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT development
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development
    RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT runtime
    ${lum_header_arguments})
install(EXPORT lumcore-targets NAMESPACE lumcore:: DESTINATION ${lum_cmake_dir}
    COMPONENT development)

configure_package_config_file(cmake/lumcore-config.cmake.in
    ${PROJECT_BINARY_DIR}/cmake/lumcore-config.cmake INSTALL_DESTINATION ${lum_cmake_dir})
# Before 1.0 a minor version may change the interface.
write_basic_package_version_file(${PROJECT_BINARY_DIR}/cmake/lumcore-config-version.cmake
    COMPATIBILITY SameMinorVersion)
install(FILES
    ${PROJECT_BINARY_DIR}/cmake/lumcore-config.cmake
    ${PROJECT_BINARY_DIR}/cmake/lumcore-config-version.cmake
    DESTINATION ${lum_cmake_dir} COMPONENT development)

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
install(FILES ${PROJECT_BINARY_DIR}/cmake/lumcore.pc DESTINATION ${lum_pkgconfig_dir}
    COMPONENT development)

if(PROJECT_IS_TOP_LEVEL AND BUILD_SHARED_LIBS)
    set(CPACK_GENERATOR DEB)
    set(CPACK_PACKAGE_NAME lumcore)
    set(CPACK_PACKAGE_VENDOR "lumcore")
    set(CPACK_PACKAGE_CONTACT "the lumcore developers <lumcore@localhost>")
    set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
    set(CPACK_COMPONENTS_ALL runtime development)
    set(CPACK_DEB_COMPONENT_INSTALL ON)
    set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
    set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
    # Debian names the package of a shared library by its soname.
    get_target_property(lum_soversion lumcore SOVERSION)
    set(lum_runtime_package liblumcore${lum_soversion})
    set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME ${lum_runtime_package})
    set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
    set(CPACK_DEBIAN_RUNTIME_PACKAGE_SHLIBDEPS ON)
    set(CPACK_DEBIAN_RUNTIME_PACKAGE_GENERATE_SHLIBS ON)
    set(CPACK_COMPONENT_RUNTIME_DESCRIPTION
        "Core library of a data-transformation runtime\n What programs need to run.")
    set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME liblumcore-dev)
    set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
    set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS
        "${lum_runtime_package} (= ${PROJECT_VERSION}), libjsoncpp-dev, libtbb-dev")
    set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION
        "Core library of a data-transformation runtime (development files)\n Headers, and what CMake and pkg-config have to know.")
    include(CPack)
endif()
