#include "posix/PosixStage.h"

namespace valdorn {

INSTANTIATE_TYPED_TEST_SUITE_P(Posix, ChildLauncherContract, PosixStage);

}  // namespace valdorn
