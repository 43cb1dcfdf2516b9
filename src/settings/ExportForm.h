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

/// The frames `Frame1` to `Frame6` contain all options.
inline constexpr int kOptionFrames = 6;

/// The options of `frmMain` without Qt: the export settings, the state of every option control, and
/// the rules between them. The window shows this state and passes the operator's actions on.
/// `LoadExportSettings` sets the controls through the same operations.
///
/// When a control gets a new value, its handler runs at once and updates the settings and the
/// controls that depend on it.
class ExportForm {
 public:
  /// No button of a group or no entry of the list is selected.
  static constexpr int kNone = -1;

  /// The settings that the export reads.
  const ExportSettings& settings() const { return settings_; }
  ExportSettings& settings() { return settings_; }

  /// The selected button of `group`, from 0, or `kNone`.
  int selectedButton(OptionGroup group) const { return selected_[index(group)]; }
  /// A click of the operator: selects the button and runs the handler, even if the button was
  /// already selected.
  void clickButton(OptionGroup group, int button);
  /// Selects a button and clears the others of the group. The handler runs only if the button was
  /// not selected. A number that is not a button of the group changes nothing.
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
  /// Fills `cboRenameType` with all naming patterns and selects none. The settings keep the pattern
  /// that was selected last.
  void offerAllRenameTypes();

  /// Whether `Frame<number>` is enabled; `number` is 1 to `kOptionFrames`.
  bool isFrameEnabled(int number) const { return frameEnabled_[number - 1]; }
  /// Enables or disables `Frame1` to `Frame<last>`.
  void enableFrames(int last, bool enabled);

  /// Sets the output folder to the result of the folder chooser. An empty result (a cancel) clears
  /// the output folder and leaves the text box unchanged.
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
