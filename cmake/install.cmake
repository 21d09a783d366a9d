include(CMakePackageConfigHelpers)

set(package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/tarnwick")

install(FILES "${PROJECT_SOURCE_DIR}/include/tarnwick.h" TYPE INCLUDE)
install(TARGETS tarnwick tarnwick_static EXPORT tarnwick-targets)
install(EXPORT tarnwick-targets NAMESPACE tarnwick:: DESTINATION "${package_dir}")
if(TARGET tarnwick_tool)
    install(TARGETS tarnwick_tool)
    install(FILES "${PROJECT_SOURCE_DIR}/docs/tarnwick.1" OPTIONAL
            DESTINATION "${CMAKE_INSTALL_MANDIR}/man1")
endif()

# What a program in C has to name to link the static library.
set(runtime_libraries ${CMAKE_CXX_IMPLICIT_LINK_LIBRARIES})
list(FILTER runtime_libraries INCLUDE REGEX "^(stdc\\+\\+|c\\+\\+|c\\+\\+abi|m)$")
list(REMOVE_DUPLICATES runtime_libraries)
list(TRANSFORM runtime_libraries PREPEND "-l" OUTPUT_VARIABLE runtime_flags)
list(JOIN runtime_flags " " runtime_flags)

configure_package_config_file(
    "${PROJECT_SOURCE_DIR}/cmake/tarnwick-config.cmake.in"
    "${PROJECT_BINARY_DIR}/tarnwick-config.cmake"
    INSTALL_DESTINATION "${package_dir}"
    NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file("${PROJECT_BINARY_DIR}/tarnwick-config-version.cmake"
                                 COMPATIBILITY SameMajorVersion)
install(FILES "${PROJECT_BINARY_DIR}/tarnwick-config.cmake"
              "${PROJECT_BINARY_DIR}/tarnwick-config-version.cmake"
        DESTINATION "${package_dir}")

# The prefix is told from where the file lies, so that an installed tree can be moved.
file(RELATIVE_PATH prefix_from_pc "${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig"
     "${CMAKE_INSTALL_PREFIX}")
configure_file("${PROJECT_SOURCE_DIR}/cmake/tarnwick.pc.in" "${PROJECT_BINARY_DIR}/tarnwick.pc"
               @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/tarnwick.pc" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
