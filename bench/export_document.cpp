// Exports one document folder and prints the milliseconds that it took and the peak memory of the
// process in MB. `bench/compare` sets these figures beside those of other tools.

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <sys/resource.h>

#include "Exporter.h"

int main(int argc, char** argv) {
  if (argc != 7) {
    std::fprintf(stderr,
                 "usage: export-document DOCUMENT OUTPUT-FOLDER tif|jpg|pdf page|multi "
                 "compress|plain RATIO\n");
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

  const auto begin = std::chrono::steady_clock::now();
  const bool exported = orvane::bench::exportDocument(task);
  const std::chrono::duration<double, std::milli> elapsed =
      std::chrono::steady_clock::now() - begin;
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  std::printf("%.1f %.1f\n", elapsed.count(), static_cast<double>(usage.ru_maxrss) / 1024);
  return exported ? 0 : 1;
}
