#include "intake/IntakePlan.h"

#include <algorithm>
#include <climits>
#include <cstddef>
#include <filesystem>
#include <memory>
#include <set>
#include <utility>

#include "docstore/ScanTree.h"
#include "foundation/Failure.h"
#include "foundation/FileDescriptor.h"
#include "foundation/paths.h"
#include "foundation/plain_text.h"
#include "foundation/text_encoding.h"
#include "intake/open_source_file.h"

namespace orvane {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kMostPageNameBytes = 200;

bool isDigit(wchar_t c) {
  return c >= L'0' && c <= L'9';
}

// Takes the digits at the front of `text`, without leading zeros.
std::wstring_view takeNumber(std::wstring_view& text) {
  const auto end = std::ranges::find_if_not(text, isDigit);
  std::wstring_view number = text.substr(0, static_cast<std::size_t>(end - text.begin()));
  text.remove_prefix(number.size());
  while (number.starts_with(L'0')) number.remove_prefix(1);
  return number;
}

bool isInCodePage(const std::wstring& text) {
  try {
    toAnsiStrict(text);
    return true;
  } catch (const Failure&) {
    return false;
  }
}

// A page list ends each name with "$" and leaves blank ones out.
bool canNamePage(const std::wstring& name) {
  const auto isControl = [](wchar_t c) { return c < L' '; };
  return !trimmed(name).empty() && name.find(L'$') == name.npos &&
         std::ranges::none_of(name, isControl) && isFolderName(name) && isInCodePage(name) &&
         nativePath(name).size() <= kMostPageNameBytes;
}

std::wstring stemOf(const std::wstring& file) {
  const std::wstring name = nameOfFolder(file);
  const std::size_t dot = name.rfind(L'.');
  return dot == name.npos || dot == 0 ? name : name.substr(0, dot);
}

/// The entries of a folder, in natural order.
struct Entries {
  std::vector<std::wstring> files, folders, others;  // path texts
};

void sortNaturally(std::vector<std::wstring>& paths) {
  std::ranges::sort(paths, [](const auto& one, const auto& other) { return isBefore(one, other); });
}

Entries entriesOf(const std::wstring& folder) {
  Entries entries;
  std::error_code error;
  for (fs::directory_iterator entry(nativePath(folder), error), end; !error && entry != end;
       entry.increment(error)) {
    std::error_code unknown;
    const fs::file_type type = entry->status(unknown).type();
    auto& list = type == fs::file_type::regular     ? entries.files
                 : type == fs::file_type::directory ? entries.folders
                                                    : entries.others;
    list.push_back(folder + L"\\" + entryText(entry->path().filename().native()));
  }
  if (error) throw systemFailure(error.value(), folder);
  sortNaturally(entries.files);
  sortNaturally(entries.folders);
  sortNaturally(entries.others);
  return entries;
}

/// An image file and what can be known of it without decoding.
struct Image {
  std::wstring file;
  std::int32_t pages;
};

/// Collects the plan of one folder.
class Planner {
 public:
  explicit Planner(std::wstring batch) { plan_.batch = std::move(batch); }

  IntakePlan plan(const std::wstring& folder) {
    const Entries entries = entriesOf(folder);
    passOver(entries.others, L"不是普通文件");
    planFiles(imagesOf(entries.files));
    for (const std::wstring& subFolder : entries.folders) planSubFolder(subFolder);
    refuseNames();
    if (plan_.documents.empty()) refuse(folder, L"没有可以登记的图像");
    if (plan_.pages > kMostPagesOfBatch) refuse(folder, L"超过 32767 页，请分成几批");
    return std::move(plan_);
  }

 private:
  void refuse(const std::wstring& what, const std::wstring& reason) {
    plan_.refusals.push_back(what + L"：" + reason);
  }

  void passOver(const std::vector<std::wstring>& paths, const std::wstring& reason) {
    for (const std::wstring& path : paths) plan_.passedOver.push_back(path + L"：" + reason);
  }

  std::vector<Image> imagesOf(const std::vector<std::wstring>& files) {
    std::vector<Image> images;
    for (const std::wstring& file : files) {
      try {
        const std::unique_ptr<SourceFile> source = openSourceFile(file);
        if (source == nullptr) {
          passOver({file}, L"不是图像");
          continue;
        }
        images.push_back({file, source->pageCount()});
        plan_.bytes += FileDescriptor::openRegularFile(file).state().size;
        refusePages(*source, file);
      } catch (const std::exception& failure) {
        refuse(file, description(failure));
      }
    }
    return images;
  }

  void refusePages(const SourceFile& source, const std::wstring& file) {
    for (std::int32_t page = 1; page <= source.pageCount(); ++page) {
      try {
        source.requirePage(page);
      } catch (const Failure& failure) {
        refuse(file, description(failure));
      }
    }
  }

  void planFiles(const std::vector<Image>& images) {
    std::vector<Image> singlePages;
    for (const Image& image : images) {
      if (image.pages > 1) {
        addDocument(stemOf(image.file), {image});
      } else {
        singlePages.push_back(image);
      }
    }
    if (!singlePages.empty()) addDocument(plan_.batch, singlePages);
  }

