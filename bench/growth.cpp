// Measures the time of each page of a document of 5,000 pages, for a TIFF and a PDF file. Writes an
// SVG picture to standard output that shows the median of each hundred pages over the page number.
//
//   growth PAGE.tif FOLDER > growth.svg

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <string>
#include <vector>

#include "foundation/paths.h"
#include "imaging/ImagingControl.h"
#include "imaging/mdlImageProcess.h"

namespace {

using namespace orvane;

constexpr int kPages = 5000;
constexpr int kGroup = 100;

// Returns the median time of each group of pages in milliseconds; empty after a failure.
std::vector<double> measure(decltype(&mdlImageProcess::SaveImage) save, const std::wstring& page,
                            const std::wstring& target) {
  ImagingControl ImgControl;
  std::vector<double> medians;
  std::vector<double> group;
  for (int number = 1; number <= kPages; ++number) {
    const auto begin = std::chrono::steady_clock::now();
    if (!save(ImgControl, page, 1, target, true, 0, number > 1)) return {};
    const std::chrono::duration<double, std::milli> elapsed =
        std::chrono::steady_clock::now() - begin;
    group.push_back(elapsed.count());
    if (group.size() < kGroup) continue;
    std::nth_element(group.begin(), group.begin() + kGroup / 2, group.end());
    medians.push_back(group[kGroup / 2]);
    group.clear();
  }
  return medians;
}

constexpr double kWidth = 720, kHeight = 300, kLeft = 50, kBottom = 260, kTop = 30;

void drawCurve(const std::vector<double>& medians, double highest, const char* colour) {
  std::printf("<polyline fill='none' stroke='%s' stroke-width='2' points='", colour);
  for (std::size_t i = 0; i < medians.size(); ++i) {
    std::printf("%.1f,%.1f ",
                kLeft + (kWidth - kLeft - 10) * static_cast<double>(i + 1) /
                            static_cast<double>(medians.size()),
                kBottom - (kBottom - kTop) * medians[i] / highest);
  }
  std::printf("'/>\n");
}

void drawPicture(const std::vector<double>& tiff, const std::vector<double>& pdf) {
  const double highest = 2 * std::max(*std::max_element(tiff.begin(), tiff.end()),
                                      *std::max_element(pdf.begin(), pdf.end()));
  std::printf(
      "<svg xmlns='http://www.w3.org/2000/svg' viewBox='0 0 %.0f %.0f' "
      "font-family='sans-serif' font-size='12'>\n<rect width='100%%' height='100%%' "
      "fill='white'/>\n",
      kWidth, kHeight);
  std::printf("<path d='M%.0f %.0fV%.0fH%.0f' fill='none' stroke='black'/>\n", kLeft, kTop, kBottom,
              kWidth - 10);
  std::printf("<text x='%.0f' y='20'>milliseconds a page, median of each %d pages</text>\n", kLeft,
              kGroup);
  for (int quarter = 0; quarter <= 4; ++quarter) {
    std::printf("<text x='%.0f' y='%.0f' text-anchor='end'>%.1f</text>\n", kLeft - 6,
                kBottom - (kBottom - kTop) * quarter / 4 + 4, highest * quarter / 4);
    std::printf("<text x='%.0f' y='%.0f' text-anchor='middle'>%d</text>\n",
                kLeft + (kWidth - kLeft - 30) * quarter / 4, kBottom + 18, kPages * quarter / 4);
  }
  drawCurve(tiff, highest, "#1f6fb4");
  drawCurve(pdf, highest, "#c44");
  std::printf(
      "<text x='%.0f' y='50' fill='#1f6fb4'>TIFF: page 5,000 / first hundred = %.2f</text>\n",
      kWidth - 300, tiff.back() / tiff.front());
  std::printf("<text x='%.0f' y='68' fill='#c44'>PDF: page 5,000 / first hundred = %.2f</text>\n",
              kWidth - 300, pdf.back() / pdf.front());
  std::printf("</svg>\n");
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::fprintf(stderr, "usage: growth PAGE.tif FOLDER > growth.svg\n");
    return 2;
  }
  const std::wstring page = pathText(std::filesystem::absolute(argv[1]));
  const std::wstring folder = pathText(std::filesystem::absolute(argv[2]));
  const auto tiff = measure(&mdlImageProcess::SaveImage, page, folder + L"\\growth.tif");
  const auto pdf = measure(&mdlImageProcess::SavePDF, page, folder + L"\\growth.pdf");
  if (tiff.empty() || pdf.empty()) {
    std::fprintf(stderr, "growth: a page could not be saved\n");
    return 1;
  }
  drawPicture(tiff, pdf);
  return 0;
}
