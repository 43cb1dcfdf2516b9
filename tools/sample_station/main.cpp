// Creates a sample program folder, or one long document for measurements. Run it without arguments
// for the options.
#include <QGuiApplication>
#include <charconv>
#include <iostream>
#include <stdexcept>
#include <string_view>
#include <vector>

#include "batch_database.h"
#include "station.h"

namespace {

using namespace orvane::sample;

constexpr const char* kUsage = R"(usage:
  sample-station DIR [--small]
      DIR becomes a program folder with a database and three batches of scanned A4 pages
  sample-station DIR --pages KIND COUNT [--quality Q] [--small]
      DIR becomes one document folder of COUNT pages of KIND:
      g4 lzw1 packbits1 gray gray-jpeg colour-jpeg colour-raw
  sample-station FILE --empty-database
      FILE becomes a database without batches
  --small      pages at 100 dpi instead of 300
  --quality Q  quality of JPEG pages, 1 to 100 (90)
)";

struct UsageError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

struct Options {
  std::string target;
  bool isDocument = false;
  bool isDatabase = false;
  PageKind kind = PageKind::G4;
  int count = 0;
  int quality = 90;
  int dpi = kScanDpi;
};

int numberOf(std::string_view text, int low, int high) {
  int value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size() || value < low || value > high) {
    throw UsageError("not a number from " + std::to_string(low) + " to " + std::to_string(high) +
                     ": " + std::string(text));
  }
  return value;
}

Options optionsOf(const std::vector<std::string_view>& words) {
  Options options;
  std::size_t at = 0;
  const auto next = [&] {
    if (at == words.size()) throw UsageError("an argument is missing");
    return words[at++];
  };
  while (at < words.size()) {
    const std::string_view word = next();
    if (word == "--small") {
      options.dpi = kSmallDpi;
    } else if (word == "--empty-database") {
      options.isDatabase = true;
    } else if (word == "--quality") {
      options.quality = numberOf(next(), 1, 100);
    } else if (word == "--pages") {
      const auto kind = pageKindNamed(next());
      if (!kind) throw UsageError("no such kind of page: " + std::string(words[at - 1]));
      options.isDocument = true;
      options.kind = *kind;
      options.count = numberOf(next(), 1, 32767);
    } else if (word.starts_with("-") || !options.target.empty()) {
      throw UsageError("not understood: " + std::string(word));
    } else {
      options.target = word;
    }
  }
  if (options.target.empty()) throw UsageError("DIR or FILE is missing");
  return options;
}

void make(const Options& options) {
  if (options.isDatabase) {
    createBatchDatabase(options.target, {});
  } else if (options.isDocument) {
    makeDocument(options.target, options.kind, options.count, options.dpi, options.quality);
  } else {
    makeStation(options.target, options.dpi);
  }
}

}  // namespace

int main(int argc, char** argv) {
  qputenv("QT_QPA_PLATFORM", "offscreen");  // no window is shown
  const QGuiApplication application(argc, argv);
  try {
    make(optionsOf({argv + 1, argv + argc}));
    return 0;
  } catch (const UsageError& error) {
    std::cerr << "sample-station: " << error.what() << '\n' << kUsage;
    return 2;
  } catch (const std::exception& error) {
    std::cerr << "sample-station: " << error.what() << '\n';
    return 1;
  }
}
