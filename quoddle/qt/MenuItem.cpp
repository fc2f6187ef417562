#include "quoddle/qt/MenuItem.h"

#include <QKeySequence>
#include <utility>

namespace quod {

MenuItem::MenuItem(const QString& title, std::function<void()> closure,
                   const QString& keyEquivalent, QObject* parent)
    : QAction(title, parent), action_(performActionName), closure_(std::move(closure)) {
    setShortcut(QKeySequence(keyEquivalent, QKeySequence::PortableText));
    connect(this, &QAction::triggered, this, &MenuItem::performAction);
}

MenuItem::MenuItem(const QString& title, std::string action, const QString& keyEquivalent,
                   QObject* parent)
    : QAction(title, parent), action_(std::move(action)) {
    setShortcut(QKeySequence(keyEquivalent, QKeySequence::PortableText));
}

void MenuItem::performAction() {
    if (closure_) closure_();
}

}  // namespace quod
