#include "kscodec/jpeg/turbo_state.h"

#include "kscodec/jpeg/huffman.h"
#include "kscodec/source.h"

#include <algorithm>
#include <limits>

namespace kscodec::jpeg {

namespace {

/** A stream of a few kilobytes can have any number of scans, each of which covers the whole picture. */
constexpr int kMostScans = 500;
constexpr uint64_t kMostScannedPixels = uint64_t{1} << 34;

/** The coefficients of a picture in several scans are held until the last of them: two bytes a sample. */
constexpr uint64_t kMostCoefficientBytes = uint64_t{4} << 30;

/** Called for each row of blocks. */
void BoundScans(j_common_ptr state) {
  const auto &jpeg = *reinterpret_cast<j_decompress_ptr>(state);
  const int scans = jpeg.input_scan_number;
  const uint64_t pixels = uint64_t{jpeg.image_width} * jpeg.image_height;
  const bool tooMuch = scans > 1 && static_cast<uint64_t>(scans) * pixels > kMostScannedPixels;
  if (scans > kMostScans || tooMuch) Leave(state, ERROR_FILE_FORMAT);
}

void InstallTable(j_common_ptr state, JHUFF_TBL **slot, const HuffmanTable &table) {
  if (*slot != nullptr) return;
  *slot = jpeg_alloc_huff_table(state);
  std::copy(table.counts.begin(), table.counts.end(), (*slot)->bits + 1);
  std::copy(table.symbols.begin(), table.symbols.end(), (*slot)->huffval);
}

void InstallQuantisation(jpeg_decompress_struct *jpeg, const QuantisationTable &table) {
  for (JQUANT_TBL *&slot : jpeg->quant_tbl_ptrs) {
    if (slot != nullptr) continue;
    slot = jpeg_alloc_quant_table(reinterpret_cast<j_common_ptr>(jpeg));
    for (size_t i = 0; i < table.size(); ++i) slot->quantval[kZigzag[i]] = table[i];
  }
}

/** A stream without Huffman tables has the standard ones. */
void InstallMissingTables(jpeg_decompress_struct *jpeg, const Plan &plan) {
  if (plan.quantisation != nullptr) InstallQuantisation(jpeg, *plan.quantisation);
  if (jpeg->progressive_mode) return;
  auto *const state = reinterpret_cast<j_common_ptr>(jpeg);
  for (size_t i = 0; i < kStandardDc.size(); ++i) {
    InstallTable(state, &jpeg->dc_huff_tbl_ptrs[i], kStandardDc[i]);
    InstallTable(state, &jpeg->ac_huff_tbl_ptrs[i], kStandardAc[i]);
  }
}

TurboDecoder &DecoderOf(j_decompress_ptr jpeg) {
  return *reinterpret_cast<TurboDecoder *>(jpeg);
}

/** Reads on. Behind the end of the stream there is an end of image, so that the library stops. */
boolean FillBuffer(j_decompress_ptr jpeg) {
  static constexpr JOCTET kEnd[] = {0xFF, JPEG_EOI};
  TurboDecoder &decoder = DecoderOf(jpeg);
  const ByteSource &source = *decoder.input.source;
  const uint64_t count = std::min<uint64_t>(source.Size() - decoder.at, sizeof decoder.buffer);
  if (count == 0) {
    jpeg->src->next_input_byte = kEnd;
    jpeg->src->bytes_in_buffer = sizeof kEnd;
    return TRUE;
  }
  if (source.Read(decoder.at, decoder.buffer, count) != SUCCESS) {
    Leave(reinterpret_cast<j_common_ptr>(jpeg), ERROR_FILE_READ);
  }
  decoder.at += count;
  jpeg->src->next_input_byte = decoder.buffer;
  jpeg->src->bytes_in_buffer = count;
  return TRUE;
}

void SkipInput(j_decompress_ptr jpeg, long wanted) {
  if (wanted <= 0) return;
  const auto count = static_cast<uint64_t>(wanted);
  jpeg_source_mgr &source = *jpeg->src;
  if (count <= source.bytes_in_buffer) {
    source.next_input_byte += count;
    source.bytes_in_buffer -= count;
    return;
  }
  TurboDecoder &decoder = DecoderOf(jpeg);
  const uint64_t left = decoder.input.source->Size() - decoder.at;
  decoder.at += std::min<uint64_t>(count - source.bytes_in_buffer, left);
  source.bytes_in_buffer = 0;
}

void SetSource(TurboDecoder *decoder) {
  decoder->at = decoder->input.start;
  decoder->source.init_source = [](j_decompress_ptr) {};
  decoder->source.fill_input_buffer = FillBuffer;
  decoder->source.skip_input_data = SkipInput;
  decoder->source.resync_to_restart = jpeg_resync_to_restart;
  decoder->source.term_source = [](j_decompress_ptr) {};
  decoder->state.src = &decoder->source;
}

}  // namespace

void TurboDecoder::ReadHeader(const JpegInput &from, const Plan &plan) {
  input = from;
  jpeg_decompress_struct *jpeg = &state;
  jpeg_create_decompress(jpeg);
  constexpr auto kMostLong = static_cast<uint64_t>(std::numeric_limits<long>::max());
  jpeg->mem->max_memory_to_use = static_cast<long>(std::min(kMostCoefficientBytes, kMostLong));
  progress.progress_monitor = BoundScans;
  jpeg->progress = &progress;
  if (input.source != nullptr) {
    SetSource(this);
  } else {
    jpeg_mem_src(jpeg, input.bytes.data(), static_cast<unsigned long>(input.bytes.size()));
  }
  jpeg_read_header(jpeg, TRUE);
  InstallMissingTables(jpeg, plan);
}

}  // namespace kscodec::jpeg
