# SPDX-License-Identifier: GPL-3.0-or-later
# Helpers that give every target of the project the same rules.

add_library(tavro_options INTERFACE)
target_compile_options(tavro_options INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Woverloaded-virtual -Wold-style-cast
  $<$<BOOL:${TAVRO_WERROR}>:-Werror>)
target_compile_definitions(tavro_options INTERFACE
  QT_NO_KEYWORDS QT_NO_CAST_FROM_BYTEARRAY QT_NO_URL_CAST_FROM_STRING QT_USE_QSTRINGBUILDER)
# Headers are included by their path from the root of the sources.
target_include_directories(tavro_options INTERFACE ${PROJECT_SOURCE_DIR})
if(TAVRO_SANITIZE)
  target_compile_options(tavro_options INTERFACE
    -fsanitize=${TAVRO_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=undefined)
  target_link_options(tavro_options INTERFACE -fsanitize=${TAVRO_SANITIZE})
endif()

# tavro_library(NAME SOURCES... PUBLIC LIBS... PRIVATE LIBS...): one static library of the project.
function(tavro_library name)
  cmake_parse_arguments(ARG "" "" "SOURCES;PUBLIC;PRIVATE" ${ARGN})
  add_library(${name} STATIC ${ARG_SOURCES})
  set_target_properties(${name} PROPERTIES AUTOMOC ON)
  target_link_libraries(${name} PUBLIC ${ARG_PUBLIC} PRIVATE tavro_options ${ARG_PRIVATE})
endfunction()

# For every test, beside what it asks for itself.
set(TAVRO_TEST_ENVIRONMENT
  LSAN_OPTIONS=suppressions=${PROJECT_SOURCE_DIR}/tests/common/lsan.supp:print_suppressions=0)

# tavro_test(NAME SOURCES... LIBS... [DISPLAY|DESKTOP] [TIMEOUT n] [ENVIRONMENT...]): one test
# program. DISPLAY runs it under an X server of its own, DESKTOP adds a window manager.
function(tavro_test name)
  cmake_parse_arguments(ARG "DISPLAY;DESKTOP" "TIMEOUT" "SOURCES;LIBS;ENVIRONMENT" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  set_target_properties(${name} PROPERTIES AUTOMOC ON)
  target_link_libraries(${name} PRIVATE tavro_options ${ARG_LIBS} Qt5::Test)
  target_compile_definitions(${name} PRIVATE TAVRO_SOURCE_DIR="${PROJECT_SOURCE_DIR}")
  if(TAVRO_SANITIZE)
    target_sources(${name} PRIVATE ${PROJECT_SOURCE_DIR}/tests/common/keep_libraries.cpp)
  endif()
  set(command $<TARGET_FILE:${name}>)
  if(ARG_DESKTOP)
    set(command ${PROJECT_SOURCE_DIR}/tests/common/with_display --desktop ${command})
  elseif(ARG_DISPLAY)
    set(command ${PROJECT_SOURCE_DIR}/tests/common/with_display ${command})
  endif()
  add_test(NAME ${name} COMMAND ${command})
  if(NOT ARG_TIMEOUT)
    set(ARG_TIMEOUT 120)
  endif()
  list(APPEND ARG_ENVIRONMENT ${TAVRO_TEST_ENVIRONMENT})
  set_tests_properties(${name} PROPERTIES TIMEOUT ${ARG_TIMEOUT} ENVIRONMENT "${ARG_ENVIRONMENT}")
endfunction()
