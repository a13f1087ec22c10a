# Compares what a shared library shows with what its header documents.
#
#   NM       the program nm
#   LIBRARY  the shared library
#   HEADER   its headers, separated by commas; each documented function stands behind API there
#   API      the macro of the header's declarations
#   ONLY     the functions that the header is to document, separated by commas, where they are given
#   ALSO     a pattern of further names, demangled, that may be shown
cmake_minimum_required(VERSION 3.25)

string(REPLACE "," ";" HEADER "${HEADER}")
set(documented "")
foreach(path IN LISTS HEADER)
  file(READ "${path}" header)
  string(REGEX MATCHALL "\n${API} [^;(]*[( *][A-Za-z_0-9]+\\(" declarations "${header}")
  foreach(declaration IN LISTS declarations)
    string(REGEX REPLACE ".*[ *]([A-Za-z_0-9]+)\\($" "\\1" name "${declaration}")
    list(APPEND documented "${name}")
  endforeach()
endforeach()
if(NOT documented)
  message(FATAL_ERROR "no declarations in ${HEADER}")
endif()

execute_process(COMMAND "${NM}" -D --defined-only -C "${LIBRARY}" OUTPUT_VARIABLE listing COMMAND_ERROR_IS_FATAL ANY)
string(REPLACE ";" "," listing "${listing}")
string(REGEX MATCHALL "[^\n]+" lines "${listing}")
set(shown "")
foreach(line IN LISTS lines)
  string(REGEX REPLACE "^[0-9a-fA-F]* *[A-Za-z] " "" name "${line}")
  list(APPEND shown "${name}")
endforeach()

function(require_same what left right)
  foreach(name IN LISTS ${left})
    if(NOT name IN_LIST ${right})
      message(SEND_ERROR "${what}: ${name}")
    endif()
  endforeach()
endfunction()

require_same("documented and not shown" documented shown)
if(ALSO)
  list(FILTER shown EXCLUDE REGEX "${ALSO}")
endif()
require_same("shown and not documented" shown documented)
if(ONLY)
  string(REPLACE "," ";" ONLY "${ONLY}")
  require_same("missing in the header" ONLY documented)
  require_same("not to be in the header" documented ONLY)
endif()
