#include "program/BusThread.h"

#include <QDBusConnection>
#include <QDBusMetaType>
#include <QDBusVariant>
#include <cstddef>
#include <system_error>
#include <tuple>

#include <pthread.h>

namespace valdorn {

namespace {

// Enough for a thread that does nothing, also under a sanitizer, and too small for the C library to
// hand it on to Qt's thread: what that one leaves behind is to be seen as its own.
constexpr std::size_t stackBytes = std::size_t{256} * 1024;

void expectSuccess(int error) {
    if (error != 0)
        throw std::system_error(error, std::generic_category());
}

// Like std::thread, which cannot be told the size of its stack.
void expectRoomForThread() {
    pthread_attr_t attributes;
    expectSuccess(pthread_attr_init(&attributes));
    pthread_t thread{};
    int error = pthread_attr_setstacksize(&attributes, stackBytes);
    if (error == 0) {
        const auto nothing = [](void*) -> void* { return nullptr; };
        error = pthread_create(&thread, &attributes, nothing, nullptr);
    }
    pthread_attr_destroy(&attributes);
    expectSuccess(error);
    pthread_join(thread, nullptr);
}

}  // namespace

void makeBusThread() {
    // What the thread knows types from is made before it: when Qt ends the process by std::exit(),
    // the later one is destroyed first.
    std::ignore = QDBusMetaType::typeToSignature(QMetaType::fromType<QDBusVariant>());
    expectRoomForThread();
    QDBusConnection(QStringLiteral("none"));
}

}  // namespace valdorn
