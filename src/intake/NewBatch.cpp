#include "intake/NewBatch.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <exception>
#include <fcntl.h>
#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>
#include <system_error>
#include <unistd.h>
#include <utility>
#include <vector>

#include "docstore/ScanTree.h"
#include "foundation/Failure.h"
#include "foundation/FileDescriptor.h"
#include "foundation/TemporaryFolder.h"
#include "foundation/durable_file.h"
#include "foundation/letter_case.h"
#include "foundation/mdlFolderAndFile.h"
#include "foundation/paths.h"
#include "foundation/program.h"
#include "foundation/share_out.h"
#include "foundation/text_encoding.h"
#include "imaging/LoadedPage.h"
#include "imaging/PagesAhead.h"
#include "intake/open_source_file.h"

namespace orvane {
namespace {

namespace fs = std::filesystem;

// A batch cannot have this name, and a folder two levels below it is no document of one.
constexpr const wchar_t* kNameOfWorkplace = L".station-add";

std::wstring batchesFolder() {
  return programFolder() + L"\\Batchs";
}

std::wstring folderOf(const std::wstring& BatchID) {
  return batchesFolder() + L"\\" + BatchID;
}

void createFolder(const std::wstring& folder) {
  std::error_code error;
  fs::create_directory(nativePath(folder), error);
  if (error) throw systemFailure(error.value(), folder);
}

bool exists(const std::wstring& path) {
  std::error_code error;
  const fs::file_status status = fs::symlink_status(nativePath(path), error);
  if (status.type() == fs::file_type::none) throw systemFailure(error.value(), path);
  return status.type() != fs::file_type::not_found;
}

/// The pages of one image file in one document.
struct FileJob {
  std::size_t document;
  const PlannedPage* first;
  std::size_t pages;
};

std::vector<FileJob> jobsOf(const IntakePlan& plan) {
  std::vector<FileJob> jobs;
  for (std::size_t i = 0; i < plan.documents.size(); ++i) {
    for (const PlannedPage& page : plan.documents[i].pages) {
      if (!jobs.empty() && jobs.back().document == i && jobs.back().first->file == page.file) {
        ++jobs.back().pages;
      } else {
        jobs.push_back({i, &page, 1});
      }
    }
  }
  return jobs;
}

/// Counts what is done. The workers share it.
class Tally {
 public:
  explicit Tally(const IntakePlan& plan) {
    for (const PlannedDocument& document : plan.documents) left_.push_back(document.pages.size());
  }

  void add(std::size_t document, std::uint64_t bytes) {
    const std::lock_guard lock(mutex_);
    ++progress_.pages;
    progress_.bytes += bytes;
    if (--left_[document] == 0) ++progress_.documents;
  }

  IntakeProgress progress() const {
    const std::lock_guard lock(mutex_);
    return progress_;
  }

 private:
  mutable std::mutex mutex_;
  IntakeProgress progress_;
  std::vector<std::size_t> left_;  // pages of each document
};

void writePages(const FileJob& job, const std::wstring& folder, Tally& tally) {
  const std::unique_ptr<SourceFile> source = openSourceFile(job.first->file);
  for (const PlannedPage *page = job.first, *end = page + job.pages; page != end; ++page) {
    const std::wstring target = folder + L"\\" + page->name + L".tif";
    try {
      if (source == nullptr) throw Failure(L"不是图像");
      source->writePage(page->number, target);
    } catch (const std::exception& failure) {
      throw Failure(page->file + L"，第 " + std::to_wstring(page->number) + L" 页：" +
                    description(failure));
    }
    tally.add(job.document, FileDescriptor::openRegularFile(target).state().size);
  }
}

void writePageList(const PlannedDocument& document, const std::wstring& folder) {
  std::vector<std::wstring> names;
  for (const PlannedPage& page : document.pages) names.push_back(page.name);
  FileDescriptor file(folder + L"\\Doc.dat", O_WRONLY | O_CREAT | O_EXCL);
  file.writeAll(toAnsiStrict(pageListText(names)));
  file.close();
}

void syncTree(const std::wstring& folder) {
  if (!syncsFilesOnly(folder)) return syncDiskOf(folder);
  std::error_code error;
  for (fs::recursive_directory_iterator entry(nativePath(folder), error), end;
       !error && entry != end; entry.increment(error)) {
    syncEntry(pathText(entry->path()));
  }
  if (error) throw systemFailure(error.value(), folder);
  syncEntry(folder);
}

// Not over an existing folder, not even an empty one.
void giveName(const std::wstring& folder, const std::wstring& name) {
  const std::string from = nativePath(folder), to = nativePath(name);
  if (renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) return;
  if (errno != EINVAL && errno != ENOSYS) throw systemFailure(errno, name);
  // Not every file system can refuse to replace.
  if (exists(name)) throw systemFailure(EEXIST, name);
  if (std::rename(from.c_str(), to.c_str()) != 0) throw systemFailure(errno, name);
}

void insertRow(BatchStore& store, const std::wstring& BatchID, const std::wstring& CreateDate,
               std::uint64_t pages) {
  store.execute(
      L"insert into T_BatchInfo (BatchID, BatchState, CreateDate, PaperNum)"
      L" values (?, '完成扫描', ?, cast(? as integer))",
      {BatchID, CreateDate, std::to_wstring(pages)});
}

void buildFolder(const IntakePlan& plan, const std::wstring& folder, Tally& tally,
                 const IntakeObserver& observe) {
  createFolder(folder);
  const auto folderOfDocument = [&](std::size_t i) {
    return folder + L"\\" + plan.documents[i].name;
  };
  for (std::size_t i = 0; i < plan.documents.size(); ++i) createFolder(folderOfDocument(i));
  const std::vector<FileJob> jobs = jobsOf(plan);
  shareOut(
      jobs.size(), workersOfMachine(),
      [&](std::size_t i) { writePages(jobs[i], folderOfDocument(jobs[i].document), tally); },
      [&] { observe(tally.progress()); });
  for (std::size_t i = 0; i < plan.documents.size(); ++i) {
    writePageList(plan.documents[i], folderOfDocument(i));
  }
  syncTree(folder);
}

/// The place below `Batchs` where batches are built; it goes when it is empty.
class Workplace {
 public:
  Workplace() : folder_(folderOf(kNameOfWorkplace)) { createFolder(folder_); }
  ~Workplace() { rmdir(nativePath(folder_).c_str()); }
  Workplace(const Workplace&) = delete;
  Workplace& operator=(const Workplace&) = delete;

