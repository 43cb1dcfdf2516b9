#pragma once

#include <QString>
#include <string>
#include <string_view>

/// The edge to Qt's texts.
namespace orvane {

inline QString toQt(std::wstring_view text) {
  return QString::fromWCharArray(text.data(), static_cast<qsizetype>(text.size()));
}

inline std::wstring fromQt(const QString& text) {
  return text.toStdWString();
}

/// A plain text as a tool tip that breaks its long lines; empty for an empty text.
inline QString wrappedTip(const QString& text) {
  if (text.isEmpty()) return {};
  return QStringLiteral("<p style=\"white-space:pre-wrap\">") + text.toHtmlEscaped() +
         QStringLiteral("</p>");
}

}  // namespace orvane
