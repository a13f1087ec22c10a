// What is expected of each sample file.
#pragma once

#include "ksntfx.h"

#include <cctype>
#include <cstdint>
#include <string>

struct SampleFile {
  const char *name;
  std::int32_t info; /**< status of fltInfo */
  std::int32_t load; /**< status of fltLoad */
  std::uint32_t width;
  std::uint32_t height; /**< of the canvas, where fltInfo knows it */

  /** Whether the file is accepted. */
  bool Accepted() const { return info == SUCCESS; }
};

/** The name of a file as that of a test. */
inline std::string TestName(const std::string &fileName) {
  std::string name = fileName;
  for (char &character : name) {
    if (std::isalnum(static_cast<unsigned char>(character)) == 0) character = '_';
  }
  return name;
}

constexpr SampleFile kSampleFiles[] = {
    // Headers alone: the canvas has its greatest size.
    {"test_blank.ntf", SUCCESS, SUCCESS, 2048, 2048},
    {"test_des_read.ntf", SUCCESS, SUCCESS, 2048, 2048},
    // Uncompressed. The canvas reaches from the origin over the location to the end of the image.
    {"i_3001a.ntf", SUCCESS, SUCCESS, 1024, 1024},
    {"i_3034c.ntf", SUCCESS, SUCCESS, 135, 118},
    {"LUinBand2.ntf", SUCCESS, SUCCESS, 135, 118},
    {"i_3301a.ntf", SUCCESS, SUCCESS, 1124, 1124},
    {"i_3301h.ntf", SUCCESS, SUCCESS, 216, 216},
    {"v_3301f.ntf", SUCCESS, SUCCESS, 712, 712},
    {"i_3405a.ntf", SUCCESS, SUCCESS, 1024, 1024},
    {"blank_irepbands.ntf", SUCCESS, SUCCESS, 175, 221},
    // JPEG.
    {"i_3025b.ntf", SUCCESS, SUCCESS, 64, 64},
    {"i_3309a.ntf", SUCCESS, SUCCESS, 2048, 2048},
    {"two_images_jpeg.ntf", SUCCESS, SUCCESS, 20, 20},
    // Bi-level.
    {"i_3041a.ntf", SUCCESS, SUCCESS, 512, 512},
    // JPEG 2000.
    {"file9_j2c.ntf", SUCCESS, SUCCESS, 768, 512},
    {"p0_10b.ntf", SUCCESS, SUCCESS, 64, 64},
    {"001_006_64x64_s_8_1_mono_j2c.ntf", SUCCESS, SUCCESS, 64, 64},
    // Drawings.
    {"i_3052a.ntf", SUCCESS, SUCCESS, 752, 752},
    {"i_3063f.ntf", SUCCESS, SUCCESS, 927, 727},
    {"NITF21_CGM_ANNO_Uncompressed_unmasked.ntf", SUCCESS, SUCCESS, 1536, 1536},
    // Refused by their headers.
    {"rgb16.ntf", NITF_UNSUPPORTED_BPP, NITF_UNSUPPORTED_BPP, 0, 0},
    {"ns3051v.nsf", NITF_UNSUPPORTED_VERSION, NITF_UNSUPPORTED_VERSION, 0, 0},
    {"U_1050A.NTF", NITF_UNSUPPORTED_VERSION, NITF_UNSUPPORTED_VERSION, 0, 0},
};
