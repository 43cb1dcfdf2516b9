// Manages the batches of a station. Run it without arguments for its commands. The station is the
// program's own folder if that is one, otherwise the current folder.

#include <filesystem>
#include <iostream>
#include <stdexcept>
#include <string>
#include <vector>

#include "batchdb/BatchStore.h"
#include "batchdb/SqliteStore.h"
#include "foundation/Failure.h"
#include "foundation/paths.h"
#include "foundation/program.h"
#include "foundation/text_encoding.h"
#include "station_check.h"

namespace {

using namespace orvane;

constexpr const char* kUsage = R"(用法：
  station list [状态]     列出各批：档案名称、状态、登记时间、页数、备注
  station again 档案名称  把一批的状态改回“完成扫描”，让它再导出一次
  station hold 档案名称   把一批搁置起来（状态改为“暂停导出”），让后面的先导出
  station check           检查所有等待导出的批次：文件夹、Doc.dat、每一页；什么也不写
)";

constexpr const wchar_t* kWaiting = L"完成扫描";
constexpr const wchar_t* kOnHold = L"暂停导出";

// An error message for the operator.
struct Refusal : std::runtime_error {
  explicit Refusal(const std::wstring& text) : std::runtime_error(toUtf8(text)) {}
};

std::wstring quoted(const std::wstring& text) {
  std::wstring literal = L"'";
  for (const wchar_t letter : text) literal += letter == L'\'' ? L"''" : std::wstring(1, letter);
  return literal + L"'";
}

std::wstring valueOf(const Row& row, std::size_t column) {
  return row[column].isNull() ? std::wstring() : row[column].text();
}

std::vector<Row> batches(BatchStore& store, const std::wstring& condition) {
  return store.query(L"select BatchID, BatchState, CreateDate, PaperNum, Remark from T_BatchInfo" +
                         condition + L" order by CreateDate",
                     true);
}

std::wstring inState(const std::wstring& state) {
  return L" where BatchState = " + quoted(state);
}

void print(const std::wstring& line) {
  std::cout << toUtf8(line) << '\n';
}

// A line break or tab in a value would look like the next batch or column.
std::wstring onOneLine(std::wstring text) {
  for (wchar_t& letter : text) {
    if (letter == L'\r' || letter == L'\n' || letter == L'\t') letter = L' ';
  }
  return text;
}

int list(BatchStore& store, const std::wstring& condition) {
  for (const Row& row : batches(store, condition)) {
    std::wstring line = onOneLine(valueOf(row, 0));
    for (std::size_t i = 1; i < row.size(); ++i) line += L'\t' + onOneLine(valueOf(row, i));
    print(line);
  }
  return 0;
}

// Refused while the program is open, because a run does not expect another state of a batch.
int setState(BatchStore& store, const std::wstring& BatchID, const std::wstring& state) {
  const InstanceGuard guard(programFolder());
  if (guard.anotherRuns()) throw Refusal(L"程序正开着，请先关闭它再改状态。");
  const std::vector<Row> found = batches(store, L" where BatchID = " + quoted(BatchID));
  if (found.empty()) throw Refusal(L"没有这一批：" + BatchID);
  store.execute(L"update T_BatchInfo set BatchState = ? where BatchID = ?", {state, BatchID});
  print(BatchID + L"：" + valueOf(found[0], 1) + L" → " + state);
  return 0;
}

std::wstring figures(std::uint64_t documents, std::uint64_t pages, std::uint64_t bytes) {
  return std::to_wstring(documents) + L" 件，" + std::to_wstring(pages) + L" 页，" +
         std::to_wstring(bytes) + L" 字节";
}

station::BatchCheck checkRow(const Row& row) {
  if (row[0].isNull()) return {.obstacles = {L"BatchID 是空的"}};
  station::BatchCheck check = station::checkBatch(row[0].text());
  try {
    row[3].toInt16();
  } catch (const std::exception& failure) {
    check.obstacles.push_back(L"PaperNum: " + description(failure));
  }
  return check;
}

int check(BatchStore& store) {
  const std::vector<Row> waiting = batches(store, inState(kWaiting));
  std::size_t failing = 0;
  station::BatchCheck sum;
  for (const Row& row : waiting) {
    const station::BatchCheck found = checkRow(row);
    const bool fails = !found.obstacles.empty();
    print(valueOf(row, 0) + (fails ? L"：不能导出（" : L"：可以导出（") +
          figures(found.documents, found.pages, found.bytes) + L"）");
    for (const std::wstring& obstacle : found.obstacles) print(L"  " + obstacle);
    failing += fails ? 1 : 0;
    sum.documents += found.documents;
    sum.pages += found.pages;
    sum.bytes += found.bytes;
  }
  print(L"等待导出：" + std::to_wstring(waiting.size()) + L" 批，" +
        figures(sum.documents, sum.pages, sum.bytes) + L"；不能导出：" + std::to_wstring(failing) +
        L" 批");
  return failing == 0 ? 0 : 1;
}

void enterStation() {
  if (std::filesystem::exists(nativePath(programFolder() + L"\\Orvane.dll"))) return;
  setProgramFolder(pathText(std::filesystem::current_path().native()));
  if (!std::filesystem::exists(nativePath(programFolder() + L"\\Orvane.dll"))) {
    throw Refusal(L"这里没有工作站（数据库 Orvane.dll）：" + programFolder());
  }
}

int run(const std::vector<std::wstring>& words) {
  const std::wstring command = words.empty() ? L"" : words[0];
  const bool isList = command == L"list" && words.size() <= 2;
  const bool isAgain = command == L"again" && words.size() == 2;
  const bool isHold = command == L"hold" && words.size() == 2;
  const bool isCheck = command == L"check" && words.size() == 1;
  if (!isList && !isAgain && !isHold && !isCheck) {
    std::cerr << kUsage;
    return 2;
  }
  enterStation();
  SqliteStore store;
  store.open(programFolder() + L"\\Orvane.dll");
  if (isAgain || isHold) return setState(store, words[1], isAgain ? kWaiting : kOnHold);
  if (isCheck) return check(store);
  return list(store, words.size() == 2 ? inState(words[1]) : L"");
}

}  // namespace

int main(int argc, char** argv) {
  try {
    std::vector<std::wstring> words;
    for (int i = 1; i < argc; ++i) words.push_back(fromUtf8(argv[i]));
    return run(words);
  } catch (const std::exception& failure) {
    std::cerr << "station: " << failure.what() << '\n';
    return 1;
  }
}
