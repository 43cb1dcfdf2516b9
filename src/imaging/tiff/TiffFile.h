#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "foundation/FileState.h"
#include "foundation/OutputFile.h"
#include "imaging/raster/EncodedImage.h"
#include "imaging/tiff/TiffVariant.h"

namespace orvane {

enum class TiffSubfile : std::uint32_t;  // TIFF 6.0 NewSubfileType

/// Writes TIFF files: classic TIFF 6.0, little-endian when made here. One object serves one imaging
/// instance. It remembers the end of the file that it last wrote, so that an append costs the same
/// for every page. Before each append it checks that the file is unchanged; if it is not, the end
/// is found by walking the directories.
class TiffFile {
 public:
  /// Creates `path` with one page. An existing file of that name is replaced, never written into.
  /// A failed write leaves no file.
  void create(const std::wstring& path, const EncodedImage& image);

  /// Adds a page at the end of `path`, which is created when it is missing. `encode` makes the page
  /// when the file is open, and gets its byte order, which 16-bit samples must have. A file of
  /// another program keeps its byte order and its kind (classic or BigTIFF). The bytes of the
  /// earlier pages do not change, and the file is valid at every moment. A failed append, an append
  /// to a file that is not a TIFF file, to a symbolic link or to a file with a second hard link,
  /// and one that would take a classic TIFF past 4 GiB throw Failure and leave the file as it was;
  /// so does a failure of `encode`.
  void append(const std::wstring& path, const std::function<EncodedImage(SampleOrder)>& encode);

  /// Removes page `page`, counted from 1, and its data. The file shrinks; the strips of the other
  /// pages are copied byte for byte. The file is replaced as a whole (FileReplacement). Throws
  /// Failure for a page that does not exist and for the only page of a file.
  static void deletePage(const std::wstring& path, std::int32_t page);

 private:
  struct End {  ///< the remembered end of a growing file
    std::wstring path;
    FileState file;
    TiffVariant variant;
    std::uint64_t nextLink = 0;  ///< offset of the field that links to the next directory
    std::uint32_t pages = 0;
  };
  End endOf(const OutputFile& file, const FileState& state) const;
  void appendTo(OutputFile& file, const EncodedImage& image);
  void createWith(OutputFile (*creation)(const std::wstring&), const std::wstring& path,
                  const EncodedImage& image, TiffSubfile subfile);

  End end_;
};

}  // namespace orvane
