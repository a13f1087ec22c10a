# The codecs that depend on another library, and the one way to leave one out: its option, such as
# -D KSNTFX_CODEC_T4=OFF. The sources and tests listed here aren't compiled then, and codecs.cpp has a null in its place.
# A pattern is one of paths in the project.
set(KSNTFX_CODECS JPEG JPEG2000 T4)

option(KSNTFX_CODEC_JPEG "Decode and encode JPEG of 8 bits, with libjpeg-turbo" ON)
set(KSNTFX_CODEC_JPEG_SOURCES /kscodec/jpeg/turbo_)
set(KSNTFX_CODEC_JPEG_TESTS /kscodec/jpeg_test /kscodec/jpeg_save_test /kscodec/jpeg_samples_test /support_codecs/jpeg_)

option(KSNTFX_CODEC_JPEG2000 "Decode JPEG 2000, with OpenJPEG" ON)
set(KSNTFX_CODEC_JPEG2000_SOURCES /kscodec/jpeg2000/)
set(KSNTFX_CODEC_JPEG2000_TESTS /kscodec/jpeg2000_test /kscodec/jpeg2000_samples_test /support_codecs/jpeg2000_)

option(KSNTFX_CODEC_T4 "Decode bi-level T.4 streams and write TIFF files, with libtiff" ON)
set(KSNTFX_CODEC_T4_SOURCES /kscodec/t4 /kscodec/tiff_writer)
set(KSNTFX_CODEC_T4_TESTS /kscodec/t4_test /kscodec/tiff_test /program/export_test /support_codecs/t4_)

# For codecs.cpp, the one source that asks.
set(KSNTFX_CODEC_DEFINITIONS "")
foreach(codec IN LISTS KSNTFX_CODECS)
  if(KSNTFX_CODEC_${codec})
    list(APPEND KSNTFX_CODEC_DEFINITIONS KSNTFX_CODEC_${codec})
  endif()
endforeach()

# What compiles against the libraries of the codecs that aren't left out links this.
add_library(ksntfx_codecs INTERFACE)
if(KSNTFX_CODEC_JPEG)
  find_package(JPEG REQUIRED)
  target_link_libraries(ksntfx_codecs INTERFACE JPEG::JPEG)
endif()
if(KSNTFX_CODEC_JPEG2000)
  find_package(PkgConfig REQUIRED)
  pkg_check_modules(OpenJPEG REQUIRED IMPORTED_TARGET GLOBAL libopenjp2>=2.5)
  target_link_libraries(ksntfx_codecs INTERFACE PkgConfig::OpenJPEG)
endif()
if(KSNTFX_CODEC_T4)
  find_package(TIFF REQUIRED)
  target_link_libraries(ksntfx_codecs INTERFACE TIFF::TIFF)
endif()

# Takes out of a list of files those of codecs that are left out. `kind` is SOURCES or TESTS.
function(ksntfx_leave_out_codecs list kind)
  foreach(codec IN LISTS KSNTFX_CODECS)
    if(NOT KSNTFX_CODEC_${codec})
      foreach(pattern IN LISTS KSNTFX_CODEC_${codec}_${kind})
        list(FILTER ${list} EXCLUDE REGEX ${pattern})
      endforeach()
    endif()
  endforeach()
  set(${list} "${${list}}" PARENT_SCOPE)
endfunction()
