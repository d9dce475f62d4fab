#pragma once

#include "platform/WindowHost.h"

namespace valdorn {

// The program's four windows as they look from outside.
namespace Windows {

WindowDescription settings();
WindowDescription log();
WindowDescription status();
WindowDescription onboarding();

}  // namespace Windows

}  // namespace valdorn
