# Installs what is built in BUILD into the folder FIRST, and moves that to the folder PREFIX.
cmake_minimum_required(VERSION 3.25)
file(REMOVE_RECURSE "${FIRST}" "${PREFIX}")
execute_process(COMMAND "${CMAKE_COMMAND}" --install "${BUILD}" --prefix "${FIRST}" OUTPUT_QUIET
                COMMAND_ERROR_IS_FATAL ANY)
file(RENAME "${FIRST}" "${PREFIX}")
