#pragma once

#include <cstdint>
#include <map>

#include "platform/qt/InternetConnections.h"

namespace valdorn {

// The HTTP exchanges under way, in the order in which they began, and the cut at the socket of what
// an abandoned one has left. Main thread only. Shared by the client and its exchanges, of which
// either may go first.
//
// Whose a connection is can be told by what was sent alone: an exchange begins with something sent by
// us, on a connection of its own or on one that was kept open. So what still sends to us on one that
// we have sent nothing on since the oldest exchange under way began is nobody's any more. Some are
// spared that could be cut, such as one that came up for the abandoned exchange after a younger one
// had begun. They are looked at again at each end of one, and spared no longer than those last that
// were under way when something was last sent on them; at the end of the last, all are cut.
class ExchangesUnderWay {
public:
    using Number = std::uint64_t;
    enum class End {
        byItself,  // by an answer or a failure of the network: nothing of it is left
        abandoned  // by us, so that it may not have heard of it
    };

    // To be called before anything is sent for it.
    Number begin();

    // To be called once it has been told to stop. Means nothing after endAll().
    void end(Number exchange, End how);

    // Forgets them all, and cuts whatever has come up since this was made.
    void endAll();

    // Whether none is under way and all that there was has been cut. True once for each time.
    bool takeCutOff();

private:
    const InternetConnections before_;
    std::map<Number, InternetConnections> underWay_;  // with what there was when it began
    Number last_ = 0;
    bool isOneAbandoned_ = false;  // since there were last none
    bool isCutOff_ = false;
};

}  // namespace valdorn
