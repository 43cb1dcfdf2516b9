// Manages the batches of a station. Run it without arguments for its commands. The station is the
// program's own folder if that is one, otherwise the current folder.

#include <algorithm>
#include <filesystem>
#include <iostream>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "add_command.h"
#include "batchdb/BatchStore.h"
#include "batchdb/SqliteStore.h"
#include "check_command.h"
#include "foundation/Failure.h"
#include "foundation/InstanceGuard.h"
#include "foundation/paths.h"
#include "foundation/program.h"
#include "foundation/text_encoding.h"
#include "printing.h"

namespace {

using namespace orvane;
using station::onOneLine;
using station::print;

constexpr const char* kUsage = R"(用法：
  station list [状态]     列出各批：档案名称、状态、登记时间、页数、备注
  station again 档案名称  把一批的状态改回“完成扫描”，让它再导出一次
  station hold 档案名称   把一批搁置起来（状态改为“暂停导出”），让后面的先导出
  station add [--name 档案名称] [--date 登记时间] [--dry-run] 文件夹
                          把一个文件夹的扫描件（TIFF、JPEG、PNG、PDF）登记为一批，等待导出；
                          --dry-run 只说出会怎样，什么也不写
  station check           检查所有等待导出的批次：文件夹、Doc.dat、每一页；什么也不写。导出会失败的地方和值得注意的
                          地方（页数不符、分辨率低、重复页）都列出来，注意的不影响结果
    --pixels              还看每一页的内容：空白页、歪斜、大小不同；慢得多
    --tsv                 每一处一行，用制表符分开：档案名称、件、文件、种类、说明；最后是每种的合计
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
  const auto checkOptions = station::checkOptions(words);
  const auto change = words.empty() ? std::nullopt : stateChange(words);
  const auto addRequest = station::addRequest(words);
  if (!isList && !checkOptions && !addRequest && !change) {
    std::cerr << kUsage;
    return 2;
  }
  enterStation();
  SqliteStore store;
  store.open(programFolder() + L"\\Orvane.dll");
  if (change) return setState(store, *change);
  if (addRequest) return station::add(store, *addRequest);
  if (checkOptions) return station::check(batches(store, inState(kWaiting)), *checkOptions);
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
