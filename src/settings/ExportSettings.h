#pragma once

#include <cstdint>
#include <string>

namespace orvane {

/// The options of an export. While the program runs they live on `frmMain`; between runs of the
/// program they live in `data.ini`.
struct ExportSettings {
  std::wstring PerName;                ///< read and kept in the file; nothing uses it
  std::wstring SavePath;               ///< output folder, a path text
  std::int16_t SaveFileType = 0;       ///< 0 TIFF, 1 JPEG, 2 PDF
  bool IsMutiPage = false;             ///< one multi-page file a document, else one file a page
  std::int16_t CompressionType = 0;    ///< 0 compress, 1 do not compress
  std::int16_t CompressionRatios = 0;  ///< 0, 1 or 2: selects the JPEG factors
  std::wstring ReNameFormat;           ///< the naming pattern last selected
  std::wstring ReNameSp1;              ///< separator behind the batch name
  std::wstring ReNameSp2;              ///< separator in front of the page number
  bool IsCreateDocFolder = false;      ///< a folder for each document
  bool IsCreateBatchFolder = false;    ///< a folder for each batch
};

}  // namespace orvane
