#include "demo/SnippetsPane.h"

#include <QVBoxLayout>

#include "quoddle/interface/NotificationName.h"
#include "quoddle/preferences/Defaults.h"
#include "quoddle/runtime/Localize.h"
#include "quoddle/runtime/NotificationCenter.h"

namespace quod::demo {
namespace {

QString label(const std::string& text) {
    return QString::fromStdString(text);
}

}  // namespace

SnippetsPane::SnippetsPane(QWidget* parent)
    : PreferenceTabViewController(parent),
      editor_(new ItemTableEditor({{label(Localize::name())}, {label(Localize::text())}},
                                  {label(Localize::insertSnippet()), QString()},
                                  Localize::deleteSnippet(), deleteSuppressionKey, this)) {
    std::vector<ItemTableEditor::Row> rows;
    for (const Snippet& snippet : Defaults::snippets.get()) {
        rows.push_back({label(snippet.name()), label(snippet.text())});
    }
    editor_->setRows(rows);
    connect(editor_, &ItemTableEditor::edited, this, &SnippetsPane::store);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(editor_);
}

QString SnippetsPane::tabLabel() const {
    return label(Localize::snippets());
}

std::optional<QIcon> SnippetsPane::tabImage() const {
    return QIcon::fromTheme("insert-text");
}

void SnippetsPane::store() {
    std::vector<Snippet> snippets;
    for (const ItemTableEditor::Row& row : editor_->rows()) {
        snippets.emplace_back(row[0].toString().toStdString(), row[1].toString().toStdString(),
                              false);
    }
    Defaults::snippets.set(snippets);
    Notifications().post(NotificationName::snippetsChanged());
}

}  // namespace quod::demo
