# Runs while installing: ORVANE_CHANGELOG goes into the folder ORVANE_CHANGELOG_FOLDER below the
# prefix, packed and named as Debian's tools look for it. Without the time, so that the same text
# gives the same bytes.
find_program(ORVANE_GZIP gzip)
if(ORVANE_GZIP)
  file(MAKE_DIRECTORY "${ORVANE_PAGES}")
  set(packed "${ORVANE_PAGES}/changelog.gz")
  execute_process(COMMAND "${ORVANE_GZIP}" -9nc "${ORVANE_CHANGELOG}"
    OUTPUT_FILE "${packed}" COMMAND_ERROR_IS_FATAL ANY)
  file(INSTALL "${packed}" DESTINATION "${CMAKE_INSTALL_PREFIX}/${ORVANE_CHANGELOG_FOLDER}")
endif()
