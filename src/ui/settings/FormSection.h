#pragma once

#include <QStringList>
#include <QWidget>

class QGridLayout;
class QLineEdit;

namespace valdorn {

// A framed part of a form: its title, and below it a panel with rows. Main thread only.
class FormSection : public QWidget {
    Q_OBJECT

public:
    // `titles`: the titles of all fields in this form, of other sections as well.
    FormSection(const QString& title, QStringList titles);

    // Adds a row of a title and its field, which the title names to those who do not see it. Takes
    // the field over.
    void addField(const QString& title, QLineEdit* field);

    // Adds a row as wide as the panel. Takes it over.
    void addRow(QWidget* row);

private:
    const QStringList titles_;
    QGridLayout* rows_;
};

}  // namespace valdorn
