// The folder sidebar: a tree of a chosen folder's files, kept up to date while the folder changes.
//
// `setFolder` builds a FileItem tree of the folder on the background queue; the build is an
// Operation that the next `setFolder` (or a refresh, or destruction) cancels, and a cancelled or
// superseded build is never shown, so choosing folders quickly one after the other ends with the
// last one's tree. The finished tree is handed to the main thread through RunLoop::main() and
// replaces what the view shows; rows below the top level are made only when their folder is
// first expanded, so a folder of a hundred thousand files costs rows only for what is opened.
// Folders that were expanded stay expanded across a refresh.
//
// A FileSystemMonitor in folder mode watches the folder; each report (one per batch of changes,
// after its latency of a second) rebuilds the tree. A folder that cannot be watched still shows
// its tree, without refreshes.
//
// Activating a file (double-click, Enter) emits `fileActivated` with its path.
#pragma once

#include <QTimer>
#include <QTreeWidget>
#include <memory>
#include <set>
#include <string>

#include "quoddle/filesystem/FileItem.h"
#include "quoddle/filesystem/FileSystemMonitor.h"
#include "quoddle/filesystem/Operation.h"

namespace quod::demo {

class FolderSidebar : public QTreeWidget {
    Q_OBJECT

  public:
    explicit FolderSidebar(QWidget* parent = nullptr);
    ~FolderSidebar() override;

    void setFolder(const std::string& path);
    [[nodiscard]] const std::string& folder() const { return folder_; }
    // A build has been started and its tree is not shown yet.
    [[nodiscard]] bool isBuilding() const { return building_ != nullptr; }

    // Rebuilds the tree of the current folder.
    void refresh();

  Q_SIGNALS:
    void fileActivated(const QString& path);
    // A new tree is on show.
    void treeShown();

  private:
    class MonitorReceiver;

    void show(std::unique_ptr<FileItem> tree);
    void addChildren(QTreeWidgetItem* parent, const FileItem& item);
    void populate(QTreeWidgetItem* item);
    [[nodiscard]] std::set<std::string> expandedPaths() const;

    std::string folder_;
    std::shared_ptr<Operation> building_;
    std::unique_ptr<FileItem> tree_;
    std::shared_ptr<MonitorReceiver> receiver_;
    std::unique_ptr<FileSystemMonitor> monitor_;
    QTimer refreshTimer_;  // one rebuild for a batch of reports
};

}  // namespace quod::demo
