#pragma once

#include <QListWidget>
#include <optional>
#include <string>
#include <vector>

namespace valdorn {

// The runners by name, at most one of them highlighted. Names that do not fit lose their middle and
// are the tooltip. Main thread only.
class RunnerList : public QListWidget {
    Q_OBJECT

public:
    struct Entry {
        std::string id;
        std::string name;
    };

    RunnerList();

    // Shows these runners in this order, and highlights the one of that id if there is one.
    void setEntries(const std::vector<Entry>& entries,
                    const std::optional<std::string>& selectedId);

Q_SIGNALS:
    // The user has highlighted another row, or none any more.
    void chosen(const std::optional<std::string>& id);

protected:
    bool viewportEvent(QEvent* event) override;

private:
    std::optional<std::string> highlightedId() const;
    void highlight(const std::optional<std::string>& id);
    bool isElided(const QListWidgetItem& item) const;
};

}  // namespace valdorn
