# Builds the projects in C and C++ with the package of CMake, and runs their programs.
cmake_minimum_required(VERSION 3.25)
include(${CMAKE_CURRENT_LIST_DIR}/outside.cmake)

foreach(project c cxx)
  execute_process(COMMAND "${CMAKE_COMMAND}" -G Ninja -S "${projects}/${project}" -B "${FOLDER}/${project}"
                          --no-warn-unused-cli -D "CMAKE_PREFIX_PATH=${PREFIX}"
                          -D "CMAKE_C_COMPILER=${CC}" -D "CMAKE_CXX_COMPILER=${CXX}"
                          -D "CMAKE_C_FLAGS=${FLAGS}" -D "CMAKE_CXX_FLAGS=${FLAGS}"
                  OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
  load_cache("${FOLDER}/${project}" READ_WITH_PREFIX found_ Ksntfx_DIR)
  if(NOT found_Ksntfx_DIR STREQUAL "${PREFIX}/${LIBDIR}/cmake/Ksntfx")
    message(SEND_ERROR "another package was found: ${found_Ksntfx_DIR}")
  endif()
  execute_process(COMMAND "${CMAKE_COMMAND}" --build "${FOLDER}/${project}" OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
endforeach()
expect_programs("${FOLDER}/c" "${FOLDER}/cxx")
