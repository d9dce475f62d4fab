#pragma once

#include <QIcon>

#include "platform/StatusItem.h"
#include "ui/Spokes.h"

namespace valdorn {

// The pictures for the status bar, drawn in the few sizes that bars ask for. Nothing tells what
// colour the bar has, so every picture is light enough for dark bars and has a dark outline for
// light ones. Main thread only.
namespace TrayDrawing {

// Positions of the spinner in one turn.
inline constexpr int spinnerFrames = Spokes::count;

QIcon icon(const StatusIcon& icon);

// One position of the spinner: 16 points in the middle of an item of that width.
QIcon spinner(int frame, int itemWidthPoints);

// A picture that holds the place and shows nothing.
QIcon empty();

}  // namespace TrayDrawing

}  // namespace valdorn
