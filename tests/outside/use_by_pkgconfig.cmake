# Builds the sources of the projects with what pkg-config tells, and runs their programs.
cmake_minimum_required(VERSION 3.25)
include(${CMAKE_CURRENT_LIST_DIR}/outside.cmake)

find_program(PKG_CONFIG pkg-config REQUIRED)
set(ENV{PKG_CONFIG_LIBDIR} "${PREFIX}/${LIBDIR}/pkgconfig")
separate_arguments(FLAGS)

function(build compiler library source program)
  execute_process(COMMAND "${PKG_CONFIG}" --cflags --libs ${library} OUTPUT_VARIABLE told COMMAND_ERROR_IS_FATAL ANY)
  separate_arguments(told UNIX_COMMAND "${told}")
  execute_process(COMMAND "${compiler}" ${FLAGS} "${projects}/${source}" -o "${FOLDER}/${program}" ${told}
                          "-Wl,-rpath,${PREFIX}/${LIBDIR}" COMMAND_ERROR_IS_FATAL ANY)
endfunction()

foreach(library ksntfx kskernel)
  expect("${VERSION}" "${PKG_CONFIG}" --modversion ${library})
endforeach()
build("${CC}" ksntfx c/segments.c segments)
build("${CXX}" ksntfx cxx/measure.cpp measure)
build("${CXX}" kskernel cxx/fill.cpp fill)
expect_programs("${FOLDER}" "${FOLDER}")
