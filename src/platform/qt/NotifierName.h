#pragma once

#include <QDBusConnection>
#include <QObject>
#include <QString>

namespace valdorn {

// The name of a status item on the bus: asked for when this is made, given back when it goes. Names
// are never used again. Never waits for the bus. Main thread only.
class NotifierName : public QObject {
    Q_OBJECT

public:
    // Without a bus the name never becomes known.
    explicit NotifierName(QDBusConnection bus);
    ~NotifierName() override;

    // How hosts find the item: by the name, or by that of the connection where another has the name.
    // Empty until the bus has answered.
    const QString& known() const { return known_; }

Q_SIGNALS:
    void becameKnown();

private:
    void onAnswer(bool isOurs);

    QDBusConnection bus_;
    const QString own_;
    QString known_;
};

}  // namespace valdorn