  void planSubFolder(const std::wstring& folder) {
    try {
      const Entries entries = entriesOf(folder);
      passOver(entries.others, L"不是普通文件");
      passOver(entries.folders, L"更深一层的文件夹");
      const std::size_t refused = plan_.refusals.size();
      const std::vector<Image> images = imagesOf(entries.files);
      if (!images.empty()) {
        addDocument(nameOfFolder(folder), images);
      } else if (plan_.refusals.size() == refused) {
        passOver({folder}, L"没有图像");
      }
    } catch (const std::exception& failure) {
      refuse(folder, description(failure));
    }
  }

  void addDocument(const std::wstring& name, const std::vector<Image>& images) {
    PlannedDocument document{name, {}};
    for (const Image& image : images) {
      for (std::int32_t page = 1; page <= image.pages; ++page) {
        const std::wstring wanted =
            stemOf(image.file) + (image.pages > 1 ? L"-" + zeroFilled(page, 4) : L"");
        document.pages.push_back({image.file, page, wanted});
      }
    }
    namePages(document.pages);
    plan_.pages += document.pages.size();
    plan_.documents.push_back(std::move(document));
  }

  // Names that can stay are given first, so that no number takes one of them.
  static void namePages(std::vector<PlannedPage>& pages) {
    std::set<std::wstring> taken;
    std::vector<std::size_t> unnamed;
    for (std::size_t i = 0; i < pages.size(); ++i) {
      const bool isNamed =
          canNamePage(pages[i].name) && taken.insert(upperCase(pages[i].name)).second;
      if (!isNamed) unnamed.push_back(i);
    }
    for (const std::size_t i : unnamed) {
      const std::wstring number = zeroFilled(static_cast<int>(i + 1), 4);
      pages[i].name = number;
      for (int n = 2; !taken.insert(upperCase(pages[i].name)).second; ++n) {
        pages[i].name = number + L"-" + std::to_wstring(n);
      }
    }
  }

  void refuseNames() {
    const std::wstring ofBatch = reasonAgainstName(plan_.batch);
    if (!ofBatch.empty()) refuse(L"档案名称 " + plan_.batch, ofBatch);
    std::set<std::wstring> names;
    for (const PlannedDocument& document : plan_.documents) {
      const std::wstring reason = reasonAgainstName(document.name);
      if (!reason.empty() && document.name != plan_.batch) {
        refuse(L"档案（件）名称 " + document.name, reason);
      }
      if (!names.insert(upperCase(document.name)).second) {
        refuse(L"档案（件）名称 " + document.name, L"有两件同名（不分大小写）");
      }
    }
  }

  IntakePlan plan_;
};

}  // namespace

IntakePlan planBatch(const std::wstring& folder, const std::wstring& batch) {
  return Planner(batch).plan(folder);
}

std::vector<std::wstring> linesOf(const IntakePlan& plan) {
  std::vector<std::wstring> lines;
  for (const PlannedDocument& document : plan.documents) {
    lines.push_back(L"件：" + document.name + L"，" + std::to_wstring(document.pages.size()) +
                    L" 页，" + document.pages.front().name + L" 至 " + document.pages.back().name);
  }
  for (const std::wstring& line : plan.passedOver) lines.push_back(L"略过：" + line);
  for (const std::wstring& line : plan.refusals) lines.push_back(L"不能登记：" + line);
  lines.push_back(L"计划：" + plan.batch + L"（" +
                  figures(plan.documents.size(), plan.pages, plan.bytes) + L"）；不能登记：" +
                  std::to_wstring(plan.refusals.size()) + L" 处");
  return lines;
}

std::wstring figures(std::uint64_t documents, std::uint64_t pages, std::uint64_t bytes) {
  return std::to_wstring(documents) + L" 件，" + std::to_wstring(pages) + L" 页，" +
         std::to_wstring(bytes) + L" 字节";
}

std::wstring nameOfFolder(const std::wstring& folder) {
  const std::size_t end = folder.find_last_not_of(L'\\');
  if (end == folder.npos) return {};
  const std::size_t begin = folder.rfind(L'\\', end) + 1;  // without one: npos + 1 is 0
  return folder.substr(begin, end + 1 - begin);
}

std::wstring reasonAgainstName(const std::wstring& name) {
  if (trimmed(name).empty() || !isFolderName(name)) return L"不能作文件夹名";
  if (!isInCodePage(name)) return L"有 GBK 编码里没有的字";
  if (nativePath(name).size() > NAME_MAX) return L"太长";
  return {};
}

bool isBefore(std::wstring_view one, std::wstring_view other) {
  const std::wstring_view wholeOne = one, wholeOther = other;
  while (!one.empty() && !other.empty()) {
    if (isDigit(one.front()) && isDigit(other.front())) {
      const std::wstring_view a = takeNumber(one), b = takeNumber(other);
      if (a.size() != b.size()) return a.size() < b.size();
      if (a != b) return a < b;
    } else {
      if (one.front() != other.front()) return one.front() < other.front();
      one.remove_prefix(1);
      other.remove_prefix(1);
    }
  }
  if (one.empty() != other.empty()) return one.empty();
  return wholeOne < wholeOther;  // "01" and "1"
}

}  // namespace orvane
