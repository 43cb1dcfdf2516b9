#pragma once

#include <QString>
#include <string>
#include <string_view>

/// Conversion between texts of the program and of Qt.
namespace orvane {

inline QString toQt(std::wstring_view text) {
  return QString::fromWCharArray(text.data(), static_cast<qsizetype>(text.size()));
}

inline std::wstring fromQt(const QString& text) {
  return text.toStdWString();
}

/// A tool tip that shows a plain text and wraps its long lines; empty for an empty text.
inline QString wrappedTip(const QString& text) {
  if (text.isEmpty()) return {};
  return QStringLiteral("<p style=\"white-space:pre-wrap\">") + text.toHtmlEscaped() +
         QStringLiteral("</p>");
}

}  // namespace orvane
