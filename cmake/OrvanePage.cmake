# The page of a report, put together while building: host/page's template, style and scripts and
# the chart library become one text in the command. scripts/deps fetches the library; the build
# itself needs no network and no Node.js.

set(page_folder "${PROJECT_SOURCE_DIR}/host/page")
set(ORVANE_PAGE_PACKAGES "${page_folder}/node_modules" CACHE PATH
    "Folder with the packages of host/page/package-lock.json")
set(chart_package "${ORVANE_PAGE_PACKAGES}/lightweight-charts")
set(chart_library "${chart_package}/dist/lightweight-charts.standalone.production.js")

# The version that the lock names, and none other: the page is tested with it.
file(READ "${page_folder}/package-lock.json" lock)
string(JSON wanted_version GET "${lock}" packages "node_modules/lightweight-charts" version)
set(found_version "missing")
if(EXISTS "${chart_library}" AND EXISTS "${chart_package}/package.json")
  file(READ "${chart_package}/package.json" package)
  string(JSON found_version GET "${package}" version)
endif()
if(NOT found_version STREQUAL wanted_version)
  message(FATAL_ERROR
    "lightweight-charts ${wanted_version}, which the page of a report needs, is ${found_version} "
    "in ${ORVANE_PAGE_PACKAGES}. Run scripts/deps, or \"npm ci\" in host/page; without a network, "
    "copy that folder from elsewhere, or name it with -DORVANE_PAGE_PACKAGES=...")
endif()

# In this order they make one script.
set(page_scripts data format dom theme candles markers chart table trades months figures details
    runner overview main)
list(TRANSFORM page_scripts PREPEND "${page_folder}/")
list(TRANSFORM page_scripts APPEND ".js")
set(page_source "${CMAKE_CURRENT_BINARY_DIR}/generated/host/PageTemplate.cpp")
add_custom_command(
  OUTPUT "${page_source}"
  COMMAND ${CMAKE_COMMAND} "-DTEMPLATE=${page_folder}/page.html" "-DSTYLE=${page_folder}/style.css"
          "-DLIBRARY=${chart_library}" "-DSCRIPTS=${page_scripts}" "-DOUTPUT=${page_source}"
          -P "${PROJECT_SOURCE_DIR}/cmake/EmbedPage.cmake"
  DEPENDS "${page_folder}/page.html" "${page_folder}/style.css" "${chart_library}"
          ${page_scripts} "${PROJECT_SOURCE_DIR}/cmake/EmbedPage.cmake"
  COMMENT "Putting the page of a report together"
  VERBATIM)
target_sources(orvane_host PRIVATE "${page_source}")
# The standard asks compilers for texts of 65,536 characters; both take longer ones.
set_source_files_properties("${page_source}" PROPERTIES
  COMPILE_OPTIONS "-Wno-overlength-strings" SKIP_PRECOMPILE_HEADERS ON)

# Whoever gets the command gets the library in it, and so its licences; where a package brings no
# text of its licence, its description names it.
foreach(name IN ITEMS lightweight-charts fancy-canvas)
  set(licence "${ORVANE_PAGE_PACKAGES}/${name}/LICENSE")
  if(NOT EXISTS "${licence}")
    set(licence "${ORVANE_PAGE_PACKAGES}/${name}/package.json")
  endif()
  install(FILES "${licence}" DESTINATION "${CMAKE_INSTALL_DATADIR}/doc/orvane/licences"
    RENAME "${name}.txt" COMPONENT runtime)
endforeach()
