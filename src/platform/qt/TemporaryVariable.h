#pragma once

#include <QByteArray>
#include <optional>

namespace valdorn {

// Sets a variable of this process's environment for as long as it lives, then puts back what was
// there. Main thread, and nobody else looks at the environment meanwhile.
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
