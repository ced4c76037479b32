# Runs while installing: the command ORVANE_PROGRAM writes its manual page and its completions into
# the folder ORVANE_PAGES, and they are installed from there. So they cannot be of another version.
file(REMOVE_RECURSE "${ORVANE_PAGES}")
foreach(page man/orvane.1 bash/orvane zsh/_orvane)
  cmake_path(GET page PARENT_PATH kind)
  file(MAKE_DIRECTORY "${ORVANE_PAGES}/${kind}")
  execute_process(COMMAND "${ORVANE_PROGRAM}" --page ${kind}
    OUTPUT_FILE "${ORVANE_PAGES}/${page}" RESULT_VARIABLE result ERROR_VARIABLE fault)
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "orvane --page ${kind} failed (${result}): ${fault}")
  endif()
endforeach()

# Without the time, so that the same page gives the same bytes.
find_program(ORVANE_GZIP gzip)
set(manual "${ORVANE_PAGES}/man/orvane.1")
if(ORVANE_GZIP)
  execute_process(COMMAND "${ORVANE_GZIP}" -9nf "${manual}" COMMAND_ERROR_IS_FATAL ANY)
  string(APPEND manual ".gz")
endif()

# Debian's zsh looks below /usr in a folder of its own.
set(zsh_folder "share/zsh/site-functions")
if(CMAKE_INSTALL_PREFIX MATCHES "/usr/?$")
  set(zsh_folder "share/zsh/vendor-completions")
endif()

file(INSTALL "${manual}" DESTINATION "${CMAKE_INSTALL_PREFIX}/share/man/man1")
file(INSTALL "${ORVANE_PAGES}/bash/orvane"
  DESTINATION "${CMAKE_INSTALL_PREFIX}/share/bash-completion/completions")
file(INSTALL "${ORVANE_PAGES}/zsh/_orvane" DESTINATION "${CMAKE_INSTALL_PREFIX}/${zsh_folder}")
