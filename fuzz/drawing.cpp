// A metafile: reading, measuring, painting, writing, and reading what was written.
#include "target.h"

namespace {

struct Drawing {
  Drawing() { KsVectorInit(&vector); }
  Drawing(const Drawing &) = delete;
  Drawing &operator=(const Drawing &) = delete;
  ~Drawing() { KsVectorFree(&vector); }

  KsVector vector{};
};

void Paint(KsVector *vector, std::uint32_t bits) {
  KsBitmap canvas;
  KsBitmapInit(&canvas, sizeof canvas, 0, 0, 0);
  const std::int32_t made =
      KsBitmapCreate(&canvas, sizeof canvas, KS_BITMAP_OWN, 200, 150, bits, 0, nullptr, 4, nullptr, 0);
  Require(made == SUCCESS, "a canvas can be made");
  KsDeviceContext *context = KsBitmapDC(&canvas);
  const KsRect place{10, 10, 190, 140};
  KsVectorSetMode(vector, KS_VECTOR_UPWARDS);
  Require(KsVectorPaint(context, vector, 180, 130, 0, 0, &place, nullptr, 0) == SUCCESS, "a drawing can be painted");
  KsBitmapDCFree(context);
  KsBitmapFree(&canvas);
}

/** A written drawing can be read, and isn't empty. */
void WriteAndRead(const KsVector *vector) {
  void *block = nullptr;
  std::uint64_t size = 0;
  KsSaveOptions options{};
  KsSaveOptionsInit(&options, sizeof options);
  if (KsVectorSaveMemory(&block, vector, KS_FORMAT_CGM, &size, &options) != SUCCESS) return;
  KsTrackAlloc(KS_MEMORY_GLOBAL, block, __LINE__, __FILE__);
  Drawing again;
  Require(KsVectorLoadMemory(block, &again.vector, size, nullptr, nullptr) == SUCCESS, "a written drawing can be read");
  KsFreeGlobal(block, __LINE__, __FILE__);
}

}  // namespace

void FuzzOne(Input input) {
  Drawing drawing;
  if (KsVectorLoadMemory(input.data(), &drawing.vector, input.size(), nullptr, nullptr) != SUCCESS) return;
  KsRect bounds{};
  KsVectorBounds(&drawing.vector, 0, &bounds, 0);
  Paint(&drawing.vector, input.size() % 2 == 0 ? 24 : 8);
  Drawing copy;
  Require(KsVectorCopy(&copy.vector, &drawing.vector, 0) == SUCCESS, "a drawing can be copied");
  WriteAndRead(&copy.vector);
}
