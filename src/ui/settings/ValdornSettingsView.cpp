#include "ui/settings/ValdornSettingsView.h"

#include <QHBoxLayout>
#include <QVBoxLayout>
#include <utility>

#include "app/LoginItem.h"
#include "fleet/RunnerSelection.h"
#include "platform/LoginItemRegistry.h"
#include "runner/RegistrationForm.h"
#include "ui/CheckBox.h"
#include "ui/Divider.h"
#include "ui/settings/RunnerDetail.h"
#include "ui/settings/RunnerForm.h"
#include "ui/settings/RunnerSidebar.h"

namespace valdorn {

namespace {

constexpr QSize contentSize(620, 400);
constexpr int detailWidth = contentSize.width() - RunnerSidebar::usualWidth - Divider::thickness;
constexpr int switchPadding = 10;

}  // namespace

ValdornSettingsView::ValdornSettingsView(SettingsEnvironment environment,
                                         std::shared_ptr<RunnerSelection> selection,
                                         std::shared_ptr<RegistrationForm> registration)
    : WindowView(contentSize),
      environment_(environment),
      selection_(std::move(selection)),
      sidebar_(new RunnerSidebar(selection_)),
      detail_(new RunnerDetail(selection_->selected(), std::move(registration), environment.queue,
                               detailWidth)),
      launchAtLogin_(new CheckBox(QStringLiteral("Launch Valdorn at login"))),
      update_(environment.queue, [this]() VALDORN_ON_MAIN_THREAD { refresh(); }),
      listChanges_(selection_->store()->onWillChange([this] { update_.request(); })),
      selectionChanges_(selection_->onWillChange([this] { update_.request(); })) {
    setObjectName(QStringLiteral("settingsView"));
    auto* const stack = new QVBoxLayout(this);
    stack->setContentsMargins(0, 0, 0, 0);
    stack->setSpacing(0);
    stack->addWidget(makeRunners(), 1);
    stack->addWidget(new Divider(Qt::Horizontal));
    stack->addWidget(makeLaunchSwitch());
    connect(sidebar_, &RunnerSidebar::changed, this, &ValdornSettingsView::refresh);
    refresh();
}

ValdornSettingsView::~ValdornSettingsView() = default;

QWidget* ValdornSettingsView::makeRunners() {
    auto* const runners = new QWidget;
    auto* const row = new QHBoxLayout(runners);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(0);
    row->addWidget(sidebar_);
    row->addWidget(new Divider(Qt::Vertical));
    row->addWidget(detail_, 1);
    return runners;
}

QWidget* ValdornSettingsView::makeLaunchSwitch() {
    launchAtLogin_->setObjectName(QStringLiteral("launchAtLogin"));
    launchAtLogin_->setChecked(environment_.loginItems.status() == LoginItemStatus::enabled);
    connect(launchAtLogin_, &QCheckBox::toggled, this,
            [this](bool on) { LoginItem::set(on, environment_.loginItems, environment_.log); });
    auto* const place = new QWidget;
    auto* const row = new QHBoxLayout(place);
    row->setContentsMargins(switchPadding, switchPadding, switchPadding, switchPadding);
    row->addWidget(launchAtLogin_, 0, Qt::AlignCenter);
    return place;
}

void ValdornSettingsView::refresh() {
    sidebar_->refresh();
    detail_->setRunner(selection_->selected());
    // Rows that are new stand at the end of the keyboard's way.
    setTabOrder(&detail_->form().lastControl(), launchAtLogin_);
}

// The tool may have registered a runner, or somebody undone it, while nobody looked.
void ValdornSettingsView::appeared() {
    detail_->form().refresh();
}

}  // namespace valdorn
