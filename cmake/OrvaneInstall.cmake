# What is installed: the libraries, the public headers in the tree's own folders below
# include/orvane, and the package files for find_package(EventStrategy CONFIG). The command and the
# example modules say themselves where they go.
include(CMakePackageConfigHelpers)

option(ORVANE_INSTALL "Make the install rules" ${PROJECT_IS_TOP_LEVEL})
if(NOT ORVANE_INSTALL)
  return()
endif()

foreach(target orvane_common EventStrategy orvane_platform orvane_sdk)
  if(NOT TARGET ${target})
    message(STATUS "No install rules: there is no target ${target}")
    return()
  endif()
endforeach()

set(ORVANE_HEADER_DIR "${CMAKE_INSTALL_INCLUDEDIR}/orvane")
set(ORVANE_PACKAGE_DIR "${CMAKE_INSTALL_LIBDIR}/cmake/EventStrategy")
set(ORVANE_STRATEGY_DIR "${CMAKE_INSTALL_LIBDIR}/orvane/strategies")

# Makes the given headers of the tree public headers of a target.
function(orvane_public_headers target)
  list(TRANSFORM ARGN PREPEND "${PROJECT_SOURCE_DIR}/")
  target_sources(${target} PUBLIC
    FILE_SET HEADERS BASE_DIRS "${PROJECT_SOURCE_DIR}" FILES ${ARGN})
endfunction()

# Rooms that are public as a whole: each header in them is.
file(GLOB_RECURSE orvane_ground_headers RELATIVE "${PROJECT_SOURCE_DIR}" CONFIGURE_DEPENDS
  "${PROJECT_SOURCE_DIR}/shared/*.h" "${PROJECT_SOURCE_DIR}/shared/*.inc"
  "${PROJECT_SOURCE_DIR}/services/*.h" "${PROJECT_SOURCE_DIR}/platform/fields/*.h")
orvane_public_headers(orvane_common ${orvane_ground_headers})

# Of these rooms only what a host or a strategy writer needs.
orvane_public_headers(EventStrategy
  EventStrategy/AbstractEventStrategy.h
  EventStrategy/DataNotify.h
  EventStrategy/EventTradeNotify.h
  EventStrategy/EventTypes.h
  EventStrategy/Events.h
  EventStrategy/GeneralEventNotify.h
  EventStrategy/IDataSrc.h
  EventStrategy/IEvent.h
  EventStrategy/IEventStrategy.h
  EventStrategy/IGeneralEventSrc.h
  EventStrategy/IIndexSrc.h
  EventStrategy/IQuoteSrc.h
  EventStrategy/ITradeSrc.h
  EventStrategy/IndexNotify.h
  EventStrategy/QuoteNotify.h
  EventStrategy/ov.strategy.runner/IContext.h
  EventStrategy/ov.strategy.runner/IRunner.h
  EventStrategy/ov.strategy.runner/IRunnerFactory.h
  EventStrategy/ov.strategy.runner/IRunnerGlobal.h
  EventStrategy/ov.strategy.runner/IRunnerSpi.h
  EventStrategy/ov.strategy.runner/IStrategy.h
  EventStrategy/ov.strategy.runner/StrategyLog.h)
orvane_public_headers(orvane_platform
  platform/EmbeddedPlatform.h
  platform/core/ModuleTrial.h
  platform/dictionary/DictionaryOptions.h
  platform/dictionary/RecordFile.h
  platform/dictionary/RecordPublication.h
  platform/events/EventOptions.h
  platform/events/IndexFile.h
  platform/market/LongerBars.h
  platform/market/Rows.h
  platform/market/Series.h
  platform/market/files/CacheFile.h
  platform/market/files/DataFiles.h
  platform/reference/Instrument.h
  platform/trade/ChunkedList.h
  platform/trade/FillPart.h
  platform/trade/OrderPart.h
  platform/trade/RecordList.h
  platform/trade/TradeGlance.h
  platform/trade/TradeOptions.h
  platform/trade/conditions/GridOptions.h
  platform/trade/conditions/IGridConditions.h
  platform/trade/TradeResults.h)

install(TARGETS orvane_common EventStrategy orvane_platform orvane_sdk EXPORT EventStrategyTargets
  LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT runtime NAMELINK_COMPONENT dev
  FILE_SET HEADERS DESTINATION "${ORVANE_HEADER_DIR}" COMPONENT dev)

# Every module that examples/ makes.
function(orvane_collect_modules folder result)
  get_property(targets DIRECTORY "${folder}" PROPERTY BUILDSYSTEM_TARGETS)
  get_property(subfolders DIRECTORY "${folder}" PROPERTY SUBDIRECTORIES)
  set(modules "")
  foreach(target IN LISTS targets)
    get_target_property(type ${target} TYPE)
    if(type STREQUAL "MODULE_LIBRARY")
      list(APPEND modules ${target})
    endif()
  endforeach()
  foreach(subfolder IN LISTS subfolders)
    orvane_collect_modules("${subfolder}" more)
    list(APPEND modules ${more})
  endforeach()
  set(${result} ${modules} PARENT_SCOPE)
endfunction()

if(ORVANE_EXAMPLES)
  orvane_collect_modules("${PROJECT_SOURCE_DIR}/examples" modules)
  # A module finds the libraries two folders up, wherever the whole was installed.
  set_target_properties(${modules} PROPERTIES INSTALL_RPATH "$ORIGIN/../..")
endif()

configure_package_config_file("${PROJECT_SOURCE_DIR}/cmake/EventStrategyConfig.cmake.in"
  "${PROJECT_BINARY_DIR}/EventStrategyConfig.cmake"
  INSTALL_DESTINATION "${ORVANE_PACKAGE_DIR}"
  PATH_VARS ORVANE_STRATEGY_DIR)
# Below 1.0 a new minor version may break users.
write_basic_package_version_file("${PROJECT_BINARY_DIR}/EventStrategyConfigVersion.cmake"
  COMPATIBILITY SameMinorVersion)
install(EXPORT EventStrategyTargets NAMESPACE orvane:: DESTINATION "${ORVANE_PACKAGE_DIR}"
  COMPONENT dev)
install(FILES
  "${PROJECT_BINARY_DIR}/EventStrategyConfig.cmake"
  "${PROJECT_BINARY_DIR}/EventStrategyConfigVersion.cmake"
  DESTINATION "${ORVANE_PACKAGE_DIR}" COMPONENT dev)
