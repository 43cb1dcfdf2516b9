// Exports one page and one document of 200 pages to each kind of output. The pages are drawn by
// sample-station on the first run and kept in the folder ORVANE_BENCH_PAGES, by default in
// orvane-bench in the temporary folder.

#include <benchmark/benchmark.h>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <unistd.h>

#include "Exporter.h"

namespace {

namespace fs = std::filesystem;
using orvane::bench::ExportTask;

fs::path workFolder() {
  const char* chosen = std::getenv("ORVANE_BENCH_PAGES");
  return chosen != nullptr ? fs::path(chosen) : fs::temp_directory_path() / "orvane-bench";
}

// In the folder of this program.
fs::path sampleStation() {
  return fs::read_symlink("/proc/self/exe").parent_path() / "sample-station";
}

fs::path documentOf(const std::string& kind, int pages) {
  const fs::path folder = workFolder() / "pages" / (kind + "-" + std::to_string(pages));
  if (!fs::exists(folder / "Doc.dat")) {
    fs::create_directories(folder.parent_path());
    const std::string command = "'" + sampleStation().string() + "' '" + folder.string() +
                                "' --pages " + kind + " " + std::to_string(pages);
    if (std::system(command.c_str()) != 0) throw std::runtime_error("failed: " + command);
  }
  return folder;
}

void exportOf(benchmark::State& state, const std::string& kind, int pages, ExportTask task) {
  task.document = documentOf(kind, pages);
  task.outputFolder = workFolder() / "out";
  for (auto _ : state) {
    if (!orvane::bench::exportDocument(task)) state.SkipWithError("the export failed");
  }
  state.counters["ms_a_page"] = benchmark::Counter(
      pages * 1e-3, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
  fs::remove_all(task.outputFolder);
}

void registerAll() {
  struct Kind {
    const char* name;
    const char* pages;
    ExportTask task;
  };
  const Kind kinds[] = {
      {"tiff_group4", "g4", {{}, {}, 0, false, 0, 0}},
      {"tiff_group4_from_lzw", "lzw1", {{}, {}, 0, false, 0, 0}},
      {"tiff_jpeg", "colour-jpeg", {{}, {}, 0, false, 0, 1}},
      {"tiff_lzw_bilevel", "g4", {{}, {}, 0, false, 1, 0}},
      {"tiff_lzw_colour", "colour-jpeg", {{}, {}, 0, false, 1, 0}},
      {"jpeg_files", "colour-jpeg", {{}, {}, 1, true, 0, 1}},
      {"pdf_group4", "g4", {{}, {}, 2, false, 0, 0}},
      {"pdf_dct", "colour-jpeg", {{}, {}, 2, false, 0, 1}},
      {"pdf_raw_bilevel", "g4", {{}, {}, 2, false, 1, 0}},
      {"pdf_raw_colour", "colour-jpeg", {{}, {}, 2, false, 1, 0}},
  };
  for (const Kind& kind : kinds) {
    for (const int pages : {1, 200}) {
      const std::string name = std::string(kind.name) + "/" + std::to_string(pages);
      benchmark::RegisterBenchmark(name.c_str(), [kind, pages](benchmark::State& state) {
        exportOf(state, kind.pages, pages, kind.task);
      })->Unit(benchmark::kMillisecond);
    }
  }
}

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  registerAll();
  benchmark::RunSpecifiedBenchmarks();
}
