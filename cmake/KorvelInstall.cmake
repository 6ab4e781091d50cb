# What an installation has, in components: runtime (the library), development (header, CMake package, pkg-config),
# tools (the korvel command, its manual and completions) and documentation.

# Debian's folder for libraries of a machine, below any prefix, so that each build tree can be packed.
if(PROJECT_IS_TOP_LEVEL AND EXISTS /etc/debian_version AND CMAKE_LIBRARY_ARCHITECTURE)
  set(CMAKE_INSTALL_LIBDIR "lib/${CMAKE_LIBRARY_ARCHITECTURE}" CACHE PATH "Folder of libraries, below the prefix")
endif()
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)
if(IS_ABSOLUTE "${CMAKE_INSTALL_LIBDIR}" OR IS_ABSOLUTE "${CMAKE_INSTALL_INCLUDEDIR}")
  message(FATAL_ERROR "CMAKE_INSTALL_LIBDIR and CMAKE_INSTALL_INCLUDEDIR must be relative to the prefix, which can move")
endif()

install(TARGETS korvel EXPORT korvelTargets
        LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT runtime NAMELINK_COMPONENT development
        INCLUDES DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}")
install(DIRECTORY include/korvel DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}" COMPONENT development)

# find_package(korvel), which defines korvel::korvel.
set(korvel_package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/korvel")
install(EXPORT korvelTargets NAMESPACE korvel:: DESTINATION "${korvel_package_dir}" COMPONENT development)
configure_package_config_file(cmake/korvelConfig.cmake.in "${CMAKE_CURRENT_BINARY_DIR}/korvelConfig.cmake"
                              INSTALL_DESTINATION "${korvel_package_dir}"
                              NO_SET_AND_CHECK_MACRO NO_CHECK_REQUIRED_COMPONENTS_MACRO)
write_basic_package_version_file("${CMAKE_CURRENT_BINARY_DIR}/korvelConfigVersion.cmake"
                                 COMPATIBILITY SameMajorVersion)
install(FILES "${CMAKE_CURRENT_BINARY_DIR}/korvelConfig.cmake" "${CMAKE_CURRENT_BINARY_DIR}/korvelConfigVersion.cmake"
        DESTINATION "${korvel_package_dir}" COMPONENT development)

# The file finds its prefix from where it lies, so that an installation can be moved.
file(RELATIVE_PATH korvel_prefix_from_pc "/prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/prefix")
string(REGEX REPLACE "/$" "" korvel_prefix_from_pc "${korvel_prefix_from_pc}")
configure_file(cmake/korvel.pc.in "${CMAKE_CURRENT_BINARY_DIR}/korvel.pc" @ONLY)
install(FILES "${CMAKE_CURRENT_BINARY_DIR}/korvel.pc" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig"
        COMPONENT development)

if(KORVEL_BUILD_TOOLS)
  # From where it lies the command finds the library of its own installation.
  file(RELATIVE_PATH korvel_lib_from_bin "/prefix/${CMAKE_INSTALL_BINDIR}" "/prefix/${CMAKE_INSTALL_LIBDIR}")
  # The build's own path is relative too, since its length would show in what is installed.
  set_target_properties(korvel-tool PROPERTIES INSTALL_RPATH "$ORIGIN/${korvel_lib_from_bin}" BUILD_RPATH_USE_ORIGIN ON)
  install(TARGETS korvel-tool DESTINATION "${CMAKE_INSTALL_BINDIR}" COMPONENT tools)
  if(TARGET korvel-manual)
    install(FILES "${korvel_manual_dir}/man/korvel.1" DESTINATION "${CMAKE_INSTALL_MANDIR}/man1" COMPONENT tools)
    install(FILES "${korvel_manual_dir}/bash/korvel" COMPONENT tools
            DESTINATION "${CMAKE_INSTALL_DATADIR}/bash-completion/completions")
    install(FILES "${korvel_manual_dir}/zsh/_korvel" COMPONENT tools
            DESTINATION "${CMAKE_INSTALL_DATADIR}/zsh/site-functions")
    install(FILES "${korvel_manual_dir}/fish/korvel.fish" COMPONENT tools
            DESTINATION "${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d")
  endif()
endif()

install(FILES README.md CHANGELOG.md SECURITY.md DESTINATION "${CMAKE_INSTALL_DOCDIR}" COMPONENT documentation)
install(DIRECTORY docs/ DESTINATION "${CMAKE_INSTALL_DOCDIR}/docs" COMPONENT documentation
        PATTERN CMakeLists.txt EXCLUDE PATTERN Doxyfile*.in EXCLUDE PATTERN markdown.sed EXCLUDE)
if(KORVEL_BUILD_DOCUMENTATION)
  install(DIRECTORY "${CMAKE_CURRENT_BINARY_DIR}/docs/html" DESTINATION "${CMAKE_INSTALL_DOCDIR}"
          COMPONENT documentation)
endif()
install(DIRECTORY examples DESTINATION "${CMAKE_INSTALL_DOCDIR}" COMPONENT documentation)
