#pragma once

#include <map>
#include <string>
#include <vector>

#include "foundation/Failure.h"
#include "foundation/utf8_text.h"
#include "imaging/ImagingEngine.h"

namespace orvane {

/// An imaging instance that records what is asked of it, in order, and fails where a test says so.
class RecordingEngine final : public ImagingEngine {
 public:
  std::vector<std::string> calls;  ///< "OutputType 15", "SaveFile", ...
  std::int16_t bitsPerPixel = 1;
  std::int32_t imagError = 0;  ///< taken away by a clear
  std::int32_t imagErrorAfterSave = 0;
  std::int32_t imagErrorAfterDelete = 0;
  std::string throwsAt;                     ///< the call that throws Failure("broken")
  std::vector<std::int32_t> pageCounts{1};  ///< answers of FilePageCount; the last one repeats

  void SourceFile(const std::wstring& path) override {
    sourceFile_ = path;
    if (path.empty()) imagError = 0;
    record("SourceFile", toUtf8(path));
  }
  std::wstring SourceFile() const override { return sourceFile_; }
  void PageNumber(std::int32_t page) override { record("PageNumber", std::to_string(page)); }
  std::int16_t BitsPerPixel() const override { return bitsPerPixel; }
  std::int32_t ImageWidth() const override { return 1003; }
  std::int32_t ImageHeight() const override { return 603; }
  std::int32_t FilePageCount(const std::wstring& path) override {
    record("FilePageCount", toUtf8(path));
    const std::int32_t count = pageCounts.front();
    if (pageCounts.size() > 1) pageCounts.erase(pageCounts.begin());
    return count;
  }
  void TargetFile(const std::wstring& path) override { record("TargetFile", toUtf8(path)); }
  void OutputType(std::int32_t type) override { record("OutputType", std::to_string(type)); }
  void TiffCompression(std::int32_t code) override {
    record("TiffCompression", std::to_string(code));
  }
  void PdfCompression(std::int32_t code) override {
    record("PdfCompression", std::to_string(code));
  }
  void JpegFactorMajor(std::int16_t factor) override { record("Major", std::to_string(factor)); }
  void JpegFactorMinor(std::int16_t factor) override { record("Minor", std::to_string(factor)); }
  void SaveMultiPage(bool append) override { record("SaveMultiPage", append ? "1" : "0"); }
  void OutputResolutionX(double dpi) override { record("ResolutionX", std::to_string(dpi)); }
  void OutputResolutionY(double dpi) override { record("ResolutionY", std::to_string(dpi)); }
  void SaveFile() override {
    record("SaveFile");
    imagError = imagErrorAfterSave;
  }
  std::int32_t ImagError() const override { return imagError; }
  void Refresh() override { record("Refresh"); }
  void Picture(ImagePicture*) override { record("Picture"); }
  void CropImage(std::int32_t left, std::int32_t top, std::int32_t width,
                 std::int32_t height) override {
    record("CropImage", std::to_string(left) + " " + std::to_string(top) + " " +
                            std::to_string(width) + " " + std::to_string(height));
  }
  void RotateImage(double angle) override { record("RotateImage", std::to_string(angle)); }
  void DeskewFirstStep() override { record("DeskewFirstStep"); }
  void DeskewSecondStep(std::int32_t mode) override {
    record("DeskewSecondStep", std::to_string(mode));
  }
  void FinishingFilter(float strength, std::int16_t halfWidth) override {
    record("FinishingFilter", std::to_string(strength) + " " + std::to_string(halfWidth));
  }
  std::int32_t CopyDIB() override {
    record("CopyDIB");
    return 77;
  }
  void hDIB(std::int32_t handle) override { record("hDIB", std::to_string(handle)); }
  void ResizeImage(std::int32_t width, std::int32_t height) override {
    record("ResizeImage", std::to_string(width) + " " + std::to_string(height));
  }
  void DeletePageFromFile(const std::wstring& path, std::int32_t page) override {
    imagError = imagErrorAfterDelete;
    record("DeletePageFromFile", toUtf8(path) + " " + std::to_string(page));
  }

 private:
  void record(const std::string& name, const std::string& value = {}) {
    calls.push_back(value.empty() ? name : name + " " + value);
    if (name == throwsAt) throw Failure("broken");
  }

  std::wstring sourceFile_;
};

}  // namespace orvane
