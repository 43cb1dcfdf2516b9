#include <cmath>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "foundation/Failure.h"
#include "imaging/operations/operations.h"

namespace orvane::test {
namespace {

Raster page(std::uint16_t bits, std::uint32_t width, std::uint32_t height) {
  Raster form;
  form.bitsPerSample = bits;
  return emptyRaster(form, width, height);
}

TEST(Operations, RefuseWhatTheyCannotDoWithATextThatSaysWhy) {
  const Raster gray = page(8, 20, 10);
  const double nan = std::nan("");
  const std::vector<std::pair<std::function<void()>, std::string>> refusals = {
      {[&] { crop(gray, 20, 0, 5, 5); }, "nothing of the page is left"},
      {[&] { crop(gray, 0, -5, 5, 5); }, "nothing of the page is left"},
      {[&] { crop(gray, 3, 3, 0, 5); }, "nothing of the page is left"},
      {[&] { crop(gray, 3, 3, 5, -2147483647 - 1); }, "nothing of the page is left"},
      {[&] { crop(gray, 2147483647, 0, 2147483647, 5); }, "nothing of the page is left"},
      {[&] { resize(gray, 0, 5); }, "0 x 5"},
      {[&] { resize(gray, 5, -1); }, "5 x -1"},
      {[&] { resize(gray, 40000, 40000); }, "40000 x 40000"},
      {[&] { resize(gray, 2147483647, 1); }, "2147483647 x 1"},
      {[&] { rotate(gray, nan); }, "angle"},
      {[&] { rotate(page(1, 200000, 1), 45); }, "too large"},
      {[&] { straighten(gray, HUGE_VAL); }, "angle"},
      {[&] { finish(gray, static_cast<float>(nan), 1); }, "strength"},
      {[&] { finish(gray, 1.5f, 1); }, "strength"},
      {[&] { finish(gray, 0.3f, 0); }, "half-width"}};
  for (const auto& [call, text] : refusals) {
    EXPECT_THAT(call, testing::ThrowsMessage<Failure>(testing::HasSubstr(text)));
  }
}

TEST(Operations, WorkOnTheSmallestAndOnOddlyShapedPages) {
  for (const auto& [width, height] : {std::pair{1u, 1u}, {3u, 2u}, {1u, 5000u}, {7000u, 3u}}) {
    for (const Raster& blank : {page(8, width, height), page(1, width, height)}) {
      SCOPED_TRACE(testing::Message() << width << " x " << height << " " << blank.bitsPerPixel());
      EXPECT_EQ(measureSkew(blank), 0.0);
      EXPECT_EQ(straighten(blank, 3.0).pixels.size(), blank.pixels.size());
      EXPECT_EQ(finish(blank, 1.0f, 60).pixels.size(), blank.pixels.size());
      EXPECT_EQ(resize(blank, 2, 2).width, 2u);
      EXPECT_EQ(crop(blank, 0, 0, 1, 1).pixels.size(), 1u);
      EXPECT_GE(rotate(blank, 1.0).height, height);
    }
  }
}

}  // namespace
}  // namespace orvane::test
