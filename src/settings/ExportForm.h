#pragma once

#include <array>
#include <string>
#include <vector>

#include "settings/ExportSettings.h"

namespace orvane {

/// The groups of option buttons of `frmMain`.
enum class OptionGroup { SaveFileType, MutiPage, CompressionType, CompressionRatios };

/// The number of buttons of each group, in the order of `OptionGroup`.
inline constexpr std::array kOptionButtons{3, 2, 2, 3};

/// The text boxes of `frmMain`.
enum class TextBox { SavePath, Sp1, Sp2, LiuShui };

/// The check boxes of `frmMain`.
enum class CheckBox { CreateBatchFolder, CreateDocFolder };

/// The frames `Frame1` to `Frame6` hold all options.
inline constexpr int kOptionFrames = 6;

/// The option side of `frmMain` without its pixels: the export settings, the state of every option
/// control, and the rules that join them. The window shows this state and hands the operator's
/// actions on; `LoadExportSettings` sets the controls through the same operations.
///
/// A control that gets a new value calls its handler there and then, and the handler brings the
/// settings and the controls that depend on it in line.
class ExportForm {
 public:
  /// No button of a group, no entry of the list.
  static constexpr int kNone = -1;

  /// The settings as the export reads them.
  const ExportSettings& settings() const { return settings_; }
  ExportSettings& settings() { return settings_; }

  /// The button of `group` that is set, from 0, or `kNone`.
  int selectedButton(OptionGroup group) const { return selected_[index(group)]; }
  /// The operator's click: sets the button and calls the handler, also when it was set already.
  void clickButton(OptionGroup group, int button);
  /// Sets a button, which clears the others of the group; one that is set already calls no handler.
  /// A number that is no button of the group changes nothing.
  void setButton(OptionGroup group, int button);

  const std::wstring& text(TextBox box) const { return texts_[index(box)]; }
  void setText(TextBox box, const std::wstring& text);

  bool isChecked(CheckBox box) const { return checked_[index(box)]; }
  void setChecked(CheckBox box, bool checked);

  /// The entries of `cboRenameType`.
  const std::vector<std::wstring>& renameTypes() const { return renameTypes_; }
  /// The selected entry of `cboRenameType`, from 0, or `kNone`.
  int selectedRenameType() const { return selectedRenameType_; }
  /// The text of `cboRenameType`: the selected entry, or empty.
  std::wstring renameTypeText() const;
  /// Selects an entry, which must exist.
  void selectRenameType(int entry);
  /// Fills `cboRenameType` with all naming patterns, none of them selected. The settings keep the
  /// pattern that was selected last.
  void offerAllRenameTypes();

  /// Whether `Frame<number>` is enabled; `number` is 1 to `kOptionFrames`.
  bool isFrameEnabled(int number) const { return frameEnabled_[number - 1]; }
  /// Enables or disables `Frame1` to `Frame<last>`.
  void enableFrames(int last, bool enabled);

  /// Takes over the answer of the folder chooser, empty for a cancel, which empties the output
  /// folder and leaves the text box as it is.
  void chooseSavePath(const std::wstring& folder);

 private:
  template <typename Name>
  static std::size_t index(Name name) {
    return static_cast<std::size_t>(name);
  }

  void optSaveFileType_Click(int Index);
  void optMutiPage_Click(int Index);
  void optCompressionType_Click(int Index);
  void optCompressionRatios_Click(int Index);
  void fireClick(OptionGroup group, int button);

  ExportSettings settings_;
  std::array<int, kOptionButtons.size()> selected_{kNone, kNone, kNone, kNone};
  std::array<std::wstring, 4> texts_{L"", L"-", L"-", L"3"};
  std::array<bool, 2> checked_{};
  std::array<bool, kOptionFrames> frameEnabled_{true, true, true, true, true, true};
  std::vector<std::wstring> renameTypes_;
  int selectedRenameType_ = kNone;
};

}  // namespace orvane
