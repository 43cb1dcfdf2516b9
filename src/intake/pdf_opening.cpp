#include "intake/pdf_opening.h"

#include <algorithm>
#include <set>
#include <string_view>

#include "foundation/Failure.h"
#include "foundation/paths.h"
#include "intake/page_file.h"

namespace orvane {
namespace {

constexpr std::string_view kBlanks{"\0\t\f ", 4};  // ISO 32000-1 clause 7.2.2, without line ends

// Takes the word at the front of `line`, and the blanks around it.
std::string_view takeWord(std::string_view& line) {
  line.remove_prefix(std::min(line.find_first_not_of(kBlanks), line.size()));
  const std::string_view word = line.substr(0, line.find_first_of(kBlanks));
  line.remove_prefix(word.size());
  line.remove_prefix(std::min(line.find_first_not_of(kBlanks), line.size()));
  return word;
}

bool isNumber(std::string_view word) {
  return !word.empty() && word.find_first_not_of("0123456789") == word.npos;
}

// True if there is one way only to repair a file: one trailer, and no object number twice. A file
// to which changes were appended has both.
bool isUnambiguous(std::string_view file) {
  std::set<std::string_view> objects;
  int trailers = 0;
  while (!file.empty()) {
    const std::size_t end = std::min(file.find_first_of("\r\n"), file.size() - 1);
    std::string_view line = file.substr(0, end + 1);
    file.remove_prefix(line.size());
    if (line.find_first_of("\r\n") != line.npos) line.remove_suffix(1);

    const std::string_view word = takeWord(line);
    if (word.starts_with("trailer")) ++trailers;
    if (!isNumber(word)) continue;
    const bool isObject = isNumber(takeWord(line)) && line.starts_with("obj");
    if (isObject && !objects.insert(word).second) return false;
  }
  return trailers == 1;
}

bool isUnambiguous(const std::wstring& path) {
  const Bytes file = readWholeFile(path);
  return isUnambiguous(std::string_view(reinterpret_cast<const char*>(file.data()), file.size()));
}

std::unique_ptr<QPDF> read(const std::wstring& path, bool repair) {
  auto pdf = std::make_unique<QPDF>();
  pdf->setSuppressWarnings(true);
  pdf->setAttemptRecovery(repair);
  pdf->processFile(nativePath(path).c_str());
  pdf->getAllObjects();  // reads each, without the data of streams, and warns of what is wrong
  return pdf;
}

}  // namespace

std::unique_ptr<QPDF> openPdf(const std::wstring& path) {
  std::unique_ptr<QPDF> pdf;
  try {
    pdf = read(path, false);
  } catch (const QPDFExc& failure) {
    if (failure.getErrorCode() != qpdf_e_damaged_pdf) throw;
  }
  if (pdf && !pdf->anyWarnings()) return pdf;
  if (isUnambiguous(path)) return read(path, true);
  if (pdf) return pdf;  // the damage may be where no page is
  throw Failure(
      L"PDF 文件损坏，不猜就不能修复。请用 qpdf 原文件 新文件 修复，核对页数以后再登记新文件");
}

}  // namespace orvane
