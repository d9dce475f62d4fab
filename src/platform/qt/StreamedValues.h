#pragma once

#include <QByteArrayView>

namespace valdorn {

// Whether a settings file (INI) has a text that Qt (6.4) takes for a value of a type of its own, in the
// form in which it streams those: "@Variant(" or "@DateTime(" and bytes, in any of the ways to write
// it. To read one is to let the file say which code of Qt's runs, and with which sizes. Also true for
// a few that Qt would not take so; never for a file that Qt has written from texts. Pure; any thread.
bool holdsStreamedValue(QByteArrayView ini);

}  // namespace valdorn
