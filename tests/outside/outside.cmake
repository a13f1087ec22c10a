# What the projects outside are built with, and what their programs print.
#
#   PREFIX, LIBDIR   where the library is installed, and the folder of its libraries in there
#   FOLDER           where the projects are built
#   CC, CXX, FLAGS   the compilers, and flags that the library was built with
#   SAMPLE, VERSION  the demo's file, and the version of the library
set(projects ${CMAKE_CURRENT_LIST_DIR}/../../examples/outside)
file(REMOVE_RECURSE "${FOLDER}")
file(MAKE_DIRECTORY "${FOLDER}")

function(expect printed)
  execute_process(COMMAND ${ARGN} OUTPUT_VARIABLE output COMMAND_ERROR_IS_FATAL ANY)
  if(NOT output STREQUAL "${printed}\n")
    message(SEND_ERROR "${ARGN} printed ${output}")
  endif()
endfunction()

# The program that was installed, and those that were built, in C and in C++ each in a folder.
function(expect_programs c_folder cxx_folder)
  expect("ntf ${VERSION}" "${PREFIX}/bin/ntf" --version)
  expect("6 images, 0 graphics, 1 texts" "${c_folder}/segments" "${SAMPLE}")
  expect("880 x 544 by Ksntfx ${VERSION}" "${cxx_folder}/measure" "${SAMPLE}")
  expect("blue 208, green 160, red 64" "${cxx_folder}/fill")
endfunction()
