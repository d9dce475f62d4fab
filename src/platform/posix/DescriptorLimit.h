#pragma once

namespace valdorn {

// Any thread. Makes sure that the process may open some hundred more descriptors than `newest`,
// the number of one just opened, as far as the hard limit allows, by raising the soft limit.
//
// A fleet of ordinary size never gets there, and its children start with the limit that we were
// given. Children launched later inherit the raised one: there is no way to lower it for a child
// alone without a moment in which it runs with the other.
void makeRoomForDescriptors(int newest);

}  // namespace valdorn
