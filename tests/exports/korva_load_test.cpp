// The library's door to the framework.
#include "kskernel.h"
#include "ksntfx.h"

#include <vector>

#include <gtest/gtest.h>

namespace {

using AnyFunction = void (*)();
using ManyArguments = std::intptr_t (*)(void *, std::int64_t, std::int64_t, std::int64_t, std::int64_t, std::int64_t,
                                        std::int64_t, std::int64_t, std::int64_t, double, double, double, double,
                                        double, double, double, double, double, double);

struct Arrival {
  void *entry = nullptr;
  std::vector<std::int64_t> numbers;
  std::vector<double> fractions;
};

Arrival arrival;

constexpr std::intptr_t kAnswer = -0x123456789ABC;

std::intptr_t TakeMany(void *entry, std::int64_t a, std::int64_t b, std::int64_t c, std::int64_t d, std::int64_t e,
                       std::int64_t f, std::int64_t g, std::int64_t h, double p, double q, double r, double s, double t,
                       double u, double v, double w, double x, double y) {
  arrival = {entry, {a, b, c, d, e, f, g, h}, {p, q, r, s, t, u, v, w, x, y}};
  return kAnswer;
}

template <class To, class From>
To FunctionAs(From function) {
  return reinterpret_cast<To>(reinterpret_cast<AnyFunction>(function));
}

class KorvaLoad : public testing::Test {
 protected:
  void SetUp() override {
    arrival = {};
    KsSetFilterHandler(FunctionAs<KsFilterHandler>(TakeMany));
  }
  void TearDown() override { KsSetFilterHandler(nullptr); }
};

TEST_F(KorvaLoad, HandsItselfAndAllOtherArgumentsOn) {
  const auto load = FunctionAs<ManyArguments>(KORVA_Load);
  int unused = 0;
  EXPECT_EQ(
      load(&unused, INT64_MIN, 2, -3, 4, -5, 6, -7, INT64_MAX, 0.5, -1.5, 2.5, -3.5, 4.5, -5.5, 6.5, -7.5, 8.5, -9.5),
      kAnswer);
  EXPECT_EQ(arrival.entry, reinterpret_cast<void *>(KORVA_Load));
  EXPECT_EQ(arrival.numbers, (std::vector<std::int64_t>{INT64_MIN, 2, -3, 4, -5, 6, -7, INT64_MAX}));
  EXPECT_EQ(arrival.fractions, (std::vector<double>{0.5, -1.5, 2.5, -3.5, 4.5, -5.5, 6.5, -7.5, 8.5, -9.5}));
}

TEST_F(KorvaLoad, SucceedsWithoutAHandler) {
  KsSetFilterHandler(nullptr);
  EXPECT_EQ(KORVA_Load(nullptr), SUCCESS);
  EXPECT_EQ(arrival.entry, nullptr);
}

}  // namespace
