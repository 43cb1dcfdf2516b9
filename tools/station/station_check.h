#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "page_facts.h"

namespace orvane::station {

/// What a finding is about. An obstacle makes the export fail; the others are only worth a look.
enum class Kind { Obstacle, PaperNum, Resolution, Repeated, Blank, Skewed, Size };

/// Something that the check found.
struct Finding {
  Kind kind = Kind::Obstacle;
  std::wstring document = {};  ///< name of its folder; empty: the finding is about the batch
  std::wstring page = {};      ///< path of its file; empty: the finding is about the document
  std::wstring text = {};      ///< of an obstacle: with the path
};

/// A page of a list.
struct CheckedPage {
  std::wstring name;
  std::wstring path;
  std::uint64_t bytes = 0;
  std::optional<PageFacts> facts = std::nullopt;  ///< none if there is an obstacle
  std::wstring obstacle = {};
};

/// A sub-folder that is a document, or one of which that is uncertain.
struct CheckedDocument {
  std::wstring name;
  bool isListed = false;  ///< its page list has been read, at least in part
  std::wstring obstacle = {};
  std::vector<CheckedPage> pages = {};
};

/// The result of checking a waiting batch.
struct BatchCheck {
  std::wstring folder;
  std::wstring obstacle = {};  ///< of the folder itself
  std::vector<CheckedDocument> documents = {};

  /// The reasons why the export would fail, in its order.
  std::vector<Finding> obstacles() const;
};

/// Reads everything that the export of a batch reads: its folder, every `Doc.dat` and every page.
/// Unlike an export it continues after an obstacle and returns all of them. With `measures` every
/// page is decoded and measured. Several threads read the pages. Writes nothing.
BatchCheck checkBatch(const std::wstring& BatchID, bool measures);

}  // namespace orvane::station
