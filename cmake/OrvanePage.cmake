# The pages of a report and of a sweep, put together while building: templates, styles and scripts
# of host/page and the chart library become texts in the command. scripts/deps fetches the library;
# the build itself needs no network and no Node.js.

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
set(page_scripts embedded data format dom theme candles markers chart table trades months figures
    details runner overview main)
set(sweep_scripts embedded sweep-data format dom theme table sweep-values sweep-map sweep-rows
    sweep-windows sweep-main)

# Makes a page a source of the command: its template, style sheets, scripts and, if need be, the
# chart library. SLOTS are the places that the command fills; NAMES those of the parts around them.
function(orvane_page source template)
  cmake_parse_arguments(PARSE_ARGV 2 arg "" "LIBRARY" "STYLES;SCRIPTS;SLOTS;NAMES")
  list(TRANSFORM arg_STYLES PREPEND "${page_folder}/")
  list(TRANSFORM arg_SCRIPTS PREPEND "${page_folder}/")
  list(TRANSFORM arg_SCRIPTS APPEND ".js")
  set(output "${CMAKE_CURRENT_BINARY_DIR}/generated/host/${source}")
  add_custom_command(
    OUTPUT "${output}"
    COMMAND ${CMAKE_COMMAND} "-DTEMPLATE=${page_folder}/${template}" "-DSTYLES=${arg_STYLES}"
            "-DLIBRARY=${arg_LIBRARY}" "-DSCRIPTS=${arg_SCRIPTS}" "-DSLOTS=${arg_SLOTS}"
            "-DNAMES=${arg_NAMES}" "-DOUTPUT=${output}"
            -P "${PROJECT_SOURCE_DIR}/cmake/EmbedPage.cmake"
    DEPENDS "${page_folder}/${template}" ${arg_STYLES} ${arg_LIBRARY} ${arg_SCRIPTS}
            "${PROJECT_SOURCE_DIR}/cmake/EmbedPage.cmake"
    COMMENT "Putting ${template} together"
    VERBATIM)
  target_sources(orvane_host PRIVATE "${output}")
  # The standard asks compilers for texts of 65,536 characters; both take longer ones.
  set_source_files_properties("${output}" PROPERTIES
    COMPILE_OPTIONS "-Wno-overlength-strings" SKIP_PRECOMPILE_HEADERS ON)
endfunction()

orvane_page(PageTemplate.cpp page.html STYLES style.css SCRIPTS ${page_scripts}
  LIBRARY "${chart_library}" SLOTS DATA TIMING NAMES kPageHead kPageMiddle kPageTail)
orvane_page(SweepPageTemplate.cpp sweep.html STYLES style.css sweep.css SCRIPTS ${sweep_scripts}
  SLOTS DATA NAMES kSweepPageHead kSweepPageTail)

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
