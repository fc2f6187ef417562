#include "quoddle/qt/PreferencesTabViewController.h"

#include <QLayout>
#include <QPointer>
#include <QShowEvent>
#include <QSignalBlocker>
#include <QStackedWidget>
#include <QTabBar>
#include <QVBoxLayout>

#include "quoddle/preferences/Defaults.h"
#include "quoddle/qt/PreferenceTabViewController.h"
#include "quoddle/qt/PreferencesWindowController.h"
#include "quoddle/qt/SegmentedControl.h"
#include "quoddle/qt/WindowFrame.h"
#include "quoddle/runtime/Delay.h"

namespace quod {
namespace internal {

// A stack that asks for the size wanted for its current pane, where a plain stacked widget
// would ask for the largest of all its panes.
class PaneStack : public QStackedWidget {
  public:
    using QStackedWidget::QStackedWidget;

    void setWantedSize(QSize size) {
        wanted_ = size;
        updateGeometry();
    }
    QSize sizeHint() const override { return wanted_.isValid() ? wanted_ : QSize(0, 0); }
    QSize minimumSizeHint() const override {
        const QWidget* pane = currentWidget();
        return pane ? pane->minimumSizeHint().expandedTo(QSize(0, 0)) : QSize(0, 0);
    }

  private:
    QSize wanted_;
};

}  // namespace internal

namespace {

PreferencesWindowController* registeredPreferencesWindowController() {
    for (auto* controller : WindowController::retained()) {
        if (auto* preferences = qobject_cast<PreferencesWindowController*>(controller)) {
            return preferences;
        }
    }
    return nullptr;
}

}  // namespace

PreferencesTabViewController::PreferencesTabViewController(QWidget* parent)
    : QWidget(parent), tabBar_(new QTabBar(this)), stack_(new internal::PaneStack(this)) {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(tabBar_);
    layout->addWidget(stack_, 1);
    tabBar_->setExpanding(false);
    tabBar_->setDrawBase(true);
    // Clicks select too: the first pane shows before any selection, and its tab is then already
    // the tab bar's current one.
    connect(tabBar_, &QTabBar::currentChanged, this,
            &PreferencesTabViewController::setSelectedTabViewItemIndex);
    connect(tabBar_, &QTabBar::tabBarClicked, this,
            &PreferencesTabViewController::setSelectedTabViewItemIndex);
}

PreferencesTabViewController::~PreferencesTabViewController() = default;

void PreferencesTabViewController::addTabViewItem(QWidget* viewController, const QString& label,
                                                  const QIcon& image) {
    if (!viewController) return;
    items_.push_back({label, image, viewController});
    {
        const QSignalBlocker blocker(tabBar_);  // the first tab is no selection
        tabBar_->addTab(image, label);
    }
    stack_->addWidget(viewController);
    if (auto* pane = qobject_cast<PreferenceTabViewController*>(viewController)) {
        connect(pane, &PreferenceTabViewController::preferredContentSizeChanged, this,
                [this, pane] {
                    if (stack_->currentWidget() == pane) sizeWindowToSelectedPane();
                });
    }
    if (loaded_) setItemLook(int(items_.size()) - 1);
}

void PreferencesTabViewController::setSelectedTabViewItemIndex(int index) {
    if (index < 0 || index >= int(items_.size()) || index == selected_) return;
    selected_ = index;
    {
        const QSignalBlocker blocker(tabBar_);
        tabBar_->setCurrentIndex(index);
    }
    stack_->setCurrentIndex(index);
    sizeWindowToSelectedPane();
    tabViewDidSelect(index);
}

void PreferencesTabViewController::setTabStyle(TabStyle style) {
    tabStyle_ = style;
    tabBar_->setHidden(style != TabStyle::tabBar);
    sizeWindowToSelectedPane();
}

void PreferencesTabViewController::loadViewIfNeeded() {
    if (loaded_) return;
    loaded_ = true;
    viewDidLoad();
}

void PreferencesTabViewController::viewDidLoad() {
    for (int index = 0; index < int(items_.size()); ++index)
        setItemLook(index);
}

void PreferencesTabViewController::viewDidAppear() {
    if (selected_ < 0 || selected_ >= int(items_.size())) return;
    window()->setWindowTitle(items_[std::size_t(selected_)].label);
}

void PreferencesTabViewController::tabViewDidSelect(int index) {
    auto* controller = registeredPreferencesWindowController();
    if (!controller || index < 0 || index >= int(items_.size())) return;
    Defaults::preferencesTab.set(index);
    if (auto* control = controller->touchBarTabSegmentedControl())
        control->setSelectedSegment(index);
    window()->setWindowTitle(items_[std::size_t(index)].label);
    // The window has its new size by now; the delay keeps the store out of a burst of clicks.
    Delay(0.4, [self = QPointer<PreferencesTabViewController>(this)] {
        if (self && !self->isWindow()) {
            Defaults::preferencesFrame.set(WindowFrame::text(*self->window()));
        }
    });
}

void PreferencesTabViewController::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    if (event->spontaneous()) return;
    loadViewIfNeeded();
    viewDidAppear();
}

void PreferencesTabViewController::setItemLook(int index) {
    TabViewItem& item = items_[std::size_t(index)];
    if (const auto* named = dynamic_cast<const PreferenceTabType*>(item.viewController)) {
        item.label = named->tabLabel();
        item.image = named->tabImage().value_or(QIcon());
    }
    tabBar_->setTabText(index, item.label);
    tabBar_->setTabIcon(index, item.image);
}

void PreferencesTabViewController::sizeWindowToSelectedPane() {
    QWidget* pane = stack_->currentWidget();
    if (!pane) return;
    QSize wanted = pane->sizeHint();
    if (const auto* preferencePane = qobject_cast<PreferenceTabViewController*>(pane)) {
        // A pane that has not appeared yet asks for its size when it does.
        if (preferencePane->preferredContentSize().isEmpty()) return;
        wanted = preferencePane->preferredContentSize();
    }
    stack_->setWantedSize(wanted.expandedTo(pane->minimumSizeHint()));
    // Every layout up to the window forgets the hints it cached, so the window's hint is new.
    for (QWidget* widget = this; !widget->isWindow(); widget = widget->parentWidget()) {
        widget->updateGeometry();
    }
    QWidget* top = window();
    top->resize(top->sizeHint().expandedTo(top->minimumSizeHint()));
}

}  // namespace quod
