#pragma once

#include <QDBusArgument>
#include <tuple>

namespace valdorn {

// A struct that is a structure on the bus: its fields() names its members in their order there, as a
// tuple of pointers to them. With its list it is to be made known by qDBusRegisterMetaType() before
// it travels.
template <typename T>
concept BusStructure = requires {
    T::fields();
};

template <BusStructure T>
QDBusArgument& operator<<(QDBusArgument& argument, const T& structure) {
    argument.beginStructure();
    std::apply([&](auto... field) { ((argument << structure.*field), ...); }, T::fields());
    argument.endStructure();
    return argument;
}

template <BusStructure T>
const QDBusArgument& operator>>(const QDBusArgument& argument, T& structure) {
    argument.beginStructure();
    std::apply([&](auto... field) { ((argument >> structure.*field), ...); }, T::fields());
    argument.endStructure();
    return argument;
}

}  // namespace valdorn
