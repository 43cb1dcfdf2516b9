#include "settings/stored_settings.h"

#include <algorithm>
#include <exception>

#include "foundation/Failure.h"
#include "foundation/WindowServices.h"
#include "foundation/mdlFolderAndFile.h"
#include "foundation/plain_text.h"
#include "foundation/program.h"
#include "settings/mdlINI.h"

namespace orvane {
namespace {

std::wstring read(std::wstring section, std::wstring key, std::wstring defaultValue) {
  return mdlINI::ReadIniValue(mdlINI::IniFilePath, section, key, defaultValue);
}

void write(std::wstring section, std::wstring key, std::wstring value) {
  mdlINI::WriteIniValue(mdlINI::IniFilePath, section, key, value);
}

// Reads a value and converts it. A failure names key and value.
auto readAs(auto convert, const wchar_t* key, const wchar_t* defaultValue) {
  const std::wstring value = read(L"Commit", key, defaultValue);
  try {
    return convert(value);
  } catch (const Failure& failure) {
    throw Failure(description(failure) + L"（data.ini 的 [Commit] " + key + L"=" + value + L"）");
  }
}

std::int16_t readNumber(const wchar_t* key, const wchar_t* defaultValue) {
  return readAs([](std::wstring_view value) { return toInt16(value); }, key, defaultValue);
}

bool readTruth(const wchar_t* key, const wchar_t* defaultValue) {
  return readAs(toBoolean, key, defaultValue);
}

std::wstring truthWord(bool value) {
  return value ? L"True" : L"False";
}

void loadFolders(ExportForm& form) {
  ExportSettings& settings = form.settings();
  settings.PerName = read(L"Setting", L"PerName", L"");
  settings.SavePath = read(L"Setting", L"SavePath", L"");
  form.setText(TextBox::SavePath, settings.SavePath);
}

void loadFileForm(ExportForm& form) {
  ExportSettings& settings = form.settings();
  settings.SaveFileType = readNumber(L"SaveFileType", L"0");
  form.setButton(OptionGroup::SaveFileType, settings.SaveFileType);

  settings.IsMutiPage = readTruth(L"IsMutiPage", L"false");
  form.setButton(OptionGroup::MutiPage, settings.IsMutiPage ? 1 : 0);

  settings.CompressionType = readNumber(L"CompressionType", L"0");
  settings.CompressionRatios = readNumber(L"CompressionRatios", L"0");
  form.setButton(OptionGroup::CompressionType, settings.CompressionType);
  form.setButton(OptionGroup::CompressionRatios, settings.CompressionRatios);
}

// The available entries depend on the multi-page option, so a stored pattern may not be among them.
void loadNaming(ExportForm& form) {
  ExportSettings& settings = form.settings();
  settings.ReNameFormat = read(L"Commit", L"ReNameFormat", L"");
  const auto& entries = form.renameTypes();
  const auto stored = std::find(entries.begin(), entries.end(), settings.ReNameFormat);
  form.selectRenameType(stored == entries.end() ? 0 : static_cast<int>(stored - entries.begin()));

  settings.ReNameSp1 = read(L"Commit", L"ReNameSp1", L"-");
  form.setText(TextBox::Sp1, settings.ReNameSp1);
  settings.ReNameSp2 = read(L"Commit", L"ReNameSp2", L"-");
  form.setText(TextBox::Sp2, settings.ReNameSp2);
  form.setText(TextBox::LiuShui, read(L"Commit", L"LiuShuiHao", L"3"));
}

void loadFolderStructure(ExportForm& form) {
  ExportSettings& settings = form.settings();
  settings.IsCreateDocFolder = readTruth(L"IsCreateDocFolder", L"False");
  form.setChecked(CheckBox::CreateDocFolder, settings.IsCreateDocFolder);
  settings.IsCreateBatchFolder = readTruth(L"IsCreateBatchFolder", L"False");
  form.setChecked(CheckBox::CreateBatchFolder, settings.IsCreateBatchFolder);
}

}  // namespace

void LoadExportSettings(ExportForm& form) {
  try {
    mdlINI::IniFilePath = mdlFolderAndFile::AppendBackslash(programFolder()) + L"data.ini";
    loadFolders(form);
    loadFileForm(form);
    loadNaming(form);
    loadFolderStructure(form);
  } catch (const std::exception& failure) {
    windowServices().showBox(L"初始化导出档案参数出错! Error-" + description(failure),
                             kApplicationTitle, BoxIcon::None);
  }
}

void SaveExportSettings(const ExportForm& form) {
  const ExportSettings& settings = form.settings();
  write(L"Setting", L"SavePath", settings.SavePath);
  write(L"Commit", L"SaveFileType", std::to_wstring(settings.SaveFileType));
  write(L"Commit", L"IsMutiPage", truthWord(settings.IsMutiPage));
  write(L"Commit", L"CompressionType", std::to_wstring(settings.CompressionType));
  write(L"Commit", L"CompressionRatios", std::to_wstring(settings.CompressionRatios));
  write(L"Commit", L"ReNameFormat", settings.ReNameFormat);
  write(L"Commit", L"ReNameSp1", settings.ReNameSp1);
  write(L"Commit", L"ReNameSp2", settings.ReNameSp2);
  write(L"Commit", L"LiuShuiHao", form.text(TextBox::LiuShui));
  write(L"Commit", L"IsCreateDocFolder", truthWord(settings.IsCreateDocFolder));
  write(L"Commit", L"IsCreateBatchFolder", truthWord(settings.IsCreateBatchFolder));
}

}  // namespace orvane
