#pragma once

#include <QObject>
#include <string>
#include <vector>

namespace valdorn {

// Listens to all announcers, for as long as it lives. One at a time.
class Announcements : public QObject {
    Q_OBJECT

public:
    Announcements();
    ~Announcements() override;

    // What has been announced since the last look.
    std::vector<std::string> take();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    std::vector<std::string> heard_;
};

}  // namespace valdorn
