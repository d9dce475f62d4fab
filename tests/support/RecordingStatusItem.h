#pragma once

#include <optional>

#include "platform/StatusItem.h"

namespace valdorn {

// A status item without a bar: keeps what was set last and counts what a bar would be sent.
class RecordingStatusItem : public StatusItem {
public:
    MenuModel* menu = nullptr;
    std::optional<StatusIcon> icon;  // what was set last; covered while the spinner runs
    bool spinning = false;
    int length = variableLength;
    int iconChanges = 0;  // times that `icon` became another one or none
    int spinnerStarts = 0;
    int spinnerStops = 0;

    void setMenu(MenuModel& model) override { menu = &model; }
    void setIcon(const StatusIcon& wanted) override { change(wanted); }
    void clearIcon() override { change(std::nullopt); }

    void startSpinner() override {
        spinnerStarts += spinning ? 0 : 1;
        spinning = true;
    }

    void stopSpinner() override {
        spinnerStops += spinning ? 1 : 0;
        spinning = false;
    }

    bool isSpinning() const override { return spinning; }
    void setLength(int points) override { length = points; }

private:
    void change(const std::optional<StatusIcon>& wanted) {
        if (icon == wanted)
            return;
        icon = wanted;
        ++iconChanges;
    }
};

}  // namespace valdorn
