#pragma once

#include <QString>
#include <QStringList>

#include "noise.h"

namespace orvane::sample {

// The words on the sample pages. All of them are fictitious.
QString noticeTitle(Noise& noise);
QString documentNumber(Noise& noise);
QString sectionHeading(int number, Noise& noise);
// `sentences` sentences of text, after an indent of two characters.
QString paragraph(int sentences, Noise& noise);
QString photoCaption(Noise& noise);

// One line of a file register: number of the document, author, title, date, pages, remark.
QStringList registerRow(int number, Noise& noise);

}  // namespace orvane::sample
