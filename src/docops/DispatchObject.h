#pragma once

#include <memory>
#include <string>
#include <vector>

namespace orvane {

/// An object of the host whose properties are looked up by name when they are needed.
class DispatchObject {
 public:
  virtual ~DispatchObject() = default;

  /// The text of the property `sName`. Throws Failure for a name that the object does not have.
  virtual std::wstring property(const std::wstring& sName) const = 0;
};

/// An ordered list of such objects, owned by the host.
using DispatchList = std::vector<const DispatchObject*>;

}  // namespace orvane
