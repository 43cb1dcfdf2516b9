#pragma once

#include <QTranslator>

namespace orvane {

/// Says in Chinese what Qt's own parts say: the menus of text boxes and scroll bars. The program
/// brings these texts itself, because Qt's are a package of their own and follow the language of
/// the desktop.
class ChineseTexts : public QTranslator {
 public:
  using QTranslator::QTranslator;

  QString translate(const char* context, const char* sourceText, const char* disambiguation,
                    int n) const override;
  bool isEmpty() const override { return false; }
};

}  // namespace orvane
