#pragma once

#include <QString>
#include <QStringList>

#include "noise.h"

namespace orvane::sample {

// The words on the sample pages. Everything is made up.
QString noticeTitle(Noise& noise);
QString documentNumber(Noise& noise);
QString sectionHeading(int number, Noise& noise);
// About `sentences` sentences of running text, led by the two-character indent.
QString paragraph(int sentences, Noise& noise);
QString photoCaption(Noise& noise);

// One line of a file register: number of the document, author, title, date, pages, remark.
QStringList registerRow(int number, Noise& noise);

}  // namespace orvane::sample
