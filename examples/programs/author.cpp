// Builds a NITF file of a picture, a drawing over it and a text: author notes.txt scene.ntf
#include <cstdio>
#include <ksntfx.h>

int main(int argc, char **argv) {
  if (argc != 3) return 2;
  KsBitmap picture;
  KsBitmapCreate(&picture, sizeof picture, KS_BITMAP_OWN, 320, 240, 24, KS_ORDER_BGR, nullptr, 1, nullptr, 0);
  KsBitmapFill(&picture, 0xD0A040);  // blue, green and red, from the high byte down

  KsVector drawing = {};
  KsVectorInit(&drawing);
  KsVectorObject ring;
  KsVectorObjectInit(&ring);
  ring.oval.structureSize = sizeof ring.oval;
  ring.oval.kind = KS_VECTOR_OVAL;
  ring.oval.first = {60, -180, 0, 0};  // y runs upwards, and a drawing lies below its axis
  ring.oval.second = {260, -60, 0, 0};
  ring.oval.pen.structureSize = sizeof ring.oval.pen;
  ring.oval.pen.width = 5;
  ring.oval.pen.color = 0x0000FF;
  KsVectorAddObject(&drawing, 0, KS_VECTOR_OVAL, &ring, 0);

  NitfHandle file = nullptr;
  const KsRect place = {60, 60, 260, 180};
  int32_t status = K_NITFCreate(&file, nullptr);
  if (status == SUCCESS) status = K_NITFAppendImageSegment(file, &picture, KS_FORMAT_JPEG, 24, 10);
  if (status == SUCCESS) status = K_NITFAppendGraphicSegment(file, &drawing, &place);
  if (status == SUCCESS) status = K_NITFAppendTextSegmentA(file, argv[1]);
  if (status == SUCCESS) status = K_NITFSaveFileA(file, argv[2]);
  if (file != nullptr) K_NITFDestroy(&file);
  KsVectorFree(&drawing);
  KsBitmapFree(&picture);
  if (status != SUCCESS) std::fprintf(stderr, "%s: status %d\n", argv[2], status);
  return status == SUCCESS ? 0 : 1;
}
