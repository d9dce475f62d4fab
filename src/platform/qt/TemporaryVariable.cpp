#include "platform/qt/TemporaryVariable.h"

#include <QtGlobal>

namespace valdorn {

TemporaryVariable::TemporaryVariable(const char* name, const QByteArray& value) : name_(name) {
    if (qEnvironmentVariableIsSet(name))
        before_ = qgetenv(name);
    qputenv(name, value);
}

TemporaryVariable::~TemporaryVariable() {
    if (before_)
        qputenv(name_, *before_);
    else
        qunsetenv(name_);
}

}  // namespace valdorn
