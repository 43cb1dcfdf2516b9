#include <cmath>
#include <gtest/gtest.h>
#include <numbers>

#include "imaging/operations/drawn_page.h"
#include "imaging/operations/operations.h"
#include "imaging/page/conversion.h"

namespace orvane::test {
namespace {

constexpr double kDegree = std::numbers::pi / 180;

// Straightens a page and measures by its four marks what is left of the skew, across and down.
void expectStraightened(const Raster& page) {
  const Raster straight = straighten(page, measureSkew(page));
  ASSERT_EQ(straight.width, page.width);
  ASSERT_EQ(straight.height, page.height);
  ASSERT_EQ(straight.bitsPerPixel(), page.bitsPerPixel());
  std::array<Mark, 4> marks = kMarks;
  for (Mark& mark : marks) mark = markNear(straight, mark);
  EXPECT_LT(std::abs(std::atan2(marks[1].y - marks[0].y, marks[1].x - marks[0].x)), 0.1 * kDegree);
  EXPECT_LT(std::abs(std::atan2(marks[3].x - marks[2].x, marks[3].y - marks[2].y)), 0.1 * kDegree);
}

TEST(Skew, RemainsUnderATenthOfADegree) {
  for (const double skew : {-5.0, -3.5, -2.0, -0.5, 0.0, 0.5, 1.5, 3.0, 4.5, 5.0}) {
    SCOPED_TRACE(skew);
    const Raster gray = drawnPage(Drawing::Text, skew);
    expectStraightened(gray);
    expectStraightened(toBilevel(gray));
  }
  for (const double skew : {-4.7, 0.4}) {
    for (const Drawing drawing : {Drawing::VerticalText, Drawing::PhotoAndText}) {
      SCOPED_TRACE(testing::Message() << skew << " " << static_cast<int>(drawing));
      expectStraightened(drawnPage(drawing, skew, true));
      expectStraightened(toBilevel(drawnPage(drawing, skew)));
    }
  }
}

TEST(Skew, OfAPageThatShowsNoneIsZeroAndThePageStaysBitForBit) {
  for (const Raster& gray :
       {drawnPage(Drawing::Text, 0.0), drawnPage(Drawing::Dust, 2.0),
        drawnPage(Drawing::Photo, 3.0), drawnPage(Drawing::Photo, 3.0, true)}) {
    for (const Raster& page : {gray, toBilevel(gray)}) {
      EXPECT_EQ(measureSkew(page), 0.0);
      EXPECT_EQ(straighten(page, 0.0).pixels, page.pixels);
    }
  }
}

TEST(Rotate, ByAnyAngleHoldsTheWholePageOnASheetWithPaperColouredCorners) {
  const Raster gray = drawnPage(Drawing::Text, 0.0);
  Raster colour = gray;
  colour.samplesPerPixel = 3;
  colour.model = ColourModel::Rgb;
  colour.pixels.clear();
  for (const std::uint8_t level : gray.pixels) colour.pixels.insert(colour.pixels.end(), 3, level);
  for (const double degrees : {1.0, -100.0, 45.0 + 360.0}) {
    const double cosine = std::cos(degrees * kDegree), sine = std::sin(degrees * kDegree);
    for (const Raster& page : {toBilevel(gray), gray, colour}) {
      SCOPED_TRACE(testing::Message() << degrees << " " << page.bitsPerPixel());
      const double width = page.width, height = page.height;
      const Raster turned = rotate(page, degrees);
      EXPECT_EQ(turned.bitsPerPixel(), page.bitsPerPixel());
      EXPECT_EQ(turned.width, std::ceil(width * std::abs(cosine) + height * std::abs(sine)));
      EXPECT_EQ(turned.height, std::ceil(width * std::abs(sine) + height * std::abs(cosine)));
      EXPECT_NEAR(turned.pixels.front(), page.bitsPerSample == 1 ? 0 : kPaper, 2);
      EXPECT_NEAR(turned.pixels.back(), page.bitsPerSample == 1 ? 0 : kPaper, 2);
      for (const Mark& mark : kMarks) {
        const double dx = mark.x - width / 2, dy = mark.y - height / 2;
        const Mark expected{dx * cosine + dy * sine + turned.width / 2.0,
                            dy * cosine - dx * sine + turned.height / 2.0};
        EXPECT_NEAR(markNear(turned, expected).x, expected.x, 0.5);
        EXPECT_NEAR(markNear(turned, expected).y, expected.y, 0.5);
      }
    }
  }
}

}  // namespace
}  // namespace orvane::test
