#include "export/RunReport.h"

#include <charconv>
#include <utility>

#include "foundation/Failure.h"
#include "foundation/mdlFolderAndFile.h"
#include "foundation/program.h"
#include "foundation/text_encoding.h"

namespace orvane {
namespace {

constexpr const wchar_t* kHead = L"档案\t档案（件）\t页数\t文件数\t字节数\t秒\t结果\t原因";
constexpr const wchar_t* kSum = L"合计";
constexpr const wchar_t* kLeft = L"现存";
constexpr const wchar_t* kLeftHead = L"以下各批的合计后来变了，导出结束时现存的是：";

// A reason has one log message per line.
std::wstring joinedMessages(std::wstring reason) {
  for (std::size_t end = 0; (end = reason.find(L'\n', end)) != reason.npos;) {
    reason.replace(end, 1, L"；");
  }
  return reason;
}

// Names from the disk and the table can contain tabs and line ends.
std::wstring inOneCell(std::wstring text) {
  for (wchar_t& c : text) {
    if (c < L' ') c = L' ';
  }
  return text;
}

std::wstring inSeconds(std::chrono::duration<double> time) {
  char digits[64];
  const char* const end =
      std::to_chars(digits, digits + sizeof digits, time.count(), std::chars_format::fixed, 2).ptr;
  return std::wstring(static_cast<const char*>(digits), end);
}

std::wstring resultOf(bool isExported) {
  return isExported ? L"成功" : L"失败";
}

std::wstring lineOf(const ReportRow& row, const std::wstring& document, const std::wstring& time,
                    const std::wstring& result) {
  return inOneCell(row.batch) + L"\t" + inOneCell(document) + L"\t" +
         std::to_wstring(row.output.pages) + L"\t" + std::to_wstring(row.output.files) + L"\t" +
         std::to_wstring(row.output.bytes) + L"\t" + time + L"\t" + result + L"\t" +
         inOneCell(joinedMessages(row.reason));
}

bool isPowerOfTen(std::int64_t number) {
  while (number % 10 == 0) number /= 10;
  return number == 1;
}

}  // namespace

template <typename Step>
void RunReport::attempt(Step step) {
  try {
    step();
  } catch (const std::exception& failure) {
    if (isFailureTold_) return;
    isFailureTold_ = true;
    mdlFolderAndFile::LogWrite(L"RunOutPutBatch-导出清单写不出来：" + description(failure),
                               kApplicationTitle);
  }
}

void RunReport::addDocument(const ReportRow& row) {
  attempt([&] { add(row, row.document); });
}

void RunReport::endBatch(const ReportRow& sum) {
  attempt([&] {
    add(sum, kSum);
    if (isRepetition_) return;  // its files have replaced those of the pass that was written
    Told& told = told_[sum.batch];
    told.all += sum.output;
    told.lastPass = sum.output;
    told.isExported = sum.isExported;
  });
  attempt([&] {
    if (isRepetition_) {
      repeatedBatch_ = sum.batch;
      if (isPowerOfTen(++repetitions_)) writeRepetitions();
    }
    before_ = sum.isExported ? std::vector<std::wstring>() : pass_;
  });
  pass_.clear();
  held_.clear();
}

void RunReport::endRun(const std::vector<WrittenFiles::Left>& left) {
  attempt([&] {
    writeRepetitions();
    writeLeft(left);
  });
}

void RunReport::add(const ReportRow& row, const std::wstring& document) {
  if (pass_.empty()) isRepetition_ = true;
  const std::size_t place = pass_.size();
  const std::wstring result = resultOf(row.isExported);
  pass_.push_back(lineOf(row, document, {}, result));
  held_.push_back(lineOf(row, document, inSeconds(row.time), result));
  isRepetition_ = isRepetition_ && place < before_.size() && pass_[place] == before_[place];
  if (isRepetition_) return;
  writeRepetitions();
  repetitions_ = repetitionsTold_ = 0;
  for (const std::wstring& line : std::exchange(held_, {})) write(line);
}

void RunReport::writeRepetitions() {
  if (repetitions_ == repetitionsTold_) return;
  repetitionsTold_ = repetitions_;
  write(inOneCell(repeatedBatch_) + L"\t" + kSum + L"\t\t\t\t\t失败\t同样的失败又发生了 " +
        std::to_wstring(repetitions_) + L" 次");
}

void RunReport::writeLeft(const std::vector<WrittenFiles::Left>& left) {
  bool hasHead = false;
  for (const WrittenFiles::Left& batch : left) {
    const auto entry = told_.find(batch.batch);
    if (entry == told_.end() || entry->second.all == batch.all) continue;
    const Told& told = entry->second;
    if (!std::exchange(hasHead, true)) write(kLeftHead);
    ReportRow row{.batch = batch.batch, .output = batch.all, .reason = L"只有最后一次的合计算数"};
    std::wstring result = resultOf(told.isExported);
    if (batch.lastPass != told.lastPass) {
      if (told.isExported) result = L"不全";
      row.reason = L"合计的 " + std::to_wstring(told.lastPass.files) + L" 个文件只剩 " +
                   std::to_wstring(batch.lastPass.files) + L" 个";
      if (!batch.takenBy.empty()) row.reason += L"，最早替换它们的是档案【" + batch.takenBy + L"】";
    }
    write(lineOf(row, kLeft, {}, result));
  }
}

void RunReport::write(const std::wstring& line) {
  if (file_.empty()) file_ = newFile();
  const std::wstring head = hasHead_ ? L"" : std::wstring(kHead) + L"\r\n";
  mdlFolderAndFile::fileSystem().AppendFile(file_, toUtf8(head + line + L"\r\n"));
  hasHead_ = true;
}

std::wstring RunReport::newFile() {
  FileSystemObject& files = mdlFolderAndFile::fileSystem();
  const std::wstring folder = programFolder() + L"\\Log";
  if (!files.FolderExists(folder)) files.CreateFolder(folder);
  const std::wstring name = folder + L"\\" + localTime("%Y%m%d-%H%M%S");
  std::wstring file = name + L".txt";
  for (int i = 2; files.FileExists(file); ++i) file = name + L"-" + std::to_wstring(i) + L".txt";
  files.CreateFile(file);
  return file;
}

}  // namespace orvane
