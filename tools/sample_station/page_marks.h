#pragma once

#include <QPainter>

#include "noise.h"

namespace orvane::sample {

// Marks of hands and office tools on a page. All coordinates are in points (1/72 inch).

// A round red seal with a star and words along its rim.
void drawSeal(QPainter& painter, QPointF centre, Noise& noise);
// A signature in blue ink.
void drawSignature(QPainter& painter, QPointF start, Noise& noise);
// The two holes of a filing punch at the left edge of a page.
void drawPunchHoles(QPainter& painter, QSizeF page);
// A fold across the page.
void drawFold(QPainter& painter, QSizeF page, double y);

}  // namespace orvane::sample
