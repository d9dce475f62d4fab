#include "platform/qt/ExchangesUnderWay.h"

#include <utility>

namespace valdorn {

ExchangesUnderWay::Number ExchangesUnderWay::begin() {
    underWay_.try_emplace(++last_);
    return last_;
}

void ExchangesUnderWay::end(Number exchange, End how) {
    if (underWay_.erase(exchange) == 0)
        return;
    if (how == End::abandoned)
        isOneAbandoned_ = true;
    if (!isOneAbandoned_)
        return;
    if (underWay_.empty())
        endAll();
    else
        before_.cutUnasked(underWay_.begin()->second);
}

void ExchangesUnderWay::endAll() {
    underWay_.clear();
    isOneAbandoned_ = false;
    isCutOff_ = before_.cut();
}

bool ExchangesUnderWay::takeCutOff() {
    return underWay_.empty() && std::exchange(isCutOff_, false);
}

}  // namespace valdorn
