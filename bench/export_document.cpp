// Exports one document folder and prints the time in milliseconds, the peak memory of the process
// in MB, and the longest time in milliseconds between two yields, which is the longest delay of the
// window. `bench/compare` compares these figures with those of other tools.

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#include <sys/resource.h>

#include "Exporter.h"
#include "foundation/WindowServices.h"

namespace {

using Clock = std::chrono::steady_clock;
using Milliseconds = std::chrono::duration<double, std::milli>;

// Measures the times between yields.
class WaitWatch final : public orvane::WindowServices {
 public:
  void showBox(std::wstring_view, std::wstring_view, orvane::BoxIcon) override {}
  void showBusyPointer(bool) override {}
  void yield() override {
    const Clock::time_point now = Clock::now();
    longest_ = std::max(longest_, Milliseconds(now - last_));
    last_ = now;
  }
  double longest() const { return longest_.count(); }

 private:
  Clock::time_point last_ = Clock::now();
  Milliseconds longest_{};
};

}  // namespace

int main(int argc, char** argv) {
  if (argc != 7 && argc != 8) {
    std::fprintf(stderr,
                 "usage: export-document DOCUMENT OUTPUT-FOLDER tif|jpg|pdf page|multi "
                 "compress|plain RATIO [WORKERS]\n");
    return 2;
  }
  const std::string type = argv[3];
  orvane::bench::ExportTask task;
  task.document = argv[1];
  task.outputFolder = argv[2];
  task.saveFileType = static_cast<std::int16_t>(type == "tif" ? 0 : type == "jpg" ? 1 : 2);
  task.isPageFile = std::string(argv[4]) == "page";
  task.compressionType = std::string(argv[5]) == "compress" ? 0 : 1;
  task.compressionRatios = static_cast<std::int16_t>(std::atoi(argv[6]));
  if (argc == 8) task.workers = static_cast<unsigned>(std::atoi(argv[7]));

  WaitWatch window;
  orvane::installWindowServices(&window);
  const Clock::time_point begin = Clock::now();
  const bool exported = orvane::bench::exportDocument(task);
  const Milliseconds elapsed = Clock::now() - begin;
  window.yield();
  orvane::installWindowServices(nullptr);
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  std::printf("%.1f %.1f %.1f\n", elapsed.count(), static_cast<double>(usage.ru_maxrss) / 1024,
              window.longest());
  return exported ? 0 : 1;
}
