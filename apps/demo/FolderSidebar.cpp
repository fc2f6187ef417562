#include "demo/FolderSidebar.h"

#include <QHeaderView>
#include <QPointer>
#include <QStyle>

#include "quoddle/filesystem/MonitorDelegate.h"
#include "quoddle/runtime/Background.h"
#include "quoddle/runtime/RunLoop.h"

namespace quod::demo {
namespace {

constexpr int pathRole = Qt::UserRole;
constexpr int fileItemRole = Qt::UserRole + 1;
constexpr int populatedRole = Qt::UserRole + 2;

const FileItem* fileItemOf(const QTreeWidgetItem* item) {
    return reinterpret_cast<const FileItem*>(item->data(0, fileItemRole).value<quintptr>());
}

}  // namespace

// Monitor reports come one call per changed folder; a batch of them becomes one rebuild.
class FolderSidebar::MonitorReceiver : public MonitorDelegate {
  public:
    explicit MonitorReceiver(FolderSidebar& sidebar) : sidebar_(sidebar) {}
    void monitorDidChange(const Url&) override { sidebar_.refreshTimer_.start(); }

  private:
    FolderSidebar& sidebar_;
};

FolderSidebar::FolderSidebar(QWidget* parent)
    : QTreeWidget(parent), receiver_(std::make_shared<MonitorReceiver>(*this)) {
    setHeaderHidden(true);
    setColumnCount(1);
    setUniformRowHeights(true);
    refreshTimer_.setSingleShot(true);
    refreshTimer_.setInterval(0);
    connect(&refreshTimer_, &QTimer::timeout, this, &FolderSidebar::refresh);
    connect(this, &QTreeWidget::itemExpanded, this, &FolderSidebar::populate);
    connect(this, &QTreeWidget::itemActivated, this, [this](QTreeWidgetItem* item) {
        const FileItem* fileItem = fileItemOf(item);
        if (fileItem != nullptr && !fileItem->url.hasDirectoryPath()) {
            Q_EMIT fileActivated(item->data(0, pathRole).toString());
        }
    });
}

FolderSidebar::~FolderSidebar() {
    if (building_) building_->cancel();
}

void FolderSidebar::setFolder(const std::string& path) {
    folder_ = path;
    monitor_.reset();
    monitor_ = std::make_unique<FileSystemMonitor>(Url::fileURL(path, true), true);
    monitor_->setDelegate(receiver_);
    refresh();
}

void FolderSidebar::refresh() {
    if (folder_.empty()) return;
    if (building_) building_->cancel();
    auto operation = std::make_shared<Operation>();
    building_ = operation;
    Background().async([operation, url = Url::fileURL(folder_, true),
                        target = QPointer<FolderSidebar>(this)]() mutable {
        auto tree = std::make_unique<FileItem>(url, operation.get());
        tree->isRoot = true;
        RunLoop::main().post([operation = std::move(operation), target = std::move(target),
                              tree = std::move(tree)]() mutable {
            // A build that a later one replaced, or whose sidebar is gone, is never shown.
            if (target.isNull() || target->building_ != operation) return;
            target->show(std::move(tree));
        });
    });
}

void FolderSidebar::show(std::unique_ptr<FileItem> tree) {
    const std::set<std::string> expanded = expandedPaths();
    building_.reset();
    clear();
    tree_ = std::move(tree);
    addChildren(invisibleRootItem(), *tree_);
    // Expanding makes the rows below (itemExpanded), where the walk then goes on.
    std::vector<QTreeWidgetItem*> pending{invisibleRootItem()};
    while (!pending.empty()) {
        QTreeWidgetItem* parent = pending.back();
        pending.pop_back();
        for (int index = 0; index < parent->childCount(); ++index) {
            QTreeWidgetItem* child = parent->child(index);
            if (expanded.contains(child->data(0, pathRole).toString().toStdString())) {
                child->setExpanded(true);
                pending.push_back(child);
            }
        }
    }
    Q_EMIT treeShown();
}

void FolderSidebar::addChildren(QTreeWidgetItem* parent, const FileItem& item) {
    const QIcon folderIcon = style()->standardIcon(QStyle::SP_DirIcon);
    const QIcon fileIcon = style()->standardIcon(QStyle::SP_FileIcon);
    for (const FileItem& child : item.children) {
        auto* row = new QTreeWidgetItem(parent, {QString::fromStdString(child.name)});
        const bool isFolder = child.url.hasDirectoryPath();
        row->setIcon(0, isFolder ? folderIcon : fileIcon);
        row->setData(0, pathRole, QString::fromStdString(child.url.path()));
        row->setData(0, fileItemRole, QVariant::fromValue(reinterpret_cast<quintptr>(&child)));
        if (isFolder && !child.children.empty()) {
            row->setChildIndicatorPolicy(QTreeWidgetItem::ShowIndicator);
        }
    }
}

void FolderSidebar::populate(QTreeWidgetItem* item) {
    if (item->data(0, populatedRole).toBool()) return;
    item->setData(0, populatedRole, true);
    if (const FileItem* fileItem = fileItemOf(item)) addChildren(item, *fileItem);
}

std::set<std::string> FolderSidebar::expandedPaths() const {
    std::set<std::string> paths;
    std::vector<const QTreeWidgetItem*> pending{invisibleRootItem()};
    while (!pending.empty()) {
        const QTreeWidgetItem* parent = pending.back();
        pending.pop_back();
        for (int index = 0; index < parent->childCount(); ++index) {
            const QTreeWidgetItem* child = parent->child(index);
            if (child->isExpanded()) {
                paths.insert(child->data(0, pathRole).toString().toStdString());
                pending.push_back(child);
            }
        }
    }
    return paths;
}

}  // namespace quod::demo
