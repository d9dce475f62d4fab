#include "ui/settings/RunnerList.h"

#include <QHelpEvent>
#include <QSignalBlocker>

#include "ui/NativeSymbols.h"
#include "ui/PlainText.h"
#include "ui/ToolTips.h"
#include "ui/settings/RunnerItemDelegate.h"

namespace valdorn {

namespace {

constexpr int idRole = Qt::UserRole;
constexpr int margin = 4;
constexpr int iconPoints = 16;

std::string idOf(const QListWidgetItem& item) {
    return item.data(idRole).toByteArray().toStdString();
}

}  // namespace

RunnerList::RunnerList() {
    setFrameShape(QFrame::NoFrame);
    // The rows stand a little off the list's edges, on a ground that reaches these.
    setViewportMargins(margin, margin, margin, margin);
    setBackgroundRole(QPalette::Base);
    setAutoFillBackground(true);
    setItemDelegate(new RunnerItemDelegate(this));
    setIconSize(QSize(iconPoints, iconPoints));
    setSelectionMode(QAbstractItemView::SingleSelection);
    setTextElideMode(Qt::ElideMiddle);
    setUniformItemSizes(true);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    connect(this, &QListWidget::itemSelectionChanged, this, [this] { chosen(highlightedId()); });
}

void RunnerList::setEntries(const std::vector<Entry>& entries,
                            const std::optional<std::string>& selectedId) {
    const QSignalBlocker quiet(this);
    while (count() > static_cast<int>(entries.size()))
        delete takeItem(count() - 1);
    while (count() < static_cast<int>(entries.size()))
        new QListWidgetItem(NativeSymbols::icon(QStringLiteral("bird")), QString(), this);
    for (int row = 0; row < count(); ++row) {
        const Entry& entry = entries[static_cast<std::size_t>(row)];
        item(row)->setData(idRole, QByteArray::fromStdString(entry.id));
        item(row)->setText(
            PlainText::oneLine(PlainText::shortened(QString::fromStdString(entry.name))));
    }
    highlight(selectedId);
}

std::optional<std::string> RunnerList::highlightedId() const {
    const auto items = selectedItems();
    return items.isEmpty() ? std::nullopt : std::optional(idOf(*items.front()));
}

void RunnerList::highlight(const std::optional<std::string>& id) {
    for (int row = 0; id && row < count(); ++row) {
        if (idOf(*item(row)) == *id)
            return setCurrentRow(row, QItemSelectionModel::ClearAndSelect);
    }
    clearSelection();
}

bool RunnerList::isElided(const QListWidgetItem& item) const {
    return sizeHintForIndex(indexFromItem(&item)).width() > viewport()->width();
}

bool RunnerList::viewportEvent(QEvent* event) {
    if (event->type() != QEvent::ToolTip)
        return QListWidget::viewportEvent(event);
    const auto& help = *static_cast<QHelpEvent*>(event);
    const QListWidgetItem* const pointedAt = itemAt(help.pos());
    ToolTips::answer(help, *this, pointedAt ? pointedAt->text() : QString(),
                     pointedAt && isElided(*pointedAt));
    return true;
}

}  // namespace valdorn
