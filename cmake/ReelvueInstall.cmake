# Installed layout: the programs and everything they read at run time (map/dist, translations, media) live
# together in <prefix>/lib/reelvue, the same shape as the run tree, so the program finds its resources beside
# its executable; <prefix>/bin holds links to the programs, and the desktop entry and icon go to share/.
set(REELVUE_INSTALL_DIR lib/reelvue)

# reelvue_install_command_link(<target>): <prefix>/bin/<target> -> ../lib/reelvue/<target>.
function(reelvue_install_command_link target)
  install(CODE "
    set(bin \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/bin\")
    file(MAKE_DIRECTORY \"\${bin}\")
    file(REMOVE \"\${bin}/${target}\")
    file(CREATE_LINK \"../${REELVUE_INSTALL_DIR}/${target}\" \"\${bin}/${target}\" SYMBOLIC)
    message(STATUS \"Installing: \${bin}/${target} -> ../${REELVUE_INSTALL_DIR}/${target}\")")
endfunction()
