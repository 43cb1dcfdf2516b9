#include "check_command.h"

#include <algorithm>
#include <cstdint>
#include <map>

#include "foundation/Failure.h"
#include "intake/IntakePlan.h"
#include "page_notices.h"
#include "printing.h"
#include "station_check.h"

namespace orvane::station {
namespace {

constexpr std::size_t kBatchID = 0;
constexpr std::size_t kPaperNum = 3;

struct KindName {
  Kind kind;
  const wchar_t* name;
  bool isMeasured;  // with --pixels only
};

constexpr KindName kKinds[] = {
    {Kind::Obstacle, L"不能导出", false},   {Kind::PaperNum, L"页数不符", false},
    {Kind::Resolution, L"分辨率低", false}, {Kind::Repeated, L"重复页", false},
    {Kind::Blank, L"空白页", true},         {Kind::Skewed, L"歪斜", true},
    {Kind::Size, L"大小不同", true},
};

std::wstring nameOf(Kind kind) {
  return std::find_if(std::begin(kKinds), std::end(kKinds),
                      [&](const KindName& entry) { return entry.kind == kind; })
      ->name;
}

// The number of documents, pages and bytes.
struct Sum {
  std::uint64_t documents = 0;
  std::uint64_t pages = 0;
  std::uint64_t bytes = 0;

  void add(const BatchCheck& check) {
    for (const CheckedDocument& document : check.documents) {
      documents += document.isListed ? 1 : 0;
      pages += document.pages.size();
      for (const CheckedPage& page : document.pages) bytes += page.bytes;
    }
  }

  std::wstring figures() const { return orvane::figures(documents, pages, bytes); }
};

// Everything that was found in one batch: obstacles first.
struct BatchFindings {
  std::wstring BatchID = {};
  std::wstring folder = {};
  Sum sum = {};
  std::vector<Finding> findings = {};

  bool fails() const { return !findings.empty() && findings[0].kind == Kind::Obstacle; }
};

BatchFindings examine(const Row& row, bool measures) {
  if (row[kBatchID].isNull()) return {.findings = {{.text = L"BatchID 是空的"}}};
  BatchFindings found{.BatchID = row[kBatchID].text()};
  const BatchCheck check = checkBatch(found.BatchID, measures);
  found.folder = check.folder;
  found.sum.add(check);
  found.findings = check.obstacles();
  std::optional<std::int16_t> PaperNum;
  try {
    PaperNum = row[kPaperNum].toInt16();
  } catch (const std::exception& failure) {
    found.findings.push_back({.text = L"PaperNum: " + description(failure)});
  }
  for (Finding& notice : noticesOf(check, PaperNum, measures)) {
    found.findings.push_back(std::move(notice));
  }
  return found;
}

void printForPeople(const BatchFindings& found) {
  print(found.BatchID + (found.fails() ? L"：不能导出（" : L"：可以导出（") + found.sum.figures() +
        L"）");
  for (const Finding& finding : found.findings) {
    const std::wstring& file = finding.page.empty() ? found.folder : finding.page;
    print(L"  " + (finding.kind == Kind::Obstacle ? finding.text
                                                  : L"注意：" + file + L": " + finding.text));
  }
}

void printAsTable(const BatchFindings& found) {
  for (const Finding& finding : found.findings) {
    std::wstring line = onOneLine(found.BatchID);
    for (const std::wstring& column :
         {finding.document, finding.page, nameOf(finding.kind), finding.text}) {
      line += L'\t' + onOneLine(column);
    }
    print(line);
  }
}

using Counts = std::map<Kind, std::size_t>;

void printCountsAsTable(Counts& counts, bool measured) {
  for (const KindName& kind : kKinds) {
    if (kind.isMeasured && !measured) continue;
    print(std::wstring(L"合计\t") + kind.name + L'\t' + std::to_wstring(counts[kind.kind]));
  }
}

void printCountsForPeople(Counts& counts, bool measured) {
  std::wstring line;
  for (const KindName& kind : kKinds) {
    if (kind.kind == Kind::Obstacle || (kind.isMeasured && !measured)) continue;
    line += (line.empty() ? L"注意：" : L"，") + std::wstring(kind.name) + L" " +
            std::to_wstring(counts[kind.kind]);
  }
  print(line);
}

}  // namespace

std::optional<CheckOptions> checkOptions(const std::vector<std::wstring>& words) {
  if (words.empty() || words[0] != L"check") return std::nullopt;
  CheckOptions options;
  for (std::size_t i = 1; i < words.size(); ++i) {
    bool* option = words[i] == L"--pixels" ? &options.measures
                   : words[i] == L"--tsv"  ? &options.asTable
                                           : nullptr;
    if (option == nullptr) return std::nullopt;
    *option = true;
  }
  return options;
}

int check(const std::vector<Row>& waiting, const CheckOptions& options) {
  Counts counts;
  Sum sum;
  std::size_t failing = 0;
  for (const Row& row : waiting) {
    const BatchFindings found = examine(row, options.measures);
    if (options.asTable) {
      printAsTable(found);
    } else {
      printForPeople(found);
    }
    for (const Finding& finding : found.findings) ++counts[finding.kind];
    failing += found.fails() ? 1 : 0;
    sum.documents += found.sum.documents;
    sum.pages += found.sum.pages;
    sum.bytes += found.sum.bytes;
  }
  if (options.asTable) {
    printCountsAsTable(counts, options.measures);
  } else {
    printCountsForPeople(counts, options.measures);
    print(L"等待导出：" + std::to_wstring(waiting.size()) + L" 批，" + sum.figures() +
          L"；不能导出：" + std::to_wstring(failing) + L" 批");
  }
  return failing == 0 ? 0 : 1;
}

}  // namespace orvane::station
