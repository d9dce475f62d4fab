#pragma once

#include <QCoreApplication>

namespace valdorn {

// Everything that is posted is done and painted.
inline void settle() {
    QCoreApplication::processEvents();
    QCoreApplication::sendPostedEvents();
    QCoreApplication::processEvents();
}

}  // namespace valdorn
