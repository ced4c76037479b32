# The Debian packages that `cpack` makes out of a build: `orvane`, all that runs, and `orvane-dev`,
# what one builds against. See docs/decisions/0073-two-packages.md.
if(NOT ORVANE_INSTALL OR NOT TARGET orvane)
  return()
endif()

set(ORVANE_PACKAGE_CONTACT "The EventStrategy maintainers <maintainers@example.invalid>"
    CACHE STRING "Who answers for the packages: \"NAME <ADDRESS>\"")

install(CODE "set(ORVANE_PROGRAM \"$<TARGET_FILE:orvane>\")
set(ORVANE_PAGES \"${PROJECT_BINARY_DIR}/pages\")" COMPONENT runtime)
install(SCRIPT "${PROJECT_SOURCE_DIR}/cmake/InstallPages.cmake" COMPONENT runtime)

# The documents keep their places to one another, so that their links lead somewhere.
set(doc_folder "${CMAKE_INSTALL_DATADIR}/doc/orvane")
install(FILES README.md CHANGELOG.md CONTRIBUTING.md DESTINATION "${doc_folder}" COMPONENT runtime)
install(DIRECTORY docs examples DESTINATION "${doc_folder}" COMPONENT runtime
  FILES_MATCHING PATTERN "*.md" PATTERN "*.json" PATTERN "*.csv" PATTERN "*.h" PATTERN "*.cpp"
  PATTERN "CMakeLists.txt")

# Debian's own of what is linked in or included; those of the page's packages come with the page.
file(GLOB boost RELATIVE /usr/share/doc /usr/share/doc/libboost[0-9]*-dev)
foreach(name IN ITEMS libcli11-dev libsqlitecpp-dev ${boost})
  install(FILES "/usr/share/doc/${name}/copyright" DESTINATION "${doc_folder}/licences"
    RENAME "${name}.txt" COMPONENT runtime OPTIONAL)
endforeach()
install(FILES cmake/copyright DESTINATION "${doc_folder}" COMPONENT runtime)
install(FILES cmake/copyright DESTINATION "${doc_folder}-dev" COMPONENT dev)
foreach(part IN ITEMS runtime dev)
  set(folder "${doc_folder}")
  if(part STREQUAL dev)
    string(APPEND folder "-dev")
  endif()
  install(CODE "set(ORVANE_PAGES \"${PROJECT_BINARY_DIR}/pages\")
set(ORVANE_CHANGELOG \"${PROJECT_SOURCE_DIR}/CHANGELOG.md\")
set(ORVANE_CHANGELOG_FOLDER \"${folder}\")" COMPONENT ${part})
  install(SCRIPT "${PROJECT_SOURCE_DIR}/cmake/InstallChangelog.cmake" COMPONENT ${part})
endforeach()

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME orvane)
set(CPACK_PACKAGE_VERSION "${PROJECT_VERSION}")
set(CPACK_PACKAGE_CONTACT "${ORVANE_PACKAGE_CONTACT}")
# Each package has its own.
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_PACKAGE_DIRECTORY "${PROJECT_BINARY_DIR}/packages")
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_COMPONENTS_ALL runtime dev)
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_DEB_COMPONENT_INSTALL ON)

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
# Where the libraries are found that come in the package itself.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${PROJECT_BINARY_DIR}/bin")

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME orvane)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION misc)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SHLIBDEPS ON)
# Who packages a module of his own gets the right dependency from the one: below 1.0 a module fits
# the version that it was built against. The other has the loader told of the libraries.
set(debian "${PROJECT_BINARY_DIR}/debian")
set(shlibs "")
foreach(library orvane_common EventStrategy orvane_platform)
  get_target_property(soversion ${library} SOVERSION)
  string(APPEND shlibs "lib${library} ${soversion} orvane (= ${PROJECT_VERSION})\n")
endforeach()
file(CONFIGURE OUTPUT "${debian}/shlibs" CONTENT "${shlibs}" @ONLY)
file(CONFIGURE OUTPUT "${debian}/triggers" CONTENT "activate-noawait ldconfig\n" @ONLY)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA "${debian}/shlibs;${debian}/triggers")
# Time zones are read from files, which no library brings along.
set(CPACK_DEBIAN_RUNTIME_PACKAGE_DEPENDS tzdata)
set(CPACK_DEBIAN_RUNTIME_DESCRIPTION
"Runs event-driven trading strategies
The command orvane plays files of market data through strategy modules, bit for
bit the same on every run, with a paper exchange, and reports what they did.
With it come the library that hosts and modules are linked with, the embedded
platform, some strategies as examples, and all documents.")

set(CPACK_DEBIAN_DEV_PACKAGE_NAME orvane-dev)
set(CPACK_DEBIAN_DEV_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEV_PACKAGE_SHLIBDEPS OFF)
set(CPACK_DEBIAN_DEV_PACKAGE_DEPENDS "orvane (= ${PROJECT_VERSION}), qt6-base-dev (>= 6.4)")
set(CPACK_DEBIAN_DEV_PACKAGE_RECOMMENDS "cmake (>= 3.25), g++")
set(CPACK_DEBIAN_DEV_DESCRIPTION
"Headers to write trading strategies and their hosts with
What a strategy module, or a program that embeds the library and its platform,
is built against: the headers, and the files by which CMake finds it all.")

include(CPack)
