#include "platform/platform.h"

#include "service_test.h"

#include <cstdarg>

namespace {

using PlatformTest = ServiceTest;
using FilterTest = ServiceTest;

// ---- handlers -------------------------------------------------------------------------------------------------------

struct Heard {
  std::string text;
  std::string caption;
  uint32_t type = 0;
};

TEST_F(PlatformTest, HandlersTakeOverAndDefaultsComeBack) {
  Heard heard;
  KsPlatformHandlers handlers = {};
  handlers.messageBox = [](const char *text, const char *caption, uint32_t type, void *userData) -> int32_t {
    *static_cast<Heard *>(userData) = {text, caption, type};
    return 7;
  };
  handlers.debugOutput = [](const char *text, void *userData) { static_cast<Heard *>(userData)->text = text; };
  handlers.setRect = [](KsRect *rectangle, int32_t left, int32_t, int32_t, int32_t, void *) {
    *rectangle = {left, -1, -1, -1};
  };
  handlers.userData = &heard;
  KsSetPlatformHandlers(&handlers);
  EXPECT_EQ(platform::MessageBoxA(nullptr, "Unsupported", "Error", 3), 7);
  EXPECT_EQ(heard.text + heard.caption + std::to_string(heard.type), "UnsupportedError3");
  platform::OutputDebugStringA("line");
  EXPECT_EQ(heard.text, "line");
  KsRect rectangle = {};
  platform::SetRect(&rectangle, 4, 5, 6, 7);
  EXPECT_EQ(rectangle.left, 4);
  EXPECT_EQ(rectangle.bottom, -1);

  KsSetPlatformHandlers(nullptr);
  testing::internal::CaptureStderr();
  EXPECT_EQ(platform::MessageBoxA(nullptr, "Unsupported", "Error", platform::MB_OK), 1);
  platform::OutputDebugStringA("dropped");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "Error: Unsupported\n");
  platform::SetRect(&rectangle, 4, 5, 6, 7);
  EXPECT_EQ(rectangle.bottom, 7);
}

// ---- contexts -------------------------------------------------------------------------------------------------------

TEST_F(PlatformTest, PalettesAreSelectedAndSelectedBack) {
  KsLocalBitmap bitmap;
  const Palette entries = RandomPalette(256, 1);
  ASSERT_EQ(Create(bitmap, 3, 3, 8, entries.data()), SUCCESS);
  const KsLocalContext context(bitmap.Get());
  KsPalette *const first = KsPaintPalette(context.Get(), bitmap.Get());
  const uint32_t table[] = {1, 2, 3};
  KsPalette *const second = KsPaletteFromLut(table, 3);
  KsPalette *const stock = platform::SelectPalette(context.Get(), first, false);
  ASSERT_NE(stock, nullptr);
  EXPECT_EQ(platform::RealizePalette(context.Get()), 256u);
  EXPECT_EQ(platform::SelectPalette(context.Get(), second, false), first);
  EXPECT_EQ(platform::RealizePalette(context.Get()), 3u);
  KsObjectFree(second, __LINE__, __FILE__);
  EXPECT_EQ(platform::RealizePalette(context.Get()), 3u) << "a palette released too early is not read any more";
  EXPECT_EQ(platform::SelectPalette(context.Get(), stock, false), second);
  KsObjectFree(first, __LINE__, __FILE__);
  KsObjectFree(stock, __LINE__, __FILE__);
  EXPECT_EQ(platform::RealizePalette(context.Get()), 0u);
}

TEST_F(PlatformTest, StatesComeBackInAnyDepth) {
  KsLocalBitmap bitmap;
  ASSERT_EQ(Create(bitmap, 3, 3, 24), SUCCESS);
  const KsLocalContext context(bitmap.Get());
  std::vector<KsPalette *> palettes;
  for (uint32_t count = 1; count <= 10; ++count) {
    const std::vector<uint32_t> table(count);
    palettes.push_back(KsPaletteFromLut(table.data(), count));
    EXPECT_EQ(platform::SaveDC(context.Get()), static_cast<int>(count));
    platform::SelectPalette(context.Get(), palettes.back(), false);
  }
  EXPECT_TRUE(platform::RestoreDC(context.Get(), -1));
  EXPECT_EQ(platform::RealizePalette(context.Get()), 9u);
  EXPECT_TRUE(platform::RestoreDC(context.Get(), 4));
  EXPECT_EQ(platform::RealizePalette(context.Get()), 3u);
  EXPECT_FALSE(platform::RestoreDC(context.Get(), 4)) << "dropped with the restore";
  EXPECT_FALSE(platform::RestoreDC(context.Get(), 0));
  EXPECT_TRUE(platform::RestoreDC(context.Get(), 1));
  EXPECT_FALSE(platform::RestoreDC(context.Get(), -1));
  for (KsPalette *const palette : palettes) KsObjectFree(palette, __LINE__, __FILE__);
}

TEST_F(PlatformTest, NoContextWithoutPixels) {
  KsLocalBitmap empty;
  EXPECT_EQ(KsBitmapDC(empty.Get()), nullptr);
  EXPECT_EQ(KsBitmapDC(nullptr), nullptr);
  EXPECT_EQ(platform::SaveDC(nullptr), 0);
  EXPECT_FALSE(platform::RestoreDC(nullptr, 1));
  EXPECT_EQ(platform::RealizePalette(nullptr), 0u);
}

// ---- filter entry ---------------------------------------------------------------------------------------------------

std::vector<double> arrived;

intptr_t TakeVariadic(void *entry, ...) {
  va_list list;
  va_start(list, entry);
  arrived.clear();
  for (int i = 0; i < 10; ++i) {
    arrived.push_back(va_arg(list, double));
    arrived.push_back(va_arg(list, int));
  }
  va_end(list);
  return INTPTR_MIN;
}

TEST_F(FilterTest, VariadicArgumentsArriveWithTheirCount) {
  KsSetFilterHandler(TakeVariadic);
  int entry = 0;
  const intptr_t result =
      KsFilterEntry(&entry, 1.5, 2, 3.5, 4, 5.5, 6, 7.5, 8, 9.5, 10, 11.5, 12, 13.5, 14, 15.5, 16, 17.5, 18, 19.5, 20);
  EXPECT_EQ(result, INTPTR_MIN);
  ASSERT_EQ(arrived.size(), 20u);
  for (size_t i = 0; i < 20; ++i) EXPECT_EQ(arrived[i], static_cast<double>(i + 1) + (i % 2 == 0 ? 0.5 : 0.0));
  KsSetFilterHandler(nullptr);
  EXPECT_EQ(KsFilterEntry(&entry), 1);
}

}  // namespace
