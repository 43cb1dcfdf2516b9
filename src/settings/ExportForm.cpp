#include "settings/ExportForm.h"

#include <algorithm>

#include "foundation/mdlFolderAndFile.h"
#include "settings/ExportSettings.h"

namespace orvane {

void ExportForm::clickButton(OptionGroup group, int button) {
  selected_[index(group)] = button;
  fireClick(group, button);
}

void ExportForm::setButton(OptionGroup group, int button) {
  const bool exists = button >= 0 && button < kOptionButtons[index(group)];
  if (exists && selectedButton(group) != button) clickButton(group, button);
}

void ExportForm::fireClick(OptionGroup group, int button) {
  switch (group) {
    case OptionGroup::SaveFileType:
      return optSaveFileType_Click(button);
    case OptionGroup::MutiPage:
      return optMutiPage_Click(button);
    case OptionGroup::CompressionType:
      return optCompressionType_Click(button);
    case OptionGroup::CompressionRatios:
      return optCompressionRatios_Click(button);
  }
}

void ExportForm::optSaveFileType_Click(int Index) {
  settings_.SaveFileType = static_cast<std::int16_t>(Index);
  offerAllRenameTypes();
}

void ExportForm::optMutiPage_Click(int Index) {
  settings_.IsMutiPage = Index == 1;
  offerAllRenameTypes();
  if (settings_.IsMutiPage) {
    renameTypes_.assign(kMultiPageNamingPatterns.begin(), kMultiPageNamingPatterns.end());
  }
}

void ExportForm::optCompressionType_Click(int Index) {
  settings_.CompressionType = static_cast<std::int16_t>(Index);
  frameEnabled_[3] = Index == 0;  // Frame4, the naming group
}

void ExportForm::optCompressionRatios_Click(int Index) {
  settings_.CompressionRatios = static_cast<std::int16_t>(Index);
}

void ExportForm::setText(TextBox box, const std::wstring& text) {
  std::wstring& current = texts_[index(box)];
  if (current == text) return;
  current = text;
  if (box == TextBox::Sp1) settings_.ReNameSp1 = text;
  if (box == TextBox::Sp2) settings_.ReNameSp2 = text;
}

void ExportForm::setChecked(CheckBox box, bool checked) {
  bool& current = checked_[index(box)];
  if (current == checked) return;
  current = checked;
  if (box == CheckBox::CreateBatchFolder) settings_.IsCreateBatchFolder = checked;
  if (box == CheckBox::CreateDocFolder) settings_.IsCreateDocFolder = checked;
}

std::wstring ExportForm::renameTypeText() const {
  return selectedRenameType_ == kNone ? std::wstring() : renameTypes_[selectedRenameType_];
}

void ExportForm::selectRenameType(int entry) {
  selectedRenameType_ = entry;
  settings_.ReNameFormat = renameTypes_.at(entry);
}

void ExportForm::offerAllRenameTypes() {
  renameTypes_.assign(kAllNamingPatterns.begin(), kAllNamingPatterns.end());
  selectedRenameType_ = kNone;
}

void ExportForm::enableFrames(int last, bool enabled) {
  std::fill_n(frameEnabled_.begin(), last, enabled);
}

void ExportForm::chooseSavePath(const std::wstring& folder) {
  settings_.SavePath = folder;
  if (folder.empty()) return;
  settings_.SavePath = mdlFolderAndFile::AppendBackslash(folder);
  setText(TextBox::SavePath, settings_.SavePath);
}

}  // namespace orvane
