#pragma once

#include <QByteArray>
#include <optional>

namespace valdorn {

// Sets a variable of this process's environment for as long as it lives, then puts back what was
// there. To be made before there is a second thread. Threads that come meanwhile may look up other
// variables when it goes: a variable that was not there stands behind all that were, so taking it
// away moves none of them.
class TemporaryVariable {
public:
    // `name` is to outlive it.
    TemporaryVariable(const char* name, const QByteArray& value);
    ~TemporaryVariable();
    TemporaryVariable(const TemporaryVariable&) = delete;
    TemporaryVariable& operator=(const TemporaryVariable&) = delete;

private:
    const char* const name_;
    std::optional<QByteArray> before_;  // what was there, if anything
};

}  // namespace valdorn
