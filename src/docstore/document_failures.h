#pragma once

#include <exception>
#include <string>

#include "foundation/Failure.h"
#include "foundation/mdlFolderAndFile.h"

/// How the operations of a Document report a failure.
namespace orvane {

/// Logs one line and gives false.
inline bool failInLog(const std::wstring& text) {
  mdlFolderAndFile::LogWrite(text, L"Document");
  return false;
}

/// The answer of `operation`; a failure in it becomes one line, `prefix` and its text, and false.
template <typename Operation>
bool withFailuresLogged(const std::wstring& prefix, Operation operation) {
  try {
    return operation();
  } catch (const std::exception& failure) {
    return failInLog(prefix + description(failure));
  }
}

}  // namespace orvane
