// The writer: a new file, front to back, from what a NitfFile holds.
#pragma once

#include "imsubhdr.h"
#include "length_tables.h"
#include "nitffile.h"

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
  std::int32_t WriteFileHeader(KsHandle out, NitfFile *file);
  /** Writes all segments behind it, kind by kind. */
  std::int32_t WriteSegments(KsHandle out, NitfFile *file);

  // A subheader goes to the end of the output.
  std::int32_t WriteImageSubheader(KsHandle out, NitfFile *file, std::uint32_t index);
  std::int32_t WriteGraphicSubheader(KsHandle out, NitfFile *file, std::uint32_t index);
  std::int32_t WriteLabelSubheader(KsHandle out, NitfFile *file, std::uint32_t index);
  std::int32_t WriteTextSubheader(KsHandle out, NitfFile *file, std::uint32_t index);
  std::int32_t WriteDataExtensionSubheader(KsHandle out, NitfFile *file, std::uint32_t index);

  /** Overwrites LISH or LI of an image in the header, and puts the output back to its end. */
  std::int32_t PatchImageSubheaderLength(NitfFile *file, KsHandle out, std::uint32_t index, std::uint32_t length);
  std::int32_t PatchImageDataLength(NitfFile *file, KsHandle out, std::uint32_t index, std::uint32_t length);

  /** Copies an image's data, with its mask table, to where the tables say that its subheader ends. */
  std::int32_t WriteImageData(KsHandle out, NitfFile *file, std::uint32_t index);
  /**
   * Copies vector-quantised data behind the mask table that the subheader came with, without what the source has behind
   * its last row of codes. ERROR_FILE_FORMAT for a header that gives no rows.
   */
  std::int32_t WriteVqImageData(KsHandle out, NitfFile *file, const ImageSubheader &image, std::uint32_t index);
  // These write from memory, or copy from the source.
  std::int32_t WriteGraphicData(KsHandle out, NitfFile *file, std::uint32_t index);
  std::int32_t WriteLabelData(KsHandle out, NitfFile *file, std::uint32_t index);
  std::int32_t WriteTextData(KsHandle out, NitfFile *file, std::uint32_t index);

  void *scratch1 = nullptr; /**< blocks of KsCalloc, released with the object */
  void *scratch2 = nullptr;
  void *scratch3 = nullptr;
  std::uint32_t fileLengthFieldOffset = 0; /**< where FL stands */
  std::uint32_t imageTableOffset = 0;      /**< where the first LISH stands */
  std::uint32_t maskBytes = 0;             /**< of the mask table that the last image subheader came with */
  std::uint32_t lengthsPatched = 0;        /**< images stand elsewhere than the tables say */

 private:
  std::int32_t WriteImage(KsHandle out, NitfFile *file, std::uint32_t index, std::int64_t *mark);
  std::int32_t WriteImageBody(KsHandle out, NitfFile *file, const ImageSubheader &image, std::uint32_t index);
  std::int32_t WriteDataExtension(KsHandle out, NitfFile *file, std::uint32_t index);
  std::int32_t Patch(NitfFile *file, KsHandle out, const LengthColumn &column, std::uint32_t offset,
                     std::uint32_t index, std::uint32_t length);
};

/** Whether all numbers fit the fields that they are written to: SUCCESS or ERROR_INVALID_VALUE. Nothing is written. */
std::int32_t CheckFieldWidths(const NitfFile *file);
