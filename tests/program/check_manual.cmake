# Compares the commands and options in the program's help with its manual and with the completion of the shell.
#
#   NTF         the program
#   MANUAL      its manual, in which each command has a subsection
#   BASH        the shell
#   COMPLETION  the completion
#   FOLDER      a folder for the files that it is to offer
cmake_minimum_required(VERSION 3.25)

function(require_same what left right)
  foreach(name IN LISTS ${left})
    if(NOT name IN_LIST ${right})
      message(SEND_ERROR "${what}: ${name}")
    endif()
  endforeach()
endfunction()

# What the help lists: the commands, or the options of one.
function(read_help result pattern)
  execute_process(COMMAND "${NTF}" ${ARGN} --help OUTPUT_VARIABLE help COMMAND_ERROR_IS_FATAL ANY)
  string(REGEX MATCHALL "\n  (-[a-z], )?${pattern}" lines "${help}")
  list(TRANSFORM lines REPLACE "^\n  (-[a-z], )?" "")
  if(NOT lines)
    message(FATAL_ERROR "the help doesn't list ${pattern}")
  endif()
  set(${result} "${lines}" PARENT_SCOPE)
endfunction()

# What the completion offers for the last word behind others.
function(complete result last)
  set(script [[source "$1"; shift; COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); _ntf; printf '%s;' "${COMPREPLY[@]}"]])
  execute_process(COMMAND "${BASH}" -c "${script}" bash "${COMPLETION}" ntf ${ARGN} "${last}"
                  WORKING_DIRECTORY "${FOLDER}" OUTPUT_VARIABLE offered COMMAND_ERROR_IS_FATAL ANY)
  list(REMOVE_ITEM offered "")
  list(SORT offered)
  set(${result} "${offered}" PARENT_SCOPE)
endfunction()

# The options in the part of the manual from a heading to the next one.
function(read_manual result heading)
  file(READ "${MANUAL}" manual)
  string(REGEX MATCH "\n\\.S[hs] ${heading}\n(.*)" rest "${manual}")
  string(REGEX REPLACE "\n\\.S[hs] .*" "" part "${CMAKE_MATCH_1}")
  string(REGEX MATCHALL "Fl -[a-z-]+" options "${part}")
  list(TRANSFORM options REPLACE "^Fl " "-")
  if(part MATCHES "\nThe options are those of\n\\.Cm ([a-z]+)")
    read_manual(others ${CMAKE_MATCH_1})
    list(APPEND options ${others})
  endif()
  set(${result} "${options}" PARENT_SCOPE)
endfunction()

file(REMOVE_RECURSE "${FOLDER}")
file(MAKE_DIRECTORY "${FOLDER}/sub folder")
file(TOUCH "${FOLDER}/scene.NTF" "${FOLDER}/scene.png" "${FOLDER}/scene.txt")

set(common --help --version)
read_help(commands "[a-z]+")
read_help(options "--[a-z-]+")
set(first_words ${commands} ${options})
complete(offered "")
require_same("not offered" first_words offered)
require_same("offered and not there" offered first_words)
read_manual(described DESCRIPTION)
require_same("not in the manual" options described)
require_same("in the manual and not there" described options)

foreach(command IN LISTS commands)
  read_help(options "--[a-z-]+" ${command})
  complete(offered -- ${command})
  require_same("not offered by ${command}" options offered)
  require_same("offered by ${command} and not there" offered options)
  list(REMOVE_ITEM options ${common})
  read_manual(described ${command})
  require_same("not in the manual of ${command}" options described)
  require_same("in the manual of ${command} and not there" described options)
endforeach()

# Of the files, those that the word before asks for; folders lead to more.
function(require_offered expected)
  complete(offered "" ${ARGN})
  if(NOT offered STREQUAL expected)
    message(SEND_ERROR "offered behind ${ARGN}: ${offered}")
  endif()
endfunction()
require_offered("scene.NTF;sub folder" info)
require_offered("scene.png;sub folder" render scene.NTF -o)
require_offered("24;8" render --depth)
