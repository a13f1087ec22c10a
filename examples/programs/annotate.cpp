// Adds an arrow and a text to a NITF file, and carries all else over: annotate scene.ntf notes.txt annotated.ntf
#include <cstdio>
#include <ksntfx.h>

namespace {

void AddLine(KsVector *drawing, KsVectorVertex from, KsVectorVertex to) {
  KsVectorObject object;
  KsVectorObjectInit(&object);
  object.line.structureSize = sizeof object.line;
  object.line.kind = KS_VECTOR_LINE;
  object.line.first = from;
  object.line.second = to;
  object.line.pen.structureSize = sizeof object.line.pen;
  object.line.pen.width = 3;
  object.line.pen.color = 0x00FFFF;  // yellow: red is in the low byte
  KsVectorAddObject(drawing, 0, KS_VECTOR_LINE, &object, 0);
}

}  // namespace

int main(int argc, char **argv) {
  if (argc != 4) return 2;
  KsVector arrow = {};
  KsVectorInit(&arrow);
  AddLine(&arrow, {20, -80, 0, 0}, {80, -20, 0, 0});  // y runs upwards, and a drawing lies below its axis
  AddLine(&arrow, {80, -20, 0, 0}, {60, -20, 0, 0});
  AddLine(&arrow, {80, -20, 0, 0}, {80, -40, 0, 0});

  NitfHandle file = nullptr;
  const KsRect place = {20, 20, 80, 80};
  int32_t status = K_NITFCreateA(&file, argv[1]);
  if (status == SUCCESS) status = K_NITFAppendGraphicSegment(file, &arrow, &place);
  if (status == SUCCESS) status = K_NITFAppendTextSegmentA(file, argv[2]);
  if (status == SUCCESS) status = K_NITFSaveFileA(file, argv[3]);  // not argv[1]: what is carried over is read from it
  if (file != nullptr) K_NITFDestroy(&file);
  KsVectorFree(&arrow);
  if (status != SUCCESS) std::fprintf(stderr, "%s: status %d\n", argv[1], status);
  return status == SUCCESS ? 0 : 1;
}