  const std::wstring& folder() const { return folder_; }

 private:
  std::wstring folder_;
};

void requireNoRow(BatchStore& store, const std::wstring& BatchID) {
  if (store.query(L"select BatchID from T_BatchInfo where BatchID = ?", true, {BatchID}).empty()) {
    return;
  }
  throw Failure(L"表里已经有这一批：" + BatchID);
}

void requireNoFolder(const std::wstring& BatchID) {
  if (BatchID == kNameOfWorkplace) throw Failure(L"不能用这个档案名称：" + BatchID);
  if (!exists(folderOf(BatchID))) return;
  throw Failure(L"Batchs 里已经有这个文件夹，表里没有：" + folderOf(BatchID) +
                L"。要登记它，请直接登记这个文件夹");
}

IntakeProgress addBatch(BatchStore& store, const IntakePlan& plan, const std::wstring& CreateDate,
                        const IntakeObserver& observe) {
  const Workplace workplace;
  const TemporaryFolder building(workplace.folder());
  const std::wstring folder = building.path() + L"\\batch";
  Tally tally(plan);
  buildFolder(plan, folder, tally, observe);
  observe(tally.progress());

  giveName(folder, folderOf(plan.batch));
  try {
    syncEntry(batchesFolder());
    insertRow(store, plan.batch, CreateDate, plan.pages);
  } catch (const std::exception&) {
    giveName(folderOf(plan.batch), folder);  // and goes with `building`
    throw;
  }
  return tally.progress();
}

IntakePlan planOfFolder(const std::wstring& BatchID) {
  gBatchFolder = folderOf(BatchID);
  IntakePlan plan;
  plan.batch = BatchID;
  plan.isInPlace = true;
  for (const std::wstring& name : mdlFolderAndFile::fileSystem().SubFolders(gBatchFolder)) {
    if (!isDocument(name)) {
      plan.passedOver.push_back(gBatchFolder + L"\\" + name + L"：没有 Doc.dat");
      continue;
    }
    std::optional<std::vector<std::wstring>> names;
    readPageList(name, names);
    PlannedDocument document{name, {}};
    for (const std::wstring& page : *names) {
      document.pages.push_back({GetPagePath(name, page), 1, page});
    }
    plan.pages += document.pages.size();
    plan.documents.push_back(std::move(document));
  }
  if (plan.documents.empty()) plan.refusals.push_back(gBatchFolder + L"：没有一件档案（Doc.dat）");
  if (plan.pages > kMostPagesOfBatch) {
    plan.refusals.push_back(gBatchFolder + L"：超过 32767 页，请分成几批");
  }
  return plan;
}

IntakeProgress registerFolder(BatchStore& store, const IntakePlan& plan,
                              const std::wstring& CreateDate, const IntakeObserver& observe) {
  const std::wstring folder = folderOf(plan.batch);
  Tally tally(plan);
  const std::vector<FileJob> jobs = jobsOf(plan);
  shareOut(
      jobs.size(), workersOfMachine(),
      [&](std::size_t i) {
        const std::wstring file = existingPath(jobs[i].first->file);
        checkPage(LoadedPage(file, 1), file);
        for (std::size_t k = 0; k < jobs[i].pages; ++k) {  // a list may name a page twice
          tally.add(jobs[i].document, FileDescriptor::openRegularFile(file).state().size);
        }
      },
      [&] { observe(tally.progress()); });
  syncTree(folder);
  syncEntry(batchesFolder());
  insertRow(store, plan.batch, CreateDate, plan.pages);
  return tally.progress();
}

bool isBelow(const fs::path& place, const fs::path& folder) {
  return std::ranges::mismatch(folder, place).in1 == folder.end();
}

fs::path placeOf(const std::wstring& folder) {
  std::error_code error;
  fs::path place = fs::canonical(nativePath(folder), error);
  if (error) throw systemFailure(error.value(), folder);
  return place;
}

}  // namespace

IntakePlan planIntake(BatchStore& store, const std::wstring& folder, const std::wstring& BatchID) {
  const fs::path place = placeOf(folder), batches = placeOf(batchesFolder());
  const std::wstring name = BatchID.empty() ? nameOfFolder(pathText(place)) : BatchID;
  requireNoRow(store, name);
  if (place.parent_path() != batches) {
    if (isBelow(place, batches)) throw Failure(folder + L"：在 Batchs 里面，又不是一批");
    requireNoFolder(name);
    return planBatch(pathText(place), name);
  }
  if (name != nameOfFolder(pathText(place))) {
    throw Failure(folder + L"：Batchs 里的文件夹只能按它自己的名称登记");
  }
  return planOfFolder(name);
}

IntakeProgress carryOut(BatchStore& store, const IntakePlan& plan, const std::wstring& CreateDate,
                        const IntakeObserver& observe) {
  requireNoRow(store, plan.batch);
  return plan.isInPlace ? registerFolder(store, plan, CreateDate, observe)
                        : addBatch(store, plan, CreateDate, observe);
}

}  // namespace orvane
