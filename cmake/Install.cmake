# What `cmake --install` puts where, as a Linux desktop expects it: the
# program, the image-library module beside it in a private folder (found
# through the program's run path, relative so the tree can be installed
# anywhere), the desktop entry, the icon theme's sizes, the AppStream
# metainfo, the man page and the shell completions.
include(GNUInstallDirs)

# The module is private: a folder of Quilo's in the architecture's library
# folder, where the dynamic linker's cache never looks.
set(QUILO_MODULE_INSTALL_DIR lib/${CMAKE_LIBRARY_ARCHITECTURE}/quilo)
file(RELATIVE_PATH quilo_bin_to_modules /${CMAKE_INSTALL_BINDIR} /${QUILO_MODULE_INSTALL_DIR})
set_target_properties(quilo PROPERTIES INSTALL_RPATH "$ORIGIN/${quilo_bin_to_modules}")

install(TARGETS quilo RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(TARGETS quilo_vips LIBRARY DESTINATION ${QUILO_MODULE_INSTALL_DIR})

set(desktop ${PROJECT_SOURCE_DIR}/resources/desktop)
set(app_id io.quilo.Quilo)
configure_file(${desktop}/${app_id}.metainfo.xml.in ${PROJECT_BINARY_DIR}/${app_id}.metainfo.xml @ONLY)
configure_file(${desktop}/quilo.1.in ${PROJECT_BINARY_DIR}/quilo.1 @ONLY)
configure_file(${desktop}/changelog.in ${PROJECT_BINARY_DIR}/changelog @ONLY)

# Man pages and changelogs are kept compressed, without a time stamp so that
# every build gives the same bytes.
foreach(document quilo.1 changelog)
  add_custom_command(OUTPUT ${PROJECT_BINARY_DIR}/${document}.gz
                     COMMAND gzip -9nkf ${PROJECT_BINARY_DIR}/${document}
                     DEPENDS ${PROJECT_BINARY_DIR}/${document})
endforeach()
add_custom_target(quilo_documents ALL DEPENDS ${PROJECT_BINARY_DIR}/quilo.1.gz ${PROJECT_BINARY_DIR}/changelog.gz)

install(FILES ${desktop}/${app_id}.desktop DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
install(FILES ${PROJECT_BINARY_DIR}/${app_id}.metainfo.xml DESTINATION ${CMAKE_INSTALL_DATADIR}/metainfo)
install(DIRECTORY ${desktop}/icons/ DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor)
install(FILES ${PROJECT_SOURCE_DIR}/resources/art/quilo.svg DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps)
install(FILES ${PROJECT_BINARY_DIR}/quilo.1.gz DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
install(FILES ${desktop}/copyright ${PROJECT_BINARY_DIR}/changelog.gz DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/quilo)
install(FILES ${desktop}/completions/quilo.bash DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions
        RENAME quilo)
install(FILES ${desktop}/completions/_quilo DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/vendor-completions)
install(FILES ${desktop}/completions/quilo.fish DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d)
