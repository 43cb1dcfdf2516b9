#pragma once

#include <cstdint>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>

#include "imaging/LoadedPage.h"
#include "intake/open_source_file.h"
#include "support/TempStation.h"
#include "support/command.h"
#include "support/failure_of.h"

namespace orvane::test {

/// A folder with files of a scanner and the pages that are made of them.
class Intake : public testing::Test {
 protected:
  /// Makes page `page` of a file; the page is `page.tif`. Answers the reason of a refusal.
  std::string take(const std::string& file, std::int32_t page = 1) const {
    std::filesystem::remove(station.native("page.tif"));
    const std::string reason = failureOf([&] {
      const auto source = openSourceFile(station.path(fromUtf8(file)));
      if (!source) throw Failure("not an image");
      source->requirePage(page);
      source->writePage(page, station.path(L"page.tif"));
      const std::wstring written = station.path(L"page.tif");
      checkPage(LoadedPage(written, 1), written);
    });
    EXPECT_EQ(reason.empty(), std::filesystem::exists(station.native("page.tif"))) << file;
    return reason;
  }

  /// The number of pixels of `page.tif`, upright, that differ from the picture of another file.
  /// ImageMagick turns a JPEG page twice, so libtiff's copy of it is compared.
  std::string differing(const std::string& picture, const std::string& options = "") const {
    return runCommand(
               "cd " + quoted(station.native()) +
               " && tiffcp -c none page.tif plain.tif"
               " && convert -quiet plain.tif -auto-orient +repage -strip page.miff && convert " +
               picture + " -auto-orient +repage -strip picture.miff && compare " + options +
               " -metric AE page.miff picture.miff null:")
        .output;
  }

  /// What ImageMagick says of `page.tif`.
  std::string identify(const std::string& format) const {
    return station.shell("identify -quiet -format '" + format + "' page.tif");
  }

  TempStation station;
};

}  // namespace orvane::test
