# What an installation holds: the programs, their manual pages, and completion for the three shells.

include(GNUInstallDirs)

install(TARGETS morvelin morvelin-mcp RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(FILES ${PROJECT_SOURCE_DIR}/docs/morvelin.1 ${PROJECT_SOURCE_DIR}/docs/morvelin-mcp.1
    DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)

# morvelin_completion(SHELL FOLDER NAME): the script that the program itself prints, under the name that the shell looks
# for in that folder of the share.
function(morvelin_completion shell folder name)
    set(script ${PROJECT_BINARY_DIR}/completions/${shell}/${name})
    add_custom_command(OUTPUT ${script}
        COMMAND ${CMAKE_COMMAND} -E make_directory ${PROJECT_BINARY_DIR}/completions/${shell}
        COMMAND morvelin completion ${shell} > ${script}
        DEPENDS morvelin
        COMMENT "Writing the completion script for ${shell}"
        VERBATIM)
    add_custom_target(morvelin_completion_${shell} ALL DEPENDS ${script})
    install(FILES ${script} DESTINATION ${CMAKE_INSTALL_DATADIR}/${folder})
endfunction()

morvelin_completion(bash bash-completion/completions morvelin)
morvelin_completion(zsh zsh/site-functions _morvelin)
morvelin_completion(fish fish/vendor_completions.d morvelin.fish)
