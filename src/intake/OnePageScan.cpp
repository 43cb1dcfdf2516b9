#include "intake/OnePageScan.h"

#include <utility>

#include "intake/page_file.h"

namespace orvane {

OnePageScan::OnePageScan(const std::wstring& path, Kind kind)
    : path_(path), kind_(std::move(kind)) {
  kind_.requireHead(readWholeFile(path));
}

void OnePageScan::writePage(std::int32_t /*page*/, const std::wstring& target) const {
  writeReadablePage(target, kind_.encode(readWholeFile(path_)));
}

}  // namespace orvane
