// Feeds what Qt has for showing the last lines of a log: append_reference text|list TOTAL BATCH.
//
// A plain-text editor with a bound on its blocks, or a list over a model that drops the oldest line
// for each new one. Prints what append prints.
#include <QAbstractListModel>
#include <QApplication>
#include <QListView>
#include <QPlainTextEdit>
#include <QScrollBar>
#include <cstdio>
#include <cstdlib>
#include <deque>
#include <functional>
#include <vector>

#include "support/BusyLog.h"
#include "support/Measuring.h"
#include "support/Settling.h"

namespace {

constexpr int mostLines = 5000;

class RingModel : public QAbstractListModel {
public:
    int rowCount(const QModelIndex& parent) const override {
        return parent.isValid() ? 0 : static_cast<int>(lines_.size());
    }
    QVariant data(const QModelIndex& index, int role) const override {
        const bool isText = role == Qt::DisplayRole;
        return isText ? QVariant(lines_[static_cast<std::size_t>(index.row())]) : QVariant();
    }

    void append(const QStringList& lines) {
        const int before = rowCount({});
        const int added = static_cast<int>(lines.size());
        if (const int lost = before + added - mostLines; lost > 0) {
            beginRemoveRows({}, 0, lost - 1);
            lines_.erase(lines_.begin(), lines_.begin() + lost);
            endRemoveRows();
        }
        beginInsertRows({}, rowCount({}), rowCount({}) + added - 1);
        lines_.insert(lines_.end(), lines.begin(), lines.end());
        endInsertRows();
    }

private:
    std::deque<QString> lines_;
};

// Counts the paintings of a view.
class Paintings : public QObject {
public:
    int number = 0;

    bool eventFilter(QObject* watched, QEvent* event) override {
        number += event->type() == QEvent::Paint ? 1 : 0;
        return QObject::eventFilter(watched, event);
    }
};

struct Viewer {
    std::function<void(const QStringList&)> append;
    std::function<int()> lines;
};

Viewer viewerOf(QPlainTextEdit& text) {
    text.setReadOnly(true);
    text.setMaximumBlockCount(mostLines);
    return {[&text](const QStringList& lines) {
                text.appendPlainText(lines.join(u'\n'));
                text.verticalScrollBar()->setValue(text.verticalScrollBar()->maximum());
            },
            [&text] { return text.blockCount(); }};
}

Viewer viewerOf(QListView& list, RingModel& model) {
    list.setUniformItemSizes(true);
    list.setModel(&model);
    return {[&](const QStringList& lines) {
                model.append(lines);
                list.scrollToBottom();
            },
            [&model] { return model.rowCount({}); }};
}

QStringList batchOf(long first, long size) {
    QStringList lines;
    for (long number = first; number < first + size; ++number)
        lines << QString::fromStdString(valdorn::busyLine(number));
    return lines;
}

void measure(QAbstractScrollArea& area, const Viewer& viewer, long total, long batch) {
    Paintings paintings;
    area.resize(720, 460);
    area.show();
    viewer.append(batchOf(0, mostLines));
    valdorn::settle();
    area.viewport()->installEventFilter(&paintings);
    std::vector<long long> times;
    for (long lines = 0; lines < total; lines += batch) {
        const QStringList next = batchOf(mostLines + lines, batch);
        const long long begin = valdorn::computedFor();
        viewer.append(next);
        valdorn::settle();
        times.push_back(valdorn::computedFor() - begin);
    }
    std::printf("%d %d", viewer.lines(), paintings.number);
    for (const long long time : times)
        std::printf(" %lld", time);
    std::printf("\n");
}

}  // namespace

int main(int count, char** arguments) {
    if (count != 4)
        return 2;
    const long total = std::atol(arguments[2]);
    const long batch = std::atol(arguments[3]);
    QApplication application(count, arguments);
    if (std::string(arguments[1]) == "text") {
        QPlainTextEdit text;
        measure(text, viewerOf(text), total, batch);
    } else {
        RingModel model;
        QListView list;
        measure(list, viewerOf(list, model), total, batch);
    }
}
