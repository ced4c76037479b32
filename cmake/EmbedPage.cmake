# Makes a C++ source of the page's parts. TEMPLATE, STYLE, LIBRARY, SCRIPTS (a list) and OUTPUT are
# given.

cmake_minimum_required(VERSION 3.25)

set(script "")
foreach(file IN LISTS SCRIPTS)
  file(READ "${file}" text)
  string(APPEND script "${text}")
endforeach()
file(READ "${TEMPLATE}" page)
file(READ "${STYLE}" style)
file(READ "${LIBRARY}" library)

# What stands inside an element must not end it.
foreach(part IN ITEMS script library style)
  string(TOLOWER "${${part}}" lowered)
  foreach(tag IN ITEMS "</script" "</style" "<!--")
    string(FIND "${lowered}" "${tag}" at)
    if(NOT at EQUAL -1)
      message(FATAL_ERROR "the page's ${part} holds \"${tag}\"")
    endif()
  endforeach()
endforeach()

# The library comes last: no text of it may be taken for a place to fill.
string(REPLACE "@STYLE@" "${style}" page "${page}")
string(REPLACE "@SCRIPT@" "${script}" page "${page}")
string(REPLACE "@LIBRARY@" "${library}" page "${page}")
foreach(slot IN ITEMS DATA TIMING)
  string(FIND "${page}" "@${slot}@" ${slot}_first)
  string(FIND "${page}" "@${slot}@" ${slot}_last REVERSE)
  if(${slot}_first EQUAL -1 OR NOT ${slot}_first EQUAL ${slot}_last)
    message(FATAL_ERROR "the page has to have one place for @${slot}@")
  endif()
endforeach()
string(LENGTH "@DATA@" data_length)
string(LENGTH "@TIMING@" timing_length)
math(EXPR middle "${DATA_first} + ${data_length}")
math(EXPR middle_length "${TIMING_first} - ${middle}")
math(EXPR tail "${TIMING_first} + ${timing_length}")
string(SUBSTRING "${page}" 0 ${DATA_first} head_text)
string(SUBSTRING "${page}" ${middle} ${middle_length} middle_text)
string(SUBSTRING "${page}" ${tail} -1 tail_text)

string(FIND "${page}" ")~page~\"" at)
if(NOT at EQUAL -1)
  message(FATAL_ERROR "the page holds what ends a text in its source")
endif()
file(WRITE "${OUTPUT}" "#include \"host/PageTemplate.h\"\n\nnamespace orvane {\n\n"
  "const char* const kPageHead = R\"~page~(${head_text})~page~\";\n"
  "const char* const kPageMiddle = R\"~page~(${middle_text})~page~\";\n"
  "const char* const kPageTail = R\"~page~(${tail_text})~page~\";\n\n}  // namespace orvane\n")
