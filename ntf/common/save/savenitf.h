// The writer: a new file, front to back, from what a NitfFile holds.
#pragma once

#include "headers/nitffile.h"

namespace ksntfx {

/**
 * One save. Almost nothing is computed: what changes an object has already carried every length into the header. Only
 * masked vector-quantised images are measured, and patched back into the header's table.
 *
 * All operations give SUCCESS or the first failure: ERROR_FILE_WRITE, ERROR_FILE_READ of the source, ERROR_NO_MEMORY.
 */
class KNitfSaveFile {
 public:
  KNitfSaveFile() = default;
  KNitfSaveFile(const KNitfSaveFile &) = delete;
  KNitfSaveFile &operator=(const KNitfSaveFile &) = delete;
  virtual ~KNitfSaveFile();

  /** Writes the file header at the output's position. */
  Status WriteFileHeader(KsHandle out, NitfFile *file);
  /** Writes all segments behind it, kind by kind. */
  Status WriteSegments(KsHandle out, NitfFile *file);

  // A subheader goes to the end of the output.
  Status WriteImageSubheader(KsHandle out, NitfFile *file, std::uint32_t index);
  Status WriteGraphicSubheader(KsHandle out, NitfFile *file, std::uint32_t index);
  Status WriteLabelSubheader(KsHandle out, NitfFile *file, std::uint32_t index);
  Status WriteTextSubheader(KsHandle out, NitfFile *file, std::uint32_t index);
  Status WriteDataExtensionSubheader(KsHandle out, NitfFile *file, std::uint32_t index);

  /** Overwrites LISH or LI of an image in the header, and puts the output back to its end. */
  Status PatchImageSubheaderLength(NitfFile *file, KsHandle out, std::uint32_t index, std::uint32_t length);
  Status PatchImageDataLength(NitfFile *file, KsHandle out, std::uint32_t index, std::uint32_t length);

  /** Copies an image's data, with its mask table, to where the tables say that its subheader ends. */
  Status WriteImageData(KsHandle out, NitfFile *file, std::uint32_t index);
  /**
   * Copies vector-quantised data behind the mask table that the subheader came with, without what the source has behind
   * its last row of codes. ERROR_FILE_FORMAT for a header that gives no rows.
   */
  Status WriteVqImageData(KsHandle out, NitfFile *file, const ImageSubheader &image, std::uint32_t index);
  // These write from memory, or copy from the source.
  Status WriteGraphicData(KsHandle out, NitfFile *file, std::uint32_t index);
  Status WriteLabelData(KsHandle out, NitfFile *file, std::uint32_t index);
  Status WriteTextData(KsHandle out, NitfFile *file, std::uint32_t index);

  void *scratch1 = nullptr; /**< blocks of KsCalloc, released with the object */
  void *scratch2 = nullptr;
  void *scratch3 = nullptr;
  HeaderMarks marks{};
  std::uint32_t lengthsPatched = 0; /**< images stand elsewhere than the tables say */

 private:
  Status WriteImage(KsHandle out, NitfFile *file, std::uint32_t index, std::int64_t *mark);
  Status WriteImageBody(KsHandle out, NitfFile *file, const ImageSubheader &image, std::uint32_t index);
  Status WriteDataExtension(KsHandle out, NitfFile *file, std::uint32_t index);
  Status Patch(NitfFile *file, KsHandle out, const LengthColumn &column, std::uint32_t offset, std::uint32_t index,
               std::uint32_t length);
};

/**
 * Whether a save would lose nothing: all numbers fit the fields that they are written to, each image's subheader fits
 * its LISH, and all lengths and positions were known in 32 bits. SUCCESS or ERROR_INVALID_VALUE. Nothing is written.
 */
Status CheckBeforeSave(const NitfFile *file);

}  // namespace ksntfx
