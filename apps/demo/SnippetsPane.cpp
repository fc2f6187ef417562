#include "demo/SnippetsPane.h"

#include "quoddle/interface/NotificationName.h"
#include "quoddle/preferences/Defaults.h"
#include "quoddle/runtime/Localize.h"
#include "quoddle/runtime/NotificationCenter.h"

namespace quod::demo {
namespace {

QString label(const std::string& text) {
    return QString::fromStdString(text);
}

ItemColumn column(SnippetColumn column) {
    return {{SnippetColumns::identifier(column), SnippetColumns::title(column)},
            ItemColumn::Kind::text};
}

ItemTablePane::Description description() {
    return {{column(SnippetColumn::name), column(SnippetColumn::text)},
            {label(Localize::insertSnippet()), QString()},
            Localize::deleteSnippet(),
            SnippetsPane::deleteSuppressionKey,
            label(Localize::snippets()),
            "insert-text"};
}

std::vector<ItemTablePane::Row> storedRows() {
    std::vector<ItemTablePane::Row> rows;
    for (const Snippet& snippet : Defaults::snippets.get()) {
        rows.push_back({label(snippet.name()), label(snippet.text())});
    }
    return rows;
}

}  // namespace

SnippetsPane::SnippetsPane(QWidget* parent) : ItemTablePane(description(), storedRows(), parent) {
    connect(this, &ItemTablePane::edited, this, &SnippetsPane::store);
}

void SnippetsPane::store() {
    std::vector<Snippet> snippets;
    for (const Row& row : rows()) {
        snippets.emplace_back(row[0].toString().toStdString(), row[1].toString().toStdString(),
                              false);
    }
    Defaults::snippets.set(snippets);
    Notifications().post(NotificationName::snippetsChanged());
}

}  // namespace quod::demo
