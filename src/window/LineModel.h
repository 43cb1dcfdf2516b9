#pragma once

#include <QAbstractListModel>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

namespace orvane {

/// The lines of the progress list. A batch that cannot be exported repeats a few lines all night,
/// so each text is stored once, in UTF-8, and a line is the 32-bit number of its text. The reason
/// of a line is part of the text. Reasons that all differ could still fill the memory, so each is
/// cut to 2000 characters, and none is stored once the texts exceed 16 MiB.
class LineStore {
 public:
  LineStore();
  LineStore(const LineStore&) = delete;
  LineStore& operator=(const LineStore&) = delete;

  /// Adds a line at the end. Returns true if its text and reason are new to the store.
  bool add(std::wstring_view line, std::wstring_view reason = {});
  void clear();

  std::size_t size() const { return lines_.size(); }
  /// The text of a line in UTF-8, valid until the next change.
  std::string_view line(std::size_t row) const;
  /// The reason of a line in UTF-8, valid until the next change; empty if it has none.
  std::string_view reason(std::size_t row) const;

 private:
  using TextNumber = std::uint32_t;

  /// Hashes and compares text numbers by their texts, so that the set stores no texts.
  struct ByText {
    using is_transparent = void;
    const LineStore* store;
    std::string_view of(TextNumber number) const { return store->text(number); }
    static std::string_view of(std::string_view text) { return text; }
    std::size_t operator()(const auto& key) const { return std::hash<std::string_view>()(of(key)); }
    bool operator()(const auto& left, const auto& right) const { return of(left) == of(right); }
  };

  std::string_view text(TextNumber number) const;

  std::string bytes_;                ///< all texts, without separators
  std::vector<std::size_t> starts_;  ///< where each text begins in `bytes_`
  std::vector<TextNumber> lines_;
  std::unordered_set<TextNumber, ByText, ByText> numbers_;
};

/// The progress lines as a Qt model. The reason of a line is its tool tip and its accessible
/// description.
class LineModel : public QAbstractListModel {
 public:
  using QAbstractListModel::QAbstractListModel;

  /// Adds a line at the end. Returns true if its text and reason are new.
  bool add(std::wstring_view line, std::wstring_view reason = {});
  void clear();
  QString line(int row) const;
  QString reason(int row) const;

  int rowCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role) const override;

 private:
  LineStore lines_;
};

}  // namespace orvane
