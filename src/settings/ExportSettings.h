#pragma once

#include <array>
#include <cstdint>
#include <string>

namespace orvane {

/// The options of an export. They belong to `frmMain` and are stored in `data.ini` in the program's
/// folder.
struct ExportSettings {
  std::wstring PerName;                ///< read and kept in the file, but not used
  std::wstring SavePath;               ///< output folder, a path text
  std::int16_t SaveFileType = 0;       ///< 0 TIFF, 1 JPEG, 2 PDF
  bool IsMutiPage = false;             ///< one multi-page file per document, or one file per page
  std::int16_t CompressionType = 0;    ///< 0 compress, 1 do not compress
  std::int16_t CompressionRatios = 0;  ///< 0, 1 or 2: selects the JPEG factors
  std::wstring ReNameFormat;           ///< the naming pattern last selected
  std::wstring ReNameSp1;              ///< separator after the batch name
  std::wstring ReNameSp2;              ///< separator before the page number
  bool IsCreateDocFolder = false;      ///< a folder for each document
  bool IsCreateBatchFolder = false;    ///< a folder for each batch
};

// The naming patterns, in the order of the list. Each is identified by the text that the operator
// sees.
inline constexpr const wchar_t* kNameOfDocument = L"档案（件）名称";
inline constexpr const wchar_t* kNameOfPage = L"页码";
inline constexpr const wchar_t* kNameOfDocumentAndPage = L"档案（件）名称 + 页码";
inline constexpr const wchar_t* kNameOfBatchAndDocument = L"档案名称 + 档案（件）名称";
inline constexpr const wchar_t* kNameOfBatchDocumentAndPage = L"档案名称 + 档案（件）名称 + 页码";

/// The entries of the list for one file per page.
inline constexpr std::array kAllNamingPatterns{kNameOfDocument, kNameOfPage, kNameOfDocumentAndPage,
                                               kNameOfBatchAndDocument,
                                               kNameOfBatchDocumentAndPage};

/// The entries of the list for one multi-page file per document.
inline constexpr std::array kMultiPageNamingPatterns{kNameOfDocument, kNameOfBatchAndDocument};

}  // namespace orvane
