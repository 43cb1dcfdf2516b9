// Manages the batches of a station. Run it without arguments for its commands. The station is the
// program's own folder if that is one, otherwise the current folder.

#include <algorithm>
#include <filesystem>
#include <iostream>
#include <optional>
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
again 只改“完成成果输出”“暂停导出”“完成扫描”的批次，hold 只改“完成扫描”的。别的状态要在后面加 --force 才改，
改了以后这样改回去：
  station set 档案名称 原来的状态 --force
)";

constexpr const wchar_t* kWaiting = L"完成扫描";
constexpr const wchar_t* kOnHold = L"暂停导出";
constexpr const wchar_t* kExported = L"完成成果输出";

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

// A new state of a batch, and the states that it is meant for. Another state belongs to the
// scanning station, and is changed by force only.
struct StateChange {
  std::wstring BatchID, state;
  std::vector<std::wstring> from;
  bool isForced = false;

  bool isMeantFor(const std::wstring& old) const {
    return std::find(from.begin(), from.end(), old) != from.end();
  }
};

std::wstring asShellWord(const std::wstring& text) {
  std::wstring word = L"'";
  for (const wchar_t letter : text) word += letter == L'\'' ? L"'\\''" : std::wstring(1, letter);
  return word + L"'";
}

// Refused while the program is open, because a run does not expect another state of a batch.
int setState(BatchStore& store, const StateChange& change) {
  const InstanceGuard guard(programFolder());
  if (guard.anotherRuns()) throw Refusal(L"程序正开着，请先关闭它再改状态。");
  const std::vector<Row> found = batches(store, L" where BatchID = " + quoted(change.BatchID));
  if (found.empty()) throw Refusal(L"没有这一批：" + change.BatchID);
  for (const Row& row : found) {
    if (change.isForced || change.isMeantFor(valueOf(row, 1))) continue;
    throw Refusal(change.BatchID + L" 的状态是“" + valueOf(row, 1) +
                  L"”，没有改。确实要改，请在命令后面加 --force");
  }
  store.execute(L"update T_BatchInfo set BatchState = nullif(?, '') where BatchID = ?",
                {change.state, change.BatchID});
  for (const Row& row : found) {
    const std::wstring old = valueOf(row, 1);
    print(change.BatchID + L"：" + old + L" → " + change.state);
    if (change.isMeantFor(old)) continue;
    print(L"改回去：station set " + asShellWord(change.BatchID) + L" " + asShellWord(old) +
          L" --force");
  }
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

std::optional<StateChange> stateChange(std::vector<std::wstring> words) {
  const bool isForced = words.back() == L"--force";
  if (isForced) words.pop_back();
  if (words.size() == 2 && words[0] == L"again") {
    return StateChange{words[1], kWaiting, {kExported, kOnHold, kWaiting}, isForced};
  }
  if (words.size() == 2 && words[0] == L"hold") {
    return StateChange{words[1], kOnHold, {kWaiting}, isForced};
  }
  if (words.size() == 3 && words[0] == L"set" && isForced) {
    return StateChange{words[1], words[2], {}, isForced};
  }
  return std::nullopt;
}

int run(const std::vector<std::wstring>& words) {
  const std::wstring command = words.empty() ? L"" : words[0];
  const bool isList = command == L"list" && words.size() <= 2;
  const bool isCheck = command == L"check" && words.size() == 1;
  const auto change = words.empty() ? std::nullopt : stateChange(words);
  if (!isList && !isCheck && !change) {
    std::cerr << kUsage;
    return 2;
  }
  enterStation();
  SqliteStore store;
  store.open(programFolder() + L"\\Orvane.dll");
  if (change) return setState(store, *change);
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
