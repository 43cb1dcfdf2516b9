#include "intake/SourceFile.h"

#include "foundation/Failure.h"

namespace orvane {

void SourceFile::requirePage(std::int32_t /*page*/) const {}

}  // namespace orvane
