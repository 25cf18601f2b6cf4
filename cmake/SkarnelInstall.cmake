# What packaging/ needs to install programs, modules, manual pages and built folders.

# Installs those of the programs that exist as targets.
function(skarnel_install_programs component folder)
    foreach(target IN LISTS ARGN)
        if(TARGET ${target})
            install(TARGETS ${target} RUNTIME DESTINATION "${folder}" COMPONENT ${component})
        endif()
    endforeach()
endfunction()

# Installs a folder that the build fills below share/skarnel. Installing fails where it is missing.
function(skarnel_install_built_folder component name)
    install(DIRECTORY "${CMAKE_BINARY_DIR}/share/skarnel/${name}"
            DESTINATION "${CMAKE_INSTALL_DATADIR}/skarnel" COMPONENT ${component})
endfunction()

# Fills in the version, packs the page reproducibly and installs it.
function(skarnel_install_man component source)
    if(NOT EXISTS "${source}")
        return()
    endif()
    get_filename_component(page "${source}" NAME_WLE)
    set(plain "${CMAKE_CURRENT_BINARY_DIR}/${page}")
    configure_file("${source}" "${plain}" @ONLY)
    find_program(SKARNEL_GZIP gzip REQUIRED)
    add_custom_command(OUTPUT "${plain}.gz"
                       COMMAND "${SKARNEL_GZIP}" -9nkf "${plain}"
                       DEPENDS "${plain}" VERBATIM)
    add_custom_target(man_${page} ALL DEPENDS "${plain}.gz")
    install(FILES "${plain}.gz" DESTINATION "${CMAKE_INSTALL_MANDIR}/man1" COMPONENT ${component})
endfunction()

# Installs PROGRAM.bash, PROGRAM.zsh and PROGRAM.fish of packaging/completions
# under the names that the three shells look for.
function(skarnel_install_completions component program)
    set(folder "${CMAKE_CURRENT_SOURCE_DIR}/completions")
    if(EXISTS "${folder}/${program}.bash")
        install(FILES "${folder}/${program}.bash" RENAME ${program}
                DESTINATION "${CMAKE_INSTALL_DATADIR}/bash-completion/completions" COMPONENT ${component})
        install(FILES "${folder}/${program}.zsh" RENAME _${program}
                DESTINATION "${CMAKE_INSTALL_DATADIR}/zsh/vendor-completions" COMPONENT ${component})
        install(FILES "${folder}/${program}.fish"
                DESTINATION "${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d" COMPONENT ${component})
    endif()
endfunction()
