# The library as other programs use it: one archive of every layer below the command line
# (libquarnel.a) with include/quarnel/quarnel.h, found through find_package(quarnel) or
# pkg-config; the DSSP helper program; and the Python module when pybind11 is there.
include(GNUInstallDirs)

# The layers in link order, and DSSP's library proper.
set(quarnel_archive_members quarnel_library quarnel_app quarnel_report quarnel_run quarnel_cath
    quarnel_confidence quarnel_output quarnel_partition quarnel_contacts quarnel_dssp_library
    quarnel_secondary quarnel_structure quarnel_formats quarnel_records quarnel_base)
# The Python module is a shared object: every layer it holds is position-independent code (which
# measured no slower in the programs).
foreach(member ${quarnel_archive_members})
  set_target_properties(${member} PROPERTIES POSITION_INDEPENDENT_CODE ON)
endforeach()

# One archive of the members: ar's script merges archives without unpacking them.
set(archive ${CMAKE_BINARY_DIR}/libquarnel.a)
set(script "CREATE ${archive}\n")
foreach(member ${quarnel_archive_members})
  string(APPEND script "ADDLIB $<TARGET_FILE:${member}>\n")
endforeach()
string(APPEND script "SAVE\nEND\n")
file(GENERATE OUTPUT ${CMAKE_BINARY_DIR}/libquarnel.mri CONTENT "${script}")
add_custom_command(OUTPUT ${archive}
                   COMMAND ${CMAKE_COMMAND} -E rm -f ${archive}
                   COMMAND ${CMAKE_AR} -M < ${CMAKE_BINARY_DIR}/libquarnel.mri
                   DEPENDS ${quarnel_archive_members} ${CMAKE_BINARY_DIR}/libquarnel.mri
                   COMMENT "Merging the layers into libquarnel.a" VERBATIM)
add_custom_target(quarnel_archive ALL DEPENDS ${archive})

# DSSP's library in a program of its own, for the Python module (secondary/dssp_helper.h).
add_executable(quarnel-secondary secondary/helper/main.cpp)
target_link_libraries(quarnel-secondary PRIVATE quarnel_dssp_library)
set_target_properties(quarnel-secondary PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR})

file(RELATIVE_PATH relative_prefix ${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_LIBDIR}/cmake/quarnel
     ${CMAKE_INSTALL_PREFIX})
configure_file(${PROJECT_SOURCE_DIR}/cmake/quarnelConfig.cmake.in ${CMAKE_BINARY_DIR}/quarnelConfig.cmake @ONLY)
configure_file(${PROJECT_SOURCE_DIR}/cmake/quarnelConfigVersion.cmake.in
               ${CMAKE_BINARY_DIR}/quarnelConfigVersion.cmake @ONLY)
# Both found relative to where they are installed: a prefix may be moved.
file(RELATIVE_PATH pc_relative_prefix ${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
configure_file(${PROJECT_SOURCE_DIR}/cmake/quarnel.pc.in ${CMAKE_BINARY_DIR}/quarnel.pc @ONLY)

install(FILES ${archive} DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/quarnel DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(FILES ${CMAKE_BINARY_DIR}/quarnelConfig.cmake ${CMAKE_BINARY_DIR}/quarnelConfigVersion.cmake
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/quarnel)
install(FILES ${CMAKE_BINARY_DIR}/quarnel.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
install(TARGETS quarnel-secondary DESTINATION ${CMAKE_INSTALL_LIBEXECDIR}/quarnel)
