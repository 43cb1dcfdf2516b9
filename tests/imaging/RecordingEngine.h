#pragma once

#include <functional>
#include <sstream>
#include <string>
#include <vector>

#include "foundation/Failure.h"
#include "foundation/text_encoding.h"
#include "imaging/ImagingEngine.h"

namespace orvane {

/// An imaging instance that records what is asked of it, in order, and fails where a test says so.
class RecordingEngine final : public ImagingEngine {
 public:
  mutable std::vector<std::string> calls;  ///< "OutputType 15", "SaveFile", ...
  std::int16_t bitsPerPixel = 1;
  std::int32_t imagError = 0;  ///< taken away by a clear
  std::int32_t imagErrorAfterSave = 0;
  std::int32_t imagErrorAfterDelete = 0;
  std::string throwsAt;  ///< the call that throws Failure("broken")
  std::function<void()> onLoad, onSave;
  std::vector<std::int32_t> pageCounts{1};  ///< answers of FilePageCount; the last one repeats

  /// The calls since the last time, in one line.
  std::string takeCalls() {
    std::string line;
    for (const std::string& call : calls) line += (line.empty() ? "" : "; ") + call;
    calls.clear();
    return line;
  }

  void SourceFile(const std::wstring& path) override {
    sourceFile_ = path;
    if (path.empty()) imagError = 0;
    path.empty() ? record("SourceFile") : record("SourceFile", toUtf8(path));
    if (!path.empty() && onLoad) onLoad();
  }
  std::wstring SourceFile() const override { return sourceFile_; }
  void PageNumber(std::int32_t page) override { record("PageNumber", page); }
  std::int16_t BitsPerPixel() const override { return record("BitsPerPixel"), bitsPerPixel; }
  std::int32_t ImageWidth() const override { return 1003; }
  std::int32_t ImageHeight() const override { return 603; }
  std::int32_t FilePageCount(const std::wstring& path) override {
    record("FilePageCount", toUtf8(path));
    const std::int32_t count = pageCounts.front();
    if (pageCounts.size() > 1) pageCounts.erase(pageCounts.begin());
    return count;
  }
  void TargetFile(const std::wstring& path) override { record("TargetFile", toUtf8(path)); }
  void OutputType(std::int32_t type) override { record("OutputType", type); }
  void TiffCompression(std::int32_t code) override { record("TiffCompression", code); }
  void PdfCompression(std::int32_t code) override { record("PdfCompression", code); }
  void JpegFactorMajor(std::int16_t factor) override { record("Major", factor); }
  void JpegFactorMinor(std::int16_t factor) override { record("Minor", factor); }
  void SaveMultiPage(bool append) override { record("SaveMultiPage", append); }
  void OutputResolutionX(double dpi) override { record("ResolutionX", dpi); }
  void OutputResolutionY(double dpi) override { record("ResolutionY", dpi); }
  void SaveFile() override {
    record("SaveFile"), imagError = imagErrorAfterSave;
    if (onSave) onSave();
  }
  void expectPages(PageForecast, std::function<void()>) override {}
  std::int32_t ImagError() const override { return imagError; }
  void Refresh() override { record("Refresh"); }
  void Picture(ImagePicture*) override { record("Picture"); }
  void CropImage(std::int32_t left, std::int32_t top, std::int32_t w, std::int32_t h) override {
    record("CropImage", left, top, w, h);
  }
  void RotateImage(double angle) override { record("RotateImage", angle); }
  void DeskewFirstStep() override { record("DeskewFirstStep"); }
  void DeskewSecondStep(std::int32_t mode) override { record("DeskewSecondStep", mode); }
  void FinishingFilter(float strength, std::int16_t halfWidth) override {
    record("FinishingFilter", strength, halfWidth);
  }
  std::int32_t CopyDIB() override { return record("CopyDIB"), 77; }
  void hDIB(std::int32_t handle) override { record("hDIB", handle); }
  void ResizeImage(std::int32_t w, std::int32_t h) override { record("ResizeImage", w, h); }
  void DeletePageFromFile(const std::wstring& path, std::int32_t page) override {
    imagError = imagErrorAfterDelete;
    record("DeletePageFromFile", toUtf8(path), page);
  }

 private:
  template <typename... Values>
  void record(const std::string& name, const Values&... values) const {
    std::ostringstream call;
    call << name;
    ((call << " " << values), ...);
    calls.push_back(call.str());
    if (name == throwsAt) throw Failure("broken");
  }

  std::wstring sourceFile_;
};

}  // namespace orvane
